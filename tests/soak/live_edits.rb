# Edits of a model as a user makes them, at random: through the host's names alone, and nobody is told
# but by the host's observers.
#
# An edit is a kind and a number. The number decides what it picks of what is there, so a list of edits
# that some were left out of is a list of edits still.

require "sketchup.rb"

class LiveEdits
  D = "corvane_II"
  # The smallest by their pixels, whose numbers a file of this kind has at its beginning.
  PICTURES = Dir.glob("/usr/share/assimp/models/**/*.png").sort_by { |file| [File.binread(file, 8, 16).unpack("N2").reduce(:*), file] }.first(3).freeze
  COMPONENTS = 7
  DEEPEST = 4

  # How often each kind comes.
  KINDS = {
    move_top: 4, move_nested: 2, transform_some: 1, paint_top: 3, paint_nested: 2, hide_top: 2, hide_nested: 2, layer_top: 2,
    layer_nested: 2, add_top: 2, add_nested: 2, erase_top: 2, erase_nested: 1, erase_some: 0.5, add_group: 2, group_some: 1,
    make_unique: 1, explode: 1, copy_group: 0.5, to_component: 0.3, name: 1,
    paint_face: 4, distort_face: 3, add_face: 3, erase_face: 1.5, turn_face: 1, hide_face: 1, layer_face: 2, hole: 1, smooth: 1,
    clear: 0.05, remove_component: 0.2,
    color: 2, opacity: 1, texture: 3, factors: 1, attributes: 2, shift: 1, name_material: 1, remove_material: 1,
    fresh_material: 2, default_color: 1,
    add_image: 1.5, erase_image: 0.7, move_image: 1, hide_image: 1, layer_image: 2,
    show_layer: 3, show_folder: 2, move_layer: 1, add_layer: 1, remove_layer: 1, remove_folder: 0.2,
    light: 2, add_light: 2, erase_light: 0.7, to_light: 1, to_facing: 1,
    camera: 1, sun: 0.5, add_page: 0.3, select_page: 0.3,
    start_operation: 2, commit_operation: 2, abort_operation: 0.6, undo: 1, redo: 0.7
  }.freeze
  ALL = KINDS.flat_map { |kind, often| [kind] * (often * 20).round }.freeze
  # Without what is answered by sending everything.
  TOLD = ALL - %i[abort_operation undo redo]
  # Without what ends an operation that somebody else may be inside of.
  INSIDE = TOLD - %i[start_operation commit_operation]
  # What an export's threads do not read by address.
  SIMPLE = %i[hide_top hide_nested color show_layer hide_image].freeze

  # So many edits as [kind, number].
  def self.draw(count, random, kinds = ALL) = Array.new(count) { [kinds[random.rand(kinds.size)], random.rand(1 << 32)] }

  attr_reader :model

  # A new model of the host, with something of everything in it.
  def initialize
    Sketchup.file_new
    @model = Sketchup.active_model
    @random = Random.new(0)
    ModelHost.silently { build }
  end

  def make(kind, number)
    @random = Random.new(number)
    @open = true if kind == :start_operation
    send(kind)
  end

  # Leaves no operation open.
  def finish
    @model.commit_operation if @open
    @open = false
  end

  private

  def build
    outer = @model.layers.add_folder("Outer")
    inner = @model.layers.add_folder("Inner")
    inner.folder = outer
    5.times { |i| @model.layers.add("Layer #{i}").folder = [nil, outer, inner][i % 3] }
    8.times { |i| fresh("Material #{i}") }
    @parts = Array.new(COMPONENTS) { |i| @model.definitions.add("Part #{i}") }
    @parts.each { |part| 3.times { square(part.entities) } }
    @parts.last.behavior.always_face_camera = true
    @lamps = %w[point softspot].map do |type|
      @model.definitions.add("Lamp").tap { |lamp| lamp.set_attribute(D, "light-type", type); square(lamp.entities) }
    end
    @parts.each { |part| 2.times { @model.entities.add_instance(part, place) } }
    2.times { square(@model.entities) }
    LiveEdits.draw(60, Random.new(1), INSIDE).each { |edit| make(*edit) }
  end

  def draw(...) = @random.rand(...)
  def any(list) = (list = list.to_a).empty? ? nil : list[draw(list.size)]

  # What holds entities: nil is the root. Depth is counted below a top-level element.
  def containers
    groups = lambda do |entities, depth|
      depth > DEEPEST ? [] : of(entities, Sketchup::Group).flat_map { |group| [group.definition, *groups.call(group.definition.entities, depth + 1)] }
    end
    parts = (@parts + @lamps).select(&:valid?)
    [nil, *parts, *groups.call(@model.entities, 1), *parts.flat_map { |part| groups.call(part.entities, 2) }].uniq
  end

  def of(entities, kind) = entities.select { |entity| kind == Sketchup::ComponentInstance ? instance?(entity) : entity.is_a?(kind) }
  def instance?(entity) = entity.is_a?(Sketchup::ComponentInstance) && !entity.is_a?(Sketchup::Group) && !entity.is_a?(Sketchup::Image)
  def entities_of(holder) = holder ? holder.entities : @model.entities
  def elements(entities) = of(entities, Sketchup::ComponentInstance) + of(entities, Sketchup::Group)
  def top = elements(@model.entities)
  def nested = containers.compact.flat_map { |holder| elements(holder.entities) }
  def faces = containers.flat_map { |holder| of(entities_of(holder), Sketchup::Face) }
  def images = containers.flat_map { |holder| of(entities_of(holder), Sketchup::Image) }
  def lamp?(definition) = definition.get_attribute(D, "light-type", "") != ""
  def parts = @parts.select(&:valid?)
  def material = any(@model.materials)
  def layer = any(@model.layers)
  def paint = draw(4).zero? ? nil : material
  # Seldom, so that the scene does not go dark.
  def hide? = draw(5).zero?

  def place
    move = Geom::Transformation.translation(Geom::Vector3d.new(*Array.new(3) { draw(-500..500) / 4.0 }))
    return move if draw(3) > 0
    move * Geom::Transformation.rotation(ORIGIN, Z_AXIS, draw(8) * Math::PI / 4) * Geom::Transformation.scaling(draw(1..3))
  end

  def pixels(side = 16)
    bits = any([24, 32])
    { pixels: @random.bytes(side * side * bits / 8), width: side, height: side, bits: bits, size: [10, 10], use_alpha: draw(2) == 1 }
  end

  def fresh(name)
    made = @model.materials.add(name)
    made.color = Array.new(3) { draw(256) }
    made.texture = pixels if draw(2) == 1
    made
  end

  def square(entities)
    x, y, z = Array.new(3) { draw(-20..20) }
    face = entities.add_face([x, y, z], [x + 10, y, z], [x + 10, y + 10, z], [x, y + 10, z])
    face.material = paint
    face.back_material = paint
    face
  end

  def move_top = any(top)&.transformation = place
  def move_nested = any(nested)&.transform!(place)
  def transform_some = containers.then { |all| entities_of(any(all)).then { |entities| entities.transform_entities(place, elements(entities).first(2)) } }
  def paint_top = any(top)&.material = paint
  def paint_nested = any(nested)&.material = paint
  def hide_top = any(top)&.hidden = hide?
  def hide_nested = any(nested)&.hidden = hide?
  def layer_top = any(top)&.layer = layer
  def layer_nested = any(nested)&.layer = layer
  def erase_top = (any(top)&.erase! if top.size > 12)
  def erase_nested = any(nested)&.erase!
  def name = any(top)&.name = "Named #{draw(1 << 30)}"
  def add_top = (@model.entities.add_instance(any(parts), place) if top.size < 28)

  def erase_some
    entities = entities_of(any(containers))
    entities.erase_entities(entities.to_a.sample(2, random: @random)) if entities.length > 6
  end

  # Later parts in earlier ones, so that none comes to lie in itself.
  def add_nested
    outer = draw(COMPONENTS - 1)
    inner = @parts[draw((outer + 1)...COMPONENTS)]
    return unless @parts[outer].valid? && inner.valid? && of(@parts[outer].entities, Sketchup::ComponentInstance).size < 4
    @parts[outer].entities.add_instance(inner, place).material = paint
  end

  # Filled at once, at times.
  def add_group
    entities = entities_of(any(containers))
    return if of(entities, Sketchup::Group).size > 4
    group = entities.add_group
    draw(3).times { square(group.entities) }
    group.material = paint if draw(3).zero?
  end

  # What is there is put into a group.
  def group_some
    entities = entities_of(any(containers))
    return if of(entities, Sketchup::Group).size > 4
    chosen = entities.reject { |entity| entity.is_a?(Sketchup::Edge) }.sample(3, random: @random)
    entities.add_group(*chosen) unless chosen.empty?
  end

  # A copy of a distorted face would look like the other, so its texture is turned in the same operation.
  def copying
    @model.start_operation("Copy", true) unless @open
    Array(yield).grep(Sketchup::Face).each do |face|
      distort(face, face.material, true) if face.material&.texture
      distort(face, face.back_material, false) if face.back_material&.texture
    end
    @model.commit_operation unless @open
  end

  def make_unique = copying { any(top + nested)&.make_unique&.then { |element| element.definition.entities.to_a } }
  def explode = copying { any((top + nested).reject { |element| lamp?(element.definition) })&.explode }

  def to_component
    copying { any(of(@model.entities, Sketchup::Group))&.to_component&.then { |component| component.definition.entities.to_a } }
  end

  def copy_group
    group = any(of(@model.entities, Sketchup::Group)) or return
    group.copy.transformation = place if top.size < 28
  end

  def paint_face = any(faces)&.then { |face| draw(2).zero? ? face.material = paint : face.back_material = paint }

  def distort_face
    wearing = any(@model.materials.select(&:texture)) or return
    face = any(faces) or return
    distort(face, wearing, draw(3) > 0)
  end

  # Each in a way of its own: of two that look the same, either's material may stand for the other's.
  def distort(face, wearing, front)
    points = face.points.first(4)
    return if points.size < 4
    texture = [[draw(0.3), 0], [1, draw(0.3)], [1, 1], [draw(0.4), 0.9]]
    corners = points.zip(texture).flatten(1)
    face.position_material(wearing, corners, front)
  end

  def add_face
    entities = entities_of(any(containers))
    square(entities) if of(entities, Sketchup::Face).size < 12
  end

  def erase_face = any(faces)&.erase!
  def turn_face = any(faces)&.reverse!
  def layer_face = any(faces)&.layer = layer
  def hide_face = any(faces)&.then { |face| face.hidden = !face.hidden? }
  def smooth = any(faces)&.edges&.first&.then { |edge| edge.soft = edge.smooth = !edge.smooth? }

  def hole
    face = any(faces) or return
    x, y, z = face.points.first.to_a
    face.add_opening([[x + 2, y + 2, z], [x + 4, y + 2, z], [x + 4, y + 4, z]]) if face.points.size == 4
  end

  def clear = any(parts)&.entities&.clear!
  def remove_component = (@model.definitions.remove(any(parts)) if parts.size > 4)

  def color = material&.color = Array.new(3) { draw(256) }
  def opacity = material&.alpha = draw(11) / 10.0
  def texture = material&.texture = draw(4).zero? ? nil : pixels(any([16, 16, 24]))
  def name_material = material&.name = "Named #{draw(1 << 60)}"
  def shift = material&.then { |m| m.colorize_deltas = [draw(90), draw(5) / 10.0, 0] if m.texture }
  def remove_material = (@model.materials.remove(material) if @model.materials.length > 4)

  def factors
    m = material or return
    m.metallic = draw(3).zero? ? nil : draw(11) / 10.0
    m.roughness_texture = pixels if draw(3).zero?
  end

  def attributes
    key, value = any([["light_power", draw(100)], ["reflection", draw(10) / 10.0], ["hidden", draw(4).zero?], ["bump_depth", draw(3).to_f]])
    material&.set_attribute(D, key, value)
  end

  def fresh_material
    return if @model.materials.length > 16
    made = fresh("Fresh #{draw(1 << 60)}")
    any(faces)&.material = made
  end

  def default_color = @model.rendering_options[any(%w[FaceFrontColor FaceBackColor])] = Sketchup::Color.new(*Array.new(3) { draw(256) })

  def add_image
    entities = entities_of(any(containers))
    entities.add_image(any(PICTURES), Geom::Point3d.new(*Array.new(3) { draw(100) }), 10).layer = layer if of(entities, Sketchup::Image).size < 3
  end

  def erase_image = any(images)&.erase!
  def move_image = any(images)&.transformation = place
  def hide_image = any(images)&.hidden = hide?
  def layer_image = any(images)&.layer = layer

  def show_layer = layer.visible = !hide?
  def folders = @model.layers.folders.flat_map { |folder| [folder, *folder.folders] }
  def show_folder = any(folders)&.visible = !hide?
  def move_layer = any(@model.layers.to_a.drop(1))&.folder = any([nil, *folders])
  def add_layer = (@model.layers.add("Layer #{draw(1 << 60)}").folder = any([nil, *folders]) if @model.layers.length < 9)
  def remove_layer = (removed = any(@model.layers.to_a.drop(1))) && @model.layers.remove(removed)
  def remove_folder = (removed = any(@model.layers.folders)) && @model.layers.remove_folder(removed)

  def lights = of(@model.entities, Sketchup::ComponentInstance).select { |instance| lamp?(instance.definition) }
  def light = any(lights)&.set_attribute(D, "light-power", draw(1..90) / 10.0)
  def erase_light = any(lights)&.erase!

  def add_light
    entities = entities_of(any([nil, *parts]))
    entities.add_instance(any(@lamps), place) if of(entities, Sketchup::ComponentInstance).count { |instance| lamp?(instance.definition) } < 3
  end

  # One at a time, and back.
  def to_light
    part = parts.find { |lit| lamp?(lit) } || any(parts) or return
    part.set_attribute(D, "light-type", lamp?(part) ? "" : "point")
  end

  def to_facing
    part = parts.find { |turned| turned.behavior.always_face_camera? } || any(parts) or return
    part.behavior.always_face_camera = !part.behavior.always_face_camera?
  end

  def camera = @model.active_view.camera = Sketchup::Camera.new([draw(900), -draw(900), draw(300)], [0, 0, 0], Z_AXIS, true, 35.0)
  def sun = @model.shadow_info["ShadowTime"] = Time.utc(2027, draw(1..12), draw(1..28), draw(7..17))
  def add_page = (@model.pages.add("Page #{draw(1 << 30)}") if @model.pages.count < 4)
  def select_page = any(@model.pages)&.then { |page| @model.pages.selected_page = page }

  def start_operation = @model.start_operation("Edit", true)

  def commit_operation
    @model.commit_operation if @open
    @open = false
  end

  def abort_operation
    @model.abort_operation if @open
    @open = false
  end

  def undo
    finish
    Sketchup.undo
  end

  def redo
    finish
    Sketchup.send_action("editRedo:")
  end
end
