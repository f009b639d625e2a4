# frozen_string_literal: true

require "minitest/autorun"
require "tempfile"
require "modelhost"

# What a plug-in author does in Ruby, and what happens when it is done wrong.
class BindingTest < Minitest::Test
  SQUARE = [[0, 0, 0], [10, 0, 0], [10, 10, 0], [0, 10, 0]].freeze

  def setup
    @model = ModelHost::Model.new
    @entities = @model.entities
    @owned = ModelHost.owned_objects
  end

  def teardown
    ModelHost.reset_modes
    @model.close
    assert_equal @owned, ModelHost.owned_objects, "something was not released"
  end

  def transformation = ModelHost::Transformation

  def test_handle_is_a_plain_integer_of_its_model
    other = ModelHost::Model.new
    assert_kind_of Integer, @model.handle
    assert_operator @model.handle, :<, 2**62
    refute_equal @model.handle, other.handle
    other.close
  end

  def test_faces_holes_and_pushpull
    face = @entities.add_face(SQUARE)
    same = @entities.add_face(*SQUARE.map { |x, y, z| [x + 20, y, z] })
    assert_equal [0.0, 0.0, 1.0], face.normal
    face.add_hole([2, 2, 0], [4, 2, 0], [4, 4, 0], [2, 4, 0])
    assert_in_delta 96, face.area
    assert_equal 1, face.holes.size
    face.add_opening([[6, 6, 0], [8, 6, 0], [8, 8, 0]])
    assert_in_delta 94, face.area
    face.clear_openings
    group = @entities.add_group
    floor = group.entities.add_face(SQUARE)
    floor.material = @model.materials.add("Wood")
    lid = floor.pushpull(5)
    assert_equal [0.0, 0.0, 1.0], lid.normal
    assert_equal [0.0, 0.0, -1.0], floor.normal.map { |c| c + 0.0 }
    assert group.definition.manifold?
    assert_equal "Wood", lid.material.name
    assert_equal [[0, 0, 0], [10, 10, 5]], group.bounds
    refute_equal face, same
    assert_equal face, @entities.faces.first
    assert_equal 1, [face, @entities.faces.first].uniq.size
  end

  def test_components_edges_and_groups
    door = @model.definitions.add("Door")
    door.entities.fill(SQUARE + [[5, 5, 5]], [[0, 1, 4], [1, 2, 4], [2, 3, 4], [3, 0, 4]], nil, true)
    assert(door.entities.edges.all?(&:smooth?))
    door.behavior.always_face_camera = true
    assert @model.definitions["Door"].behavior.always_face_camera?
    instance = @entities.add_instance(door, transformation.translation([1, 2, 3]))
    instance.name = "front"
    instance.transform!(transformation.scaling(2))
    assert_equal [2.0, 4.0, 6.0], instance.transformation.origin
    instance.transformation = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 7, 8, 9, 1]
    assert_equal [7.0, 8.0, 9.0], @entities.instances.first.transformation.origin
    assert_equal [instance], door.instances
    edge, = @entities.add_edges([0, 0, 50], [0, 0, 60])
    edge.soft = edge.smooth = true
    assert edge.soft?
    assert_equal [0.0, 0.0, 60.0], edge.end
    error = assert_raises(ArgumentError) { door.entities.add_instance(door) }
    assert_match(/inside itself/, error.message)
  end

  def test_transformations
    turn = transformation.rotation([1, 0, 0], [0, 0, 1], Math::PI / 2)
    assert_equal([1.0, 1.0, 0.0], (turn * [2, 0, 0]).map { |c| c.round(9) + 0.0 })
    both = transformation.translation([5, 0, 0]) * transformation.scaling(2, 3, 4)
    assert_equal [7.0, 3.0, 4.0], both * [1, 1, 1]
    assert_equal [1.0, 1.0, 1.0], transformation.scaling([1, 1, 1], 5) * [1, 1, 1]
    assert_raises(ArgumentError) { transformation.new([1, 2, 3]) }
    assert_raises(ArgumentError) { transformation.rotation([0, 0, 0], [0, 0, 0], 1) }
  end

  def test_materials_and_textures
    red = @model.materials.add("Red")
    red.color = "#ff0000"
    red.alpha = 0.25
    assert_equal [255, 0, 0, 255], red.color
    assert_in_delta 0.25, @model.materials["Red"].alpha
    assert_equal "Red1", @model.materials.add("Red").name
    textured = @model.materials.add("煉瓦")
    textured.texture = { pixels: "\x00\x00\xFF\x00\xFF\x00".b, width: 2, height: 1, bits: 24, size: [4, 2] }
    face = @entities.add_face(SQUARE)
    face.material = textured
    assert_equal [2.5, 0.0, 1.0], face.uv_at([10, 0, 0])
    face.position_material(textured, [[0, 0, 0], [0, 0], [10, 0, 0], [1, 0], [0, 10, 0], [0, 1]])
    assert_equal([1.0, 0.0, 1.0], face.uv_at([10, 0, 0]).map { |c| c.round(9) })
    face.back_material = red
    assert_equal red, face.back_material
    textured.colorize_deltas = [10, 0.1, 0]
    assert_equal [10.0, 0.1, 0.0], textured.colorize_deltas
    textured.metallic = 0.5
    assert_equal :pbr, textured.workflow
    textured.metallic = nil
    assert_equal :classic, textured.workflow
    @model.materials.remove(textured)
    assert_nil face.material
    assert_raises(ArgumentError) { red.texture = "/no/such.png" }
    assert_raises(ArgumentError) { red.texture = { pixels: "xx", width: 5, height: 5 } }
    assert_raises(ArgumentError) { red.alpha = 2 }
    assert_raises(ArgumentError) { red.color = "red" }
  end

  def test_layers_and_folders
    trees = @model.layers.add("Trees")
    assert_equal trees, @model.layers.add("Trees")
    folder = @model.layers.add_folder("Site").add_folder("Inner")
    trees.folder = folder
    folder.visible = false
    assert_equal "Inner", trees.folder.name
    refute trees.folder.visible?
    group = @entities.add_group
    group.layer = trees
    @model.layers.remove(trees)
    assert_equal "Layer0", group.layer.name
    assert_raises(ArgumentError) { @model.layers.remove(group.layer) }
  end

  def test_attributes_of_every_type_come_back
    group = @entities.add_group
    {
      "int" => 3, "double" => 2.5, "flag" => true, "text" => "灯り", "list" => [1, [false, "x"], 2.0]
    }.each do |key, value|
      group.set_attribute("corvane_II", key, value)
      assert_equal value, group.get_attribute("corvane_II", key), key
    end
    group.set_attribute("corvane_II", "light-color", { color: "#ff8000" })
    assert_equal [255, 128, 0, 255], group.get_attribute("corvane_II", "light-color")
    assert_nil group.get_attribute("other", "int")
    assert_equal 9, group.get_attribute("other", "int", 9)
    assert group.delete_attribute("corvane_II", "int")
    assert_nil group.get_attribute("corvane_II", "int")
    assert_raises(RangeError) { group.set_attribute("d", "k", 2**40) }
    assert_raises(TypeError) { group.set_attribute("d", "k", [1, Object.new]) }
    assert_raises(ArgumentError) { group.set_attribute("d", "k", { flaot: 1 }) }
    @model.set_attribute("m", "k", 1)
    assert_equal 1, @model.get_attribute("m", "k")
  end

  def test_persistent_ids_survive_edits
    group = @entities.add_group
    id = group.persistent_id
    group.transformation = transformation.translation([1, 0, 0])
    group.hidden = true
    group.material = @model.materials.add("M")
    assert_equal id, @entities.groups.first.persistent_id
    group.persistent_id = 77
    assert_equal 77, group.persistent_id
    assert_raises(ArgumentError) { @entities.add_group.persistent_id = 77 }
  end

  def test_things_that_are_gone_say_so
    face = @entities.add_face(SQUARE)
    face.erase!
    refute face.valid?
    assert face.deleted?
    error = assert_raises(RuntimeError) { face.area }
    assert_match(/gone/, error.message)
    other = ModelHost::Model.new
    inside = other.entities.add_face(SQUARE)
    entities = other.entities
    other.close
    [-> { inside.material }, -> { entities.add_group }, -> { other.name }, -> { other.materials.add("x") }]
      .each { |call| assert_raises(RuntimeError, &call) }
  end

  def test_wrong_arguments
    assert_raises(TypeError) { @entities.add_face(1, 2, 3) }
    assert_raises(ArgumentError) { @entities.add_face([0, 0, 0], [1, 0, 0]) }
    assert_raises(ArgumentError) { @entities.add_face([0, 0, 0], [1, 0, 0], [2, 0, 0]) }
    assert_raises(ArgumentError) { @entities.add_face([0, 0], [1, 0], [1, 1]) }
    assert_raises(TypeError) { @entities.add_face([0, 0, "x"], [1, 0, 0], [1, 1, 0]) }
    assert_raises(TypeError) { @entities.add_instance(@entities.add_group) }
    assert_raises(TypeError) { @entities.add_group.layer = "Trees" }
    assert_raises(TypeError) { @entities.add_group.material = 5 }
    assert_raises(IndexError) { @entities.fill(SQUARE, [[0, 1, 9]]) }
    assert_raises(ArgumentError) { @entities.add_image("/no/such.png", [0, 0, 0], 1) }
    assert_raises(ArgumentError) { @model.materials.add("a\0b") }
    assert_raises(TypeError) { ModelHost.load(nil) }
  end

  def test_loading
    Tempfile.create(["scene", ".json"]) do |file|
      file.write('{"name": "N", "camera": {"eye": [0,0,1], "target": [0,0,0]}, ' \
                 '"entities": [{"box": [[0,0,0],[1,1,1]]}]}')
      file.flush
      model = ModelHost.load(file.path)
      assert_equal "N", model.name
      assert_equal 6, model.entities.faces.size
      assert_equal [0.0, 0.0, 1.0], model.camera[:eye]
      assert_nil model.warning
      model.close
    end
    error = assert_raises(RuntimeError) { ModelHost.load("/no/such/file.json") }
    assert_equal "/no/such/file.json: there is no such file", error.message
  end

  def test_rendering_options
    options = @model.rendering_options
    options["FaceFrontColor"] = [1, 2, 3]
    assert_equal [1, 2, 3, 255], @model.rendering_options["FaceFrontColor"]
    assert_nil options["NoSuch"]
  end

  def test_modes
    ModelHost.watch("meshhelper")
    face = @entities.add_face(SQUARE)
    face.plane
    assert_equal 1, ModelHost.call_counts["SUFaceGetPlane"]
    assert_empty ModelHost.overlaps
    ModelHost.fail_call("SUFaceGetPlane")
    assert_raises(RuntimeError) { face.plane }
    assert_equal 4, face.plane.size
    assert_raises(ArgumentError) { ModelHost.watch("nonsense") }
  end

  def test_objects_survive_the_collector
    names = 300.times.map { |i| @model.materials.add("M#{i}") }
    GC.stress = true
    @entities.add_face(SQUARE).set_attribute("d", "k", ["a", { float: 0.5 }])
    GC.stress = false
    GC.start
    assert_equal "M299", names.last.name
    assert_equal ["a", 0.5], @entities.faces.first.get_attribute("d", "k")
  ensure
    GC.stress = false
  end
end
