# A model with everything that an edit can be made of: parts in parts, shared ones, groups in groups,
# lights, images, what faces the camera. The same seed draws the same things.

require "modelhost"

class EditedModel
  D = "corvane_II"
  PICTURE = Dir.glob("/usr/share/assimp/models/**/*.png").min_by { |file| File.binread(file, 8, 16).unpack("N2").reduce(:*) }

  attr_reader :model, :names
  attr_accessor :pbr

  # `worn`: the paints, by name, of the owners of each shared part in turn.
  def initialize(seed, worn)
    @random = Random.new(seed)
    @names = {}
    @pbr = true
    @model = ModelHost::Model.new
    add_layers
    %w[Red Blue Green Wood Glass].each { |name| @model.materials.add(name).color = Array.new(3) { draw(256) } }
    material("Wood").texture = pixels
    @parts = %w[Inner Outer Crate].map { |name| @model.definitions.add(name) }
    @tree, @lamp = %w[Tree Lamp].map { |name| @model.definitions.add(name).tap { |made| square(made.entities) } }
    @tree.behavior.always_face_camera = true
    @lamp.set_attribute(D, "light-type", "point")
    fill_parts
    fill_root(worn.map { |name| name && material(name) })
  end

  def draw(n) = @random.rand(n)
  def any(list) = list.to_a[draw(list.to_a.size)]
  def id(entity) = entity.persistent_id & 0xFFFFFFFF
  def material(name = %w[Red Blue Wood Glass][draw(4)]) = @model.materials[name]
  def other_than(worn) = any(@model.materials.to_a - [worn])
  def shift = ModelHost::Transformation.translation(Array.new(3) { draw(1 << 12) })
  def turn = ModelHost::Transformation.rotation([0, 0, 0], [0, 0, 1], 1 + draw(5))
  def scale = ModelHost::Transformation.scaling(2 + draw(3))
  def pixels = { pixels: @random.bytes(3 * 16), width: 4, height: 4, bits: 24, size: [10, 10] }
  def square(entities) = entities.add_face(*corners)
  def layer = any(@model.layers)

  # The instances of each part, and the groups.
  def top = @model.entities.instances.select { |item| @parts.include?(item.definition) } + @model.entities.groups.to_a
  def at_root(definition) = @model.entities.instances.select { |item| item.definition == definition }
  def holders = [*@parts, *groups_in(@model.entities), *@parts.flat_map { |part| groups_in(part.entities) }]
  def nested = holders.flat_map { |holder| (parts_in(holder) + holder.entities.groups.to_a).map { |item| [item, holder] } }
  def parts_in(holder, among = @parts) = holder.entities.instances.select { |item| among.include?(item.definition) }
  def nested_of(definition) = holders.flat_map { |holder| parts_in(holder, [definition]).map { |item| [item, holder] } }
  def squares = everywhere(:faces).select { |face, _| face.area == 100 }
  # With nil for the root.
  def everywhere(list) = [nil, *holders].flat_map { |holder| (holder || @model).entities.public_send(list).map { |item| [item, holder] } }

  def uneven
    at_root_by_part = @model.entities.instances.group_by(&:definition)
    at_root_by_part.select { |_, owners| owners.map(&:material).uniq.size > 1 }.keys
  end

  # Yields one of the list and tells what the calls are made with.
  def change(held = any(nested))
    item, holder = held
    name(container: holder)
    yield item
  end

  def change_top(item = any(top))
    yield item
    name(owner: item.persistent_id, definition: id(item.definition))
    name(matrix: item.transformation.to_a)
  end

  def change_material(changed = any(@model.materials))
    name(material: id(changed))
    yield changed
  end

  def change_layers(*layers)
    name(layer: layers.map(&:persistent_id))
    yield layers
  end

  def change_definition(changed)
    name(definition: id(changed))
    yield changed
  end

  def name(values) = @names.update(values)
  # The entities of the holder, which the calls are made with.
  def add_to(holder)
    name(container: holder)
    (holder || @model).entities
  end

  def make_unique(item)
    where, worn = item.transformation, item.material
    item.erase!
    made = @model.definitions.add("Unique")
    square(made.entities)
    @model.entities.add_instance(made, where).material = worn
  end

  def walls = @model.layers["Walls"]
  def fittings = @model.layers["Fittings"]
  def deep = @model.layers["Deep"]
  def unseen = @model.layers["Hidden"]
  def folder(name) = @folders.fetch(name)
  attr_reader :parts, :tree, :lamp

  private

  def add_layers
    outer = @model.layers.add_folder("Outer")
    @folders = { "Outer" => outer, "Inner" => outer.add_folder("Inner"), "Shut" => @model.layers.add_folder("Shut") }
    @folders["Shut"].visible = false
    @model.layers.add("Walls")
    @model.layers.add("Fittings").folder = outer
    @model.layers.add("Deep").folder = @folders["Inner"]
    @model.layers.add("Hidden").visible = false
  end

  def corners
    x, y, z = Array.new(3) { draw(100) }
    [[x, y, z], [x + 10, y, z], [x + 10, y + 10, z], [x, y + 10, z]]
  end

  def groups_in(entities) = entities.groups.to_a.flat_map { |group| [group.definition, *groups_in(group.entities)] }

  # Each with faces in all ways of being painted, an image, a group, something hidden.
  def fill(entities)
    4.times { |i| square(entities).tap { |face| face.material = [nil, material("Red"), material("Wood"), material("Green")][i] } }
    square(entities).back_material = material("Glass")
    square(entities).layer = deep
    2.times { |i| entities.add_image(PICTURE, Array.new(3) { draw(100) }, 10).layer = [walls, fittings][i] }
    entities.images.to_a.last.hidden = true
  end

  def fill_parts
    inner, outer, crate = @parts
    fill(inner.entities)
    group = inner.entities.add_group
    square(group.entities).material = material("Glass")
    fill(outer.entities)
    outer.entities.add_instance(inner, shift).layer = fittings
    outer.entities.add_instance(inner, shift).material = material("Blue")
    outer.entities.add_instance(inner, shift).hidden = true
    outer.entities.add_instance(@tree, shift)
    shelf = outer.entities.add_group
    square(shelf.entities)
    shelf.entities.add_instance(inner, shift)
    # A closed body, which a light inside opens.
    points = [0, 1].product([0, 1], [0, 1]).map { |point| point.map { |value| value * 20 } }
    [[0, 1, 3, 2], [4, 6, 7, 5], [0, 4, 5, 1], [2, 3, 7, 6], [0, 2, 6, 4], [1, 5, 7, 3]].each { |side| crate.entities.add_face(points.values_at(*side)) }
    crate.entities.add_instance(@lamp)
  end

  def fill_root(worn)
    entities = @model.entities
    @parts.each { |part| worn.each { |paint| entities.add_instance(part, shift).material = paint } }
    entities.add_instance(@parts[1], shift).then { |hidden| hidden.hidden = true; hidden.material = worn[0] }
    entities.add_instance(@parts[0], shift).then { |item| item.layer = walls; item.material = worn[0] }
    2.times { entities.add_instance(@tree, shift) }
    entities.add_instance(@lamp, shift)
    shed = entities.add_group
    fill(shed.entities)
    bench = shed.entities.add_group
    square(bench.entities)
    bench.entities.add_instance(@parts[0], shift)
    entities.add_group.then { |group| group.material = material("Green"); square(group.entities) }
    fill(entities)
  end
end
