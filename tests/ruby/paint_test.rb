# With QUELLIX_MESH_PER_PAINT: what wears no paint of its own shows the paint of what it is placed in,
# in every placement, and reporting an owner alone is enough after it was painted.

ENV["QUELLIX_MESH_PER_PAINT"] = "1"
require_relative "helper"
require "modelhost"

class PaintTest < LinkTest
  PAINTED_MESH = 1 << 62
  FACING_MESH = 1 << 63
  SEED = Integer(ENV.fetch("SEED", Random.new_seed.to_s)) % (1 << 32)
  # What a side shows that nothing paints.
  DEFAULTS = [0xFFFFFFFF, 0xFFFFFFFE].freeze

  def setup
    super
    ENV["KVAPP_SCENE_JSON"] = "1"
    @model = ModelHost::Model.new
    @paints = %w[Red Blue Green].map { |name| @model.materials.add(name) }
    @paints[2].texture = { pixels: "\x10\x20\x30".b * 4, width: 2, height: 2, bits: 24, size: [4, 4] }
  end

  def teardown
    super
    @model.close
  end

  def export(reload = false)
    link.do_import(@model.handle, "a.skp", reload, true)
    link.init_children_map(@model.handle)
    link.update_cache_info
    @exports = reload ? @exports + 1 : 1
    # Sent when what went before is done, files and all.
    link.show_message("done")
  end

  def scene(number = @exports) = JSON.parse(File.read(File.join(out, "scene-#{number}.json")))

  def fresh_scene
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].inspect
    start
    export
    scene
  end

  def shift(*by) = ModelHost::Transformation.translation(by)
  def square(entities, front = nil, back = front)
    face = entities.add_face([0, 0, 0], [9, 0, 0], [9, 9, 0])
    face.material, face.back_material = front, back
  end

  def lamp?(item) = !item.is_a?(ModelHost::Group) && item.definition.get_attribute("corvane_II", "light-type", "") != ""
  def facing?(item) = !item.is_a?(ModelHost::Group) && item.definition.behavior.always_face_camera?
  def children(entities) = (entities.instances.to_a + entities.groups.to_a).reject { |item| lamp?(item) }

  # What the faces show below, by the keys of materials.
  def shown(entities, paint, facing)
    own = entities.faces.flat_map { |face| [face.material, face.back_material].zip(DEFAULTS).map { |side, none| (side || paint)&.persistent_id || none } }
    nested = children(entities).reject { |item| !facing && facing?(item) }
    own | nested.flat_map { |item| shown(item.definition.entities, item.material || paint, facing) }
  end

  def takes_paint?(definition)
    definition.entities.faces.any? { |face| !face.material || !face.back_material } ||
      children(definition.entities).any? { |item| !item.material && takes_paint?(item.definition) }
  end

  # The place of each mesh => what it shows there, its definition, the paint that it inherits.
  def placed(entities = @model.entities, paint = nil, at = [0, 0, 0], top: true)
    children(entities).each_with_object({}) do |item, found|
      worn = item.material || paint
      place = at.zip(item.transformation.to_a[12, 3]).map(&:sum)
      facing = facing?(item)
      if facing || top
        keys = shown(item.definition.entities, worn, facing)
        found[[place, facing ? 1 : 0]] = [keys.sort, item.definition, worn] unless keys.empty?
      end
      found.update(placed(item.definition.entities, worn, place, top: false)) unless facing
    end
  end

  def assert_painted(scene, what)
    wanted = placed
    got = scene["placements"].to_h { |placement| [[placement["transform"][12, 3], placement["mesh"]["pass"]], placement["mesh"]] }
    assert_equal wanted.keys.sort, got.keys.sort, what
    made = wanted.map do |key, (keys, definition, worn)|
      mesh = got[key]
      # A texture's id stands above the material's.
      assert_equal keys, mesh["materials"].map { |material| material & 0xFFFFFFFF }.sort, "#{what}: #{key}"
      painted = worn && takes_paint?(definition)
      assert_equal key[1] == 1, mesh["id"] & FACING_MESH != 0, what
      assert_equal !!painted, mesh["id"] & PAINTED_MESH != 0, "#{what}: #{key}"
      assert_equal definition.persistent_id, mesh["id"] & ~FACING_MESH, what unless painted
      [[key[1], definition.persistent_id, (worn.persistent_id if painted)], mesh["id"]]
    end.uniq
    assert_equal [made.size] * 2, [made.to_h.size, made.to_h.invert.size], "#{what}: a mesh for each definition and paint"
    made.to_h
  end

  def draw(n) = @random.rand(n)
  def any(list) = list.to_a[draw(list.size)]
  def place = shift(*Array.new(3) { draw(1 << 16) - (1 << 15) })
  def paint = any([nil, nil, *@paints])

  # Parts in parts, groups in them, one part that faces the camera, one that is a lamp.
  def build(seed)
    @random = Random.new(seed)
    @parts = Array.new(6) { |i| @model.definitions.add("Part #{i}") }
    @parts[4].behavior.always_face_camera = true
    @parts[5].set_attribute("corvane_II", "light-type", "point")
    @parts.each_with_index do |part, i|
      inside = [part.entities]
      2.times { inside << any(inside).add_group.tap { |group| group.material = paint; group.transformation = place }.entities }
      [*inside, *inside].each { |entities| square(entities, *Array.new(2) { draw(6).zero? ? nil : any(@paints) }) }
      next if i > 3
      3.times { any(inside).add_instance(any(@parts.drop(i + 1)), place).material = paint }
    end
    @parts.each { |part| [nil, *@paints, *@paints].shuffle(random: @random).first(4).each { |worn| @model.entities.add_instance(part, place).material = worn } }
    @model.entities.add_group.tap { |group| group.material = paint; group.entities.add_instance(@parts[4], place) }
  end

  def test_each_placement_shows_its_own_paint
    8.times do |i|
      what = "SEED=#{SEED}, model #{i}"
      build(SEED + i)
      start
      export
      ids = assert_painted(scene, what)
      names = command_names
      assert_equal ids.size, names.count("AppendMesh"), "#{what}: each mesh once"
      # What comes first in the model has no say.
      @model.entities.instances.first(3).each(&:erase!)
      again = assert_painted(fresh_scene, what)
      assert_empty again.reject { |key, id| ids.fetch(key, id) == id }, what
      link.quit
      @model.close
      setup
    end
  end

  # Lights, images and what is painted itself take no paint, whether shown or hidden.
  def test_one_mesh_where_no_face_takes_the_paint
    part, inner, lamp = %w[Part Inner Lamp].map { |name| @model.definitions.add(name) }
    lamp.set_attribute("corvane_II", "light-type", "softspot")
    [inner, lamp].each { |definition| square(definition.entities) }
    square(part.entities, @paints[0])
    part.entities.add_instance(lamp)
    part.entities.add_image(Dir.glob("/usr/share/assimp/models/**/*.png").min, [0, 0, 0], 10)
    nested = part.entities.add_instance(inner)
    nested.material = @paints[1]
    owners = @paints.map { |worn| @model.entities.add_instance(part).tap { |owner| owner.material = worn } }
    start
    export
    assert_equal [part.persistent_id] * 3, scene["placements"].map { |placement| placement["mesh"]["id"] }
    nested.material = nil
    link.invalidate_definition(part.persistent_id)
    export(true)
    ids = scene["placements"].map { |placement| placement["mesh"]["id"] }
    assert_equal 3, ids.uniq.size
    nested.hidden = true
    link.invalidate_definition(part.persistent_id)
    export(true)
    assert_equal ids, scene["placements"].map { |placement| placement["mesh"]["id"] }, "what is hidden counts too"
    owners[0].material = nil
    link.invalidate_geometry_cache(owners[0].persistent_id)
    export(true)
    reloaded = scene
    assert_same_scene fresh_scene, reloaded
  end

  # Each owner is painted alone, again and again, and only it is reported.
  def test_an_owner_that_was_painted_is_reported_alone
    build(SEED)
    start
    export
    owners = @model.entities.instances.to_a + @model.entities.groups.to_a
    12.times do |i|
      owner = any(owners.reject { |item| lamp?(item) || facing?(item) })
      owner.material = any([nil, *@paints].reject { |worn| worn == owner.material })
      link.invalidate_geometry_cache(owner.persistent_id)
      export(true)
      reloaded = scene
      assert_painted(reloaded, "SEED=#{SEED}, step #{i}")
      facing = reloaded["placements"].count { |placement| placement["mesh"]["pass"] == 1 }
      sent = command_names.then { |names| names.drop(names.rindex("SetModelName")) }
      assert_operator sent.count("AppendMesh") + sent.count("InstanciateMesh"), :<=, 1 + facing, "only the owner"
      next unless i % 4 == 3
      assert_same_scene fresh_scene, reloaded, "SEED=#{SEED}, step #{i}"
    end
  end
end

require "minitest/autorun"
