# A model that grows and changes at random, with the calls that a plug-in makes for each change. The
# same seed gives the same changes, whoever takes the calls.

require "modelhost"

class RandomEdits
  D = "corvane_II"
  # The smallest by their pixels, whose numbers a file of this kind has at its beginning.
  PICTURES = Dir.glob("/usr/share/assimp/models/**/*.png").sort_by { |file| [File.binread(file, 8, 16).unpack("N2").reduce(:*), file] }.first(3).freeze
  DEFINITIONS = 7
  MESH_PER_PAINT = !["", "0"].include?(ENV["QUELLIX_MESH_PER_PAINT"].to_s)

  attr_reader :model, :pbr, :done

  # `calls` takes invalidate_definition, invalidate_geometry_cache and so on.
  def initialize(seed, calls)
    @random = Random.new(seed)
    @calls = calls
    @pbr = true
    @distorted = 0.0
    @done = []
    build
  end

  def draw(...) = @random.rand(...)
  def any(list) = (list = list.to_a).empty? ? nil : list[draw(list.size)]

  # One change, of the kinds that leave alone what an export's threads read by address if `simple`.
  def edit(simple: false)
    kind = simple ? any(SIMPLE) : ALL[@random.rand(ALL.size)]
    uneven_before = uneven
    send(kind)
    @done << kind
    # Without a mesh for each paint the first owner's counts where others wear another one.
    (uneven_before | uneven).each { |definition| @calls.invalidate_definition(definition.persistent_id) if definition.valid? }
  end

  private

  # Each with how often it comes; what shares a table entry with another is told apart by chance.
  KINDS = {
    move_top: 4, move_nested: 2, paint_top: MESH_PER_PAINT ? 6 : 1, paint_nested: 2, hide_top: 2, hide_nested: 2, layer_top: 2,
    layer_nested: 2, add_top: 2, add_nested: 2, erase_top: 2, erase_nested: 1, add_group: 2, make_unique: 1,
    paint_face: 4, distort_face: 4, add_face: 3, erase_face: 1.5, turn_face: 1, hide_face: 1, layer_face: 2, hole: 1, smooth: 1,
    color: 2, opacity: 1, texture: 3, factors: 2, attributes: 2, shift: 1, name_material: 1, remove_material: 2,
    fresh_material: 2, default_color: 1, use_pbr: 0.3, clear: 0.3,
    add_image: 2, erase_image: 0.7, move_image: 1, hide_image: 1, layer_image: 2,
    layer: 3, folder: 2, move_layer: 1, remove_layer: 2,
    light: 2, add_light: 2, erase_light: 0.7, to_light: 1, to_facing: 1, names: 1
  }.freeze
  ALL = KINDS.flat_map { |kind, often| [kind] * (often * 10).to_i }.freeze
  # Flags and colours.
  SIMPLE = %i[hide_top hide_nested color layer hide_image].freeze

  def build
    @model = ModelHost::Model.new
    @folders = [@model.layers.add_folder("Outer")]
    @folders << @folders[0].add_folder("Inner")
    5.times { |i| @model.layers.add("Layer #{i}").folder = [nil, *@folders][i % 3] }
    8.times { |i| fresh("Material #{i}") }
    @parts = Array.new(DEFINITIONS) { |i| @model.definitions.add("Part #{i}") }
    @parts.each { |part| 3.times { square(part.entities) } }
    @parts.last.behavior.always_face_camera = true
    @lamps = %w[point softspot].map do |type|
      @model.definitions.add("Lamp").tap { |lamp| lamp.set_attribute(D, "light-type", type); square(lamp.entities) }
    end
    @parts.each { |part| 2.times { @model.entities.add_instance(part, place) } }
    2.times { square(@model.entities) }
    60.times { edit }
    @done.clear
  end

  # Elements and where they are: [element, definition that holds it or nil at the root].
  def containers
    groups = lambda { |entities| entities.groups.to_a.flat_map { |group| [group.definition, *groups.call(group.definition.entities)] } }
    [nil, *@parts, *@lamps, *groups.call(@model.entities), *@parts.flat_map { |part| groups.call(part.entities) }]
  end

  def entities_of(definition) = definition ? definition.entities : @model.entities
  def nested(list) = containers.compact.flat_map { |holder| holder.entities.public_send(list).map { |item| [item, holder] } }
  def everywhere(list) = containers.flat_map { |holder| entities_of(holder).public_send(list).map { |item| [item, holder] } }
  def top = @model.entities.instances.to_a + @model.entities.groups.to_a
  def nested_elements = nested(:instances) + nested(:groups)
  def lamp?(definition) = definition.get_attribute(D, "light-type", "") != ""
  def id(entity) = entity.persistent_id & 0xFFFFFFFF

  def uneven
    return [] if MESH_PER_PAINT
    @model.entities.instances.group_by(&:definition)
          .select { |_, owners| owners.map { |owner| owner.material }.uniq.size > 1 }.keys
  end

  # What holds the change.
  def touch(holder)
    holder ? @calls.invalidate_definition(id(holder)) : @calls.invalidate_geometry_cache(0)
  end

  def place
    move = ModelHost::Transformation.translation(Array.new(3) { draw(-500..500) / 4.0 })
    return move if draw(3) > 0
    move * ModelHost::Transformation.rotation([0, 0, 0], [0, 0, 1], draw(8) * Math::PI / 4) * ModelHost::Transformation.scaling(draw(1..3))
  end

  def material = any(@model.materials)
  # Seldom, so that the scene does not go dark.
  def hide? = draw(5).zero?

  def paint = draw(4).zero? ? nil : material
  def some_layer = any(@model.layers)
  def pixels(side = 4)
    bits = any([24, 32])
    { pixels: @random.bytes(side * side * bits / 8), width: side, height: side, bits: bits, size: [10, 10], use_alpha: draw(2) == 1 }
  end

  def fresh(name)
    made = @model.materials.add(name)
    made.color = Array.new(3) { draw(256) }
    made.texture = pixels if draw(2) == 1
    made.metallic = draw(11) / 10.0 if draw(4).zero?
    made
  end

  def square(entities)
    x, y, z = Array.new(3) { draw(-20..20) }
    face = entities.add_face([[x, y, z], [x + 10, y, z], [x + 10, y + 10, z], [x, y + 10, z]])
    face.material = paint
    face.back_material = paint
    face
  end

  # Yields what is drawn from the list and tells what holds it; nothing when the list is empty.
  def change(list)
    item, holder = any(list)
    return unless item
    yield item, holder
    touch(holder)
  end

  def move_top
    element = any(top) or return
    element.transformation = place
    if uneven.include?(element.definition) || draw(2).zero?
      @calls.update_instance_transform(element.persistent_id, element.transformation.to_a)
    else
      @calls.invalidate_geometry_cache(id(element))
    end
  end

  def move_nested = change(nested_elements) { |element, _| element.transformation = place }
  def paint_nested = change(nested_elements) { |element, _| element.material = paint }
  def hide_nested = change(nested_elements) { |element, _| element.hidden = hide? }
  def layer_nested = change(nested_elements) { |element, _| element.layer = some_layer }
  def erase_nested = change(nested_elements) { |element, _| element.erase! }

  def paint_top
    element = any(top) or return
    worn = paint
    same = draw(2).zero? ? [element] : top.select { |other| other.definition == element.definition }
    same.each { |other| other.material = worn }
    return @calls.invalidate_definition(id(element.definition)) unless MESH_PER_PAINT
    same.each { |other| @calls.invalidate_geometry_cache(id(other)) }
  end

  def hide_top = any(top)&.then { |element| element.hidden = hide? }
  def layer_top = any(top)&.then { |element| element.layer = some_layer }
  def erase_top = (any(top)&.erase! if top.size > 12)
  def add_top = (@model.entities.add_instance(any(@parts), place) if top.size < 28)

  # Later parts in earlier ones, so that none comes to lie in itself.
  def add_nested
    outer = draw(DEFINITIONS - 1)
    return if @parts[outer].entities.instances.count > 3
    @parts[outer].entities.add_instance(@parts[draw((outer + 1)...DEFINITIONS)], place).material = paint
    touch(@parts[outer])
  end

  # Filled by the same change, at times.
  def add_group
    holder = any(containers)
    return if entities_of(holder).groups.count > 4
    group = entities_of(holder).add_group
    draw(3).times { square(group.entities) }
    group.material = paint if draw(3).zero?
    touch(holder) if holder
  end

  def make_unique
    element = any(@model.entities.instances.reject { |instance| lamp?(instance.definition) }) or return
    where, worn = element.transformation, element.material
    element.erase!
    group = @model.entities.add_group
    square(group.entities)
    group.transformation = where
    group.material = worn
  end

  def paint_face
    change(everywhere(:faces)) { |face, _| draw(2).zero? ? face.material = paint : face.back_material = paint }
  end

  # Each in a way of its own: of two that look the same, either's material may stand for the other's.
  def distort_face
    textured = @model.materials.select(&:texture?)
    wearing = any(textured) or return
    change(everywhere(:faces)) do |face, _|
      points = face.points.first(4)
      next if points.size < 4
      face.position_material(wearing, points.zip([[0, 0], [1, 0], [1, 1], [(@distorted += 0.0382) % 0.45, 0.9]]).flatten(1), draw(3) > 0)
    end
  end

  def add_face
    holder = any(containers)
    return if entities_of(holder).faces.count > 12
    square(entities_of(holder))
    touch(holder)
  end

  def erase_face = change(everywhere(:faces)) { |face, _| face.erase! }
  def turn_face = change(everywhere(:faces)) { |face, _| face.reverse! }
  def layer_face = change(everywhere(:faces)) { |face, _| face.layer = some_layer }
  # Never has an effect.
  def hide_face = any(everywhere(:faces))&.first&.then { |face| face.hidden = !face.hidden? }

  def hole
    change(everywhere(:faces)) do |face, _|
      x, y, z = face.points.first
      face.add_opening([[x + 2, y + 2, z], [x + 4, y + 2, z], [x + 4, y + 4, z]]) if face.points.size == 4
    end
  end

  def smooth
    change(everywhere(:faces)) { |face, _| face.edges.first.then { |edge| edge.soft = edge.smooth = !edge.smooth? } }
  end

  def change_material
    changed = material or return
    yield changed
    @calls.invalidate_material_cache(id(changed))
  end

  def color = change_material { |m| m.color = Array.new(3) { draw(256) } }
  def opacity = change_material { |m| m.alpha = draw(11) / 10.0 }
  def texture = change_material { |m| m.texture = draw(4).zero? ? nil : pixels(any([4, 4, 8])) }
  def name_material = change_material { |m| m.name = "Named #{draw(1 << 60)}" }
  def shift = change_material { |m| m.colorize_deltas = [draw(90), draw(5) / 10.0, 0] if m.texture? }

  def factors
    change_material do |m|
      m.metallic = draw(3).zero? ? nil : draw(11) / 10.0
      m.roughness = draw(3).zero? ? nil : draw(11) / 10.0
      m.roughness_texture = pixels if draw(3).zero?
    end
  end

  def attributes
    key, value = any([["light_power", draw(100)], ["reflection", draw(10) / 10.0], ["hidden", draw(4).zero?], ["bump_depth", draw(3).to_f]])
    change_material { |m| m.set_attribute(D, key, value) }
  end

  def remove_material
    return if @model.materials.size < 5
    removed = material
    before = id(removed)
    @model.materials.remove(removed)
    @calls.invalidate_material_cache(before)
  end

  def fresh_material
    return if @model.materials.size > 16
    made = fresh("Fresh #{draw(1 << 60)}")
    change(everywhere(:faces)) { |face, _| face.material = made }
  end

  def default_color
    side, key = any([["FaceFrontColor", 0xFFFFFFFF], ["FaceBackColor", 0xFFFFFFFE]])
    @model.rendering_options[side] = Array.new(3) { draw(256) }
    @calls.invalidate_material_cache(key)
  end

  def use_pbr
    @pbr = !@pbr
    @calls.clear_reload_cache
  end

  def clear = @calls.clear_reload_cache

  def add_image
    holder = draw(3).zero? ? nil : any(containers)
    return if entities_of(holder).images.count > 2
    entities_of(holder).add_image(any(PICTURES), Array.new(3) { draw(100) }, 10).layer = some_layer
    touch(holder)
  end

  def erase_image = change(everywhere(:images)) { |image, _| image.erase! }
  def move_image = change(everywhere(:images)) { |image, _| image.transformation = place }
  def hide_image = change(everywhere(:images)) { |image, _| image.hidden = hide? }
  def layer_image = change(everywhere(:images)) { |image, _| image.layer = some_layer }

  def layer = some_layer.then { |changed| changed.visible = !hide?; @calls.invalidate_layer(changed.persistent_id) }

  def folder
    changed = any(@folders)
    changed.visible = !hide?
    below = changed == @folders[0] ? @folders : [changed]
    @model.layers.each { |l| @calls.invalidate_layer(l.persistent_id) if below.include?(l.folder) }
  end

  def move_layer
    moved = any(@model.layers.to_a.drop(1)) or return
    moved.folder = any([nil, *@folders])
    @calls.invalidate_layer(moved.persistent_id)
  end

  def remove_layer
    removed = any(@model.layers.to_a.drop(1)) or return
    before = removed.persistent_id
    @model.layers.remove(removed)
    @calls.invalidate_layer(before)
    @model.layers.add("Layer #{draw(1 << 60)}").folder = any([nil, *@folders])
  end

  def lights = @model.entities.instances.select { |instance| lamp?(instance.definition) }
  def light = any(lights)&.set_attribute(D, "light-power", draw(1..90) / 10.0)
  def erase_light = any(lights)&.erase!

  def add_light
    holder = any([nil, *@parts])
    return if entities_of(holder).instances.count { |instance| lamp?(instance.definition) } > 2
    entities_of(holder).add_instance(any(@lamps), place)
    touch(holder) if holder
  end

  # One at a time, and back.
  def to_light
    part = @parts.find { |lit| lamp?(lit) } || any(@parts)
    part.set_attribute(D, "light-type", lamp?(part) ? "" : "point")
    @calls.invalidate_definition(id(part))
  end

  def to_facing
    part = @parts.first(DEFINITIONS - 1).find { |turned| turned.behavior.always_face_camera? } || any(@parts)
    part.behavior.always_face_camera = !part.behavior.always_face_camera?
    @calls.invalidate_definition(id(part))
  end

  def names
    any(top)&.name = "Named #{draw(1 << 60)}"
    some_layer.name = "Named #{draw(1 << 60)}"
  end
end
