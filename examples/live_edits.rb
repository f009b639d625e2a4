# Edits as a user makes them, ready to call on `model`; each says what it did. `tour` walks through them.
# They work on any model that has something at its root.
module LiveEdits
  TOUR = %i[orbit move paint build reshape place hide show shine evening noon dusk clear_sky undo_last].freeze
  LAMP = "Lamp of the tour"

  # Walks through all edits, with so many seconds between them.
  def tour(pause = 2)
    TOUR.each do |name|
      break if ended?
      puts "#{name}: #{public_send(name)}"
      wait(pause)
    end
    nil
  end

  # Looks from another side.
  def orbit(degrees = 15)
    camera = model.active_view.camera
    turn = Geom::Transformation.rotation(camera.target, [0, 0, 1], degrees.degrees)
    camera.set(camera.eye.transform(turn), camera.target, camera.up)
    "the view is turned by #{degrees} degrees"
  end

  # Moves what is first at the root.
  def move(by = [span / 12, -span / 12, 0])
    return "there is nothing at the root to move" unless piece
    piece.transform!(Geom::Transformation.translation(Geom::Vector3d.new(*by)))
    "#{name_of(piece)} moved"
  end

  # Gives another colour to the material that most is painted with.
  def paint(color = [150, 44, 38])
    material = piece&.material || model.materials.to_a.first || model.materials.add("Paint")
    piece.material = material if piece && model.materials.length == 1
    material.color = color
    "#{material.name} has another colour"
  end

  # Adds a tower before what the view looks at.
  def build(high = span / 12)
    side = span / 36
    camera = model.active_view.camera
    place = camera.target.offset(camera.direction, -span / 8).offset(camera.xaxis, span / 24)
    x, y, z = place.x, place.y, model.bounds.min.z
    group = model.entities.add_group
    face = group.entities.add_face([x, y, z], [x + side, y, z], [x + side, y + side, z], [x, y + side, z])
    face.reverse! if face.normal.z.negative?
    face.pushpull(high)
    group.material = model.materials["Tower"] || model.materials.add("Tower").tap { |tower| tower.color = [40, 90, 160] }
    @tower = group
    "a tower is built"
  end

  # Edits a definition: whatever shows it changes.
  def reshape
    build unless @tower&.valid?
    top = @tower.entities.faces.max_by { |face| face.normal.z }
    top.pushpull(span / 20)
    "the tower is higher"
  end

  # Places the tower's definition again, mirrored.
  def place
    build unless @tower&.valid?
    mirrored = Geom::Transformation.scaling(@tower.bounds.center, -1, 1, 1)
    aside = Geom::Transformation.translation(Geom::Vector3d.new(-span / 9, 0, 0))
    @twin = model.entities.add_instance(@tower.definition, aside * mirrored * @tower.transformation)
    @twin.material = @tower.material
    "the tower has a twin"
  end

  def hide
    return "there is nothing at the root to hide" unless piece
    piece.hidden = true
    "#{name_of(piece)} is hidden"
  end

  def show
    return "there is nothing at the root to show" unless piece
    piece.hidden = false
    "#{name_of(piece)} is shown"
  end

  # A lamp above the model.
  def shine(power = 4.0)
    definition = model.definitions[LAMP] || model.definitions.add(LAMP)
    if definition.entities.size.zero?
      definition.entities.add_face([-1, -1, 0], [1, -1, 0], [1, 1, 0], [-1, 1, 0])
      definition.set_attribute("corvane_II", "light-type", "point")
    end
    box = model.bounds
    place = Geom::Transformation.translation(Geom::Vector3d.new(box.center.x, box.min.y - span / 20, box.center.z))
    lamp = model.entities.add_instance(definition, place)
    lamp.set_attribute("corvane_II", "light-power", power)
    "a lamp shines in front of the model"
  end

  def evening = at(19, "long shadows from the west")
  def noon = at(12, "short shadows")

  def dusk = sky([70, 60, 90], "a dark sky")
  def clear_sky = sky([158, 191, 230], "a clear sky")

  def undo_last
    Sketchup.undo
    "the last edit is undone"
  end

  private

  def piece = [*model.entities.instances, *model.entities.groups].first
  def name_of(piece) = [piece.name, piece.definition.name].find { |name| !name.empty? } || "something"
  # The size of the model.
  def span = model.bounds.diagonal.to_f

  def at(hour, what)
    model.shadow_info["DisplayShadows"] = true
    model.shadow_info["ShadowTime"] = Time.utc(2027, 6, 21, hour)
    what
  end

  def sky(color, what)
    options = model.rendering_options
    options["DrawHorizon"] = false
    options["BackgroundColor"] = Sketchup::Color.new(*color)
    what
  end
end
