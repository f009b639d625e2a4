# frozen_string_literal: true

require "minitest/autorun"
require "tempfile"
require "sketchup.rb"

# The host's public names as a plug-in uses them.
class HostTest < Minitest::Test
  SQUARE = [[0, 0, 0], [10, 0, 0], [10, 10, 0], [0, 10, 0]].freeze
  T = Geom::Transformation

  # Notes every call, with what a block makes of the arguments.
  class Spy
    attr_reader :calls

    def initialize(&note)
      @calls = []
      @note = note || ->(*) {}
    end

    def respond_to_missing?(name, _) = name.start_with?("on")

    def method_missing(name, *arguments)
      @calls << name
      @note.call(name, *arguments)
    end

    def take = @calls.dup.tap { @calls.clear }
  end

  def setup
    Sketchup.file_new
    @model = Sketchup.active_model
    @entities = @model.entities
  end

  def spy(*subjects, &note) = Spy.new(&note).tap { |spy| subjects.each { |subject| subject.add_observer(spy) } }

  def test_points_vectors_and_transformations
    turn = T.rotation(ORIGIN, Z_AXIS, 90.degrees)
    moved = T.translation(Geom::Vector3d.new(5, 0, 0)) * turn
    assert_equal Geom::Point3d.new(5, 1, 0), moved * Geom::Point3d.new(1, 0, 0)
    assert_equal Geom::Vector3d.new(0, 1, 0), X_AXIS.transform(moved), "a vector has no place"
    assert_equal [5, 1, 0], (moved * [1, 0, 0]).map(&:round)
    skewed = moved * T.scaling([1, 2, 3], 2, 3, -4)
    assert_predicate skewed * skewed.inverse, :identity?
    assert_equal [1, 2, 3], T.new(Geom::Point3d.new(1, 2, 3)).origin.to_a
    assert_equal skewed.to_a, T.new(skewed.xaxis, skewed.yaxis, skewed.zaxis, skewed.origin).to_a
    assert_equal [X_AXIS, Z_AXIS], T.new(ORIGIN, X_AXIS).then { |t| [t.zaxis, t.yaxis] }
    assert_raises(ArgumentError) { T.scaling(1, 0, 1).inverse }
    box = Geom::BoundingBox.new.add([1, 2, 3], [4, 0, 3])
    assert_equal [[1, 0, 3], [4, 2, 3], 3, 2, 0], [box.min.to_a, box.max.to_a, box.width, box.height, box.depth]
    assert_predicate Geom::BoundingBox.new, :empty?
    assert_in_delta 1.5, 1.5.m.to_m
    assert_in_delta 10, 254.mm
    face = @entities.add_face(SQUARE.map { |point| Geom::Point3d.new(point) })
    assert_equal Z_AXIS, face.normal
    assert_equal [[0, 0, 0], [10, 10, 0]], face.bounds.to_a.map(&:to_a)
    assert_equal SQUARE, face.vertices.map { |vertex| vertex.position.to_a }
  end

  def test_observers_hear_changes_at_once_and_operations_around_them
    root = spy(@model, @entities)
    face = @entities.add_face(SQUARE)
    assert_equal [:onTransactionStart, *[:onElementAdded] * 5, :onTransactionCommit], root.take
    @model.start_operation("Paint")
    assert_equal [:onTransactionStart], root.take
    face.material = @model.materials.add("Red")
    assert_equal [:onElementModified], root.take, "in the middle of the operation"
    face.edges.first.smooth = true
    assert_equal %i[onElementModified onElementModified], root.take, "the edge and its face"
    face.set_attribute("d", "k", 1)
    assert_equal [:onElementModified], root.take
    @model.commit_operation
    @model.start_operation("Nothing")
    @model.commit_operation
    assert_equal %i[onTransactionCommit onTransactionStart onTransactionEmpty], root.take
    face.erase!
    assert_equal %i[onTransactionStart onElementRemoved onEraseEntities onTransactionCommit], root.take
    refute @model.commit_operation
    @model.remove_observer(root)
    assert(@entities.remove_observer(root))
    refute(@entities.remove_observer(root))
    @entities.clear!
    assert_empty root.take
  end

  def test_what_definitions_hold_is_observed_too
    group = @entities.add_group
    heard = []
    spy(group.entities) { |name, entities, *| heard << [name, entities.parent] }
    group.entities.add_face(SQUARE)
    assert_equal [[:onElementAdded, group.definition]], heard.uniq
    definitions = spy(@model.definitions)
    door = @model.definitions.add("Door")
    door.behavior.always_face_camera = true
    door.set_attribute("d", "k", 1)
    placed = spy(door)
    instance = @entities.add_instance(door, IDENTITY)
    assert_equal [:onComponentInstanceAdded], placed.take
    assert_equal [group.definition, door].to_set, @model.definitions.to_set
    assert_equal %i[onComponentAdded onComponentPropertiesChanged onComponentPropertiesChanged], definitions.take
    gone = []
    spy(@model.definitions) { |_, _, definition| gone << definition }
    of_group = group.definition
    group.erase!
    @model.definitions.purge_unused
    assert_equal [of_group], gone, "it can be told by what it was"
    ids = []
    spy(@entities) { |name, _, id| ids << id if name == :onElementRemoved }
    id = instance.entityID
    instance.erase!
    assert_equal [id], ids
  end

  def test_an_observer_that_fails_or_edits_stops_nobody
    material = @model.materials.add("Mark")
    failing = spy(@entities) { raise "no good" }
    editing = spy(@entities) { |name, _, entity| entity.material = material if name == :onElementAdded }
    later = spy(@entities)
    group = nil
    told = capture_io { group = @entities.add_group }.last
    assert_match(/\AError: #<RuntimeError: no good>\n.*host_test/, told)
    assert_equal material, group.material
    assert_equal %i[onElementModified onElementAdded].sort, later.take.uniq.sort
    refute_empty failing.calls
    refute_empty editing.calls
    @entities.remove_observer(failing)
    Sketchup.undo
    refute_predicate group, :valid?, "the callback's edit is part of the operation"
  end

  def test_operations_join_and_are_undone_as_one
    @model.start_operation("One")
    first = @entities.add_group
    @model.start_operation("Two", true, false, true)
    second = @entities.add_group
    @model.commit_operation
    id = first.persistent_id
    assert Sketchup.undo
    assert_empty @entities.to_a
    assert_nil @model.find_entity_by_persistent_id(id)
    refute_predicate first, :valid?
    assert Sketchup.send_action("editRedo:")
    assert_equal [first, second], @entities.to_a, "what a plug-in holds stands for the same again"
    assert_equal [first, nil], @model.find_entity_by_persistent_id([id, 5])
    assert_equal second, @model.find_entity_by_id(second.entityID)
    @entities.add_group
    Sketchup.undo
    @entities.add_group
    refute @model.history.redo, "what was done since cannot be left out"
  end

  def test_materials_come_back_where_they_were
    red = @model.materials.add("Red")
    red.texture = { pixels: "\x00\x00\xFF".b, width: 1, height: 1, bits: 24, size: [4, 2] }
    face = @entities.add_face(SQUARE)
    face.material = red
    materials = spy(@model.materials)
    @model.materials.remove(red)
    assert_nil face.material
    Sketchup.undo
    assert_equal [red, 4.0], [face.material, face.material.texture.width]
    red.texture.size = 8
    red.color = Sketchup::Color.new("blue")
    Sketchup.undo
    assert_equal %i[onMaterialRemove onMaterialAdd onMaterialChange onMaterialChange onMaterialUndoRedo],
                 materials.take
    assert_equal 8.0, red.texture.height
    red.color = [1, 2, 3]
    assert_equal Sketchup::Color.new(1, 2, 3), red.color
  end

  def test_silence_and_moves_that_cannot_be_undone
    group = @entities.add_group
    heard = spy(@model, @entities)
    group.move!(T.translation([1, 2, 3]))
    assert_equal [:onElementModified], heard.take
    ModelHost.silently { group.transform!(T.translation([1, 0, 0])) && @entities.add_face(SQUARE).erase! }
    assert_empty heard.take
    assert_equal [2, 2, 3], group.transformation.origin.to_a
    refute Sketchup.undo, "what was before may not fit any more"
    group.hidden = true
    assert Sketchup.undo
    refute_predicate group, :hidden?
  end

  # A square in a group that is placed, painted and mirrored.
  def placed_square(transformation)
    group = @entities.add_group
    [group, group.entities.add_face(SQUARE), group.transformation = transformation]
  end

  def test_explode_leaves_what_is_seen
    wood = @model.materials.add("Wood")
    wood.texture = { pixels: "\x00\x00\xFF".b, width: 1, height: 1, bits: 24, size: [4, 2] }
    layer = @model.layers.add("On")
    group, square, place = placed_square(T.translation([1, 2, 3]) * T.rotation(ORIGIN, [1, 1, 0], 1) * T.scaling(-1, 2, 3))
    group.material = wood
    group.layer = layer
    inner = group.entities.add_group
    inner.entities.add_face(SQUARE)
    at = place * Geom::Point3d.new(3, 4, 0)
    normal = square.normal
    square.material = wood
    lies = square.uv_at([3, 4, 0])
    square.material = nil
    added = group.explode
    face = added.grep(Sketchup::Face).first
    assert_equal [wood, wood, layer], [face.material, face.back_material, face.layer]
    lies.zip(face.uv_at(at)) { |a, b| assert_in_delta a, b }
    assert_operator face.normal % (place * normal), :>, 0, "its front stays its front"
    assert_equal [wood], added.grep(Sketchup::Group).map(&:material)
    assert_raises(ArgumentError) { placed_square(T.scaling(1, 1, 0)).first.explode }
  end

  def test_grouping_making_unique_and_moving
    shared = @entities.add_face(SQUARE)
    beside = @entities.add_face([10, 0, 0], [20, 0, 0], [20, 10, 0], [10, 10, 0])
    group = @entities.add_group(shared)
    assert_equal [1, 4, 1, 4], [group.entities, @entities].flat_map { |e| [e.faces.size, e.edges.size] }
    assert_predicate beside, :valid?
    copy = group.copy
    assert_equal group.definition, copy.definition
    copy.make_unique
    refute_equal group.definition, copy.definition
    alone = copy.definition
    assert_equal alone, copy.make_unique.definition
    component = copy.to_component
    assert_equal [Sketchup::ComponentInstance, 1], [component.class, component.definition.entities.faces.size]
    @entities.transform_entities([0, 0, 5], beside, group)
    assert_equal [5, 5], [beside.bounds.min.z, group.transformation.origin.z]
    @entities.transform_entities(T.scaling(1, 1, -1), beside)
    assert_equal [-5, -1], [beside.bounds.max.z, beside.normal.z], "mirrored with its sides"
    assert_raises(RuntimeError) { group.entities.transform_entities(IDENTITY, beside) }
    assert_raises(RuntimeError) { group.entities.add_group(beside) }
  end

  def test_the_user_goes_into_groups_and_leaves_them
    outer = @entities.add_group
    inner = outer.entities.add_group
    heard = spy(@model)
    @model.active_path = [outer, inner]
    assert_equal [inner.entities, outer.definition], [@model.active_entities, inner.parent]
    assert @model.close_active
    assert_equal [outer], @model.active_path
    assert @model.close_active
    assert_nil @model.active_path
    refute @model.close_active
    assert_equal [:onActivePathChanged] * 3, heard.take
  end

  def test_layers_and_folders
    layers = @model.layers
    on = layers.add("On")
    outer = layers.add_folder("Outer")
    inner = outer.add_folder("Inner")
    on.folder = inner
    heard = spy(layers)
    layers.remove_folder(inner)
    assert_equal [outer, [on], [outer]], [on.folder, outer.layers, layers.folders]
    outer.name = "Other"
    on.visible = false
    @model.active_layer = on
    assert_equal({ onLayerChanged: 2, onLayerFolderChanged: 2, onLayerFolderRemoved: 1, onCurrentLayerChanged: 1 },
                 heard.take.tally)
    group = @entities.add_group
    group.layer = on
    kept = @entities.add_group
    layers.remove(on, true)
    assert_equal [kept], @entities.to_a
    Sketchup.undo
    assert_equal [on, on], [group.layer, outer.layers.first]
    assert_raises(ArgumentError) { outer.folder = outer }
  end

  def test_pages_show_what_they_keep
    view, info, options = @model.active_view, @model.shadow_info, @model.rendering_options
    layer = @model.layers.add("Hidden then")
    layer.visible = false
    view.camera = Sketchup::Camera.new([0, 0, 100], ORIGIN, Y_AXIS, true, 40)
    info["ShadowTime"] = Time.utc(2026, 6, 21, 12)
    page = @model.pages.add("Noon")
    without_camera = @model.pages.add("Plan", PAGE_USE_ALL & ~PAGE_USE_CAMERA)
    heard = spy(view, info, options, @model.layers)
    layer.visible = true
    view.camera.set([5, 5, 5], ORIGIN, Z_AXIS)
    info["ShadowTime"] = Time.utc(2026, 12, 21, 12)
    options["SkyColor"] = "red"
    heard.take
    @model.pages.selected_page = without_camera
    assert_equal [5, 5, 5], view.camera.eye.to_a
    assert_equal [false, 6], [layer.visible?, info["ShadowTime"].month]
    @model.pages.selected_page = page
    assert_equal [0, 0, 100, 40], [*view.camera.eye.to_a, view.camera.fov]
    assert_equal %i[onLayerChanged onRenderingOptionsChanged onShadowInfoChanged onViewChanged], heard.take.sort
    Sketchup.undo
    assert_equal [12, true], [info["ShadowTime"].month, layer.visible?]
    assert_equal [100, "Noon"], [view.camera.eye.z, @model.pages["Noon"].name], "the camera is not undone"
    assert @model.pages.erase(page)
    assert_nil @model.pages.selected_page
    Sketchup.undo
    assert_equal [page, without_camera], @model.pages.to_a
    assert_raises(ArgumentError) { options["NoSuch"] = 1 }
    assert_raises(ArgumentError) { view.camera.set(ORIGIN, ORIGIN, Z_AXIS) }
  end

  # Places and times of known sun: noon on the tropic, the equator's evening, a southern noon, with north
  # turned.
  def test_the_sun_stands_where_it_does
    [[23.4, 0, Time.utc(2026, 6, 21, 12, 2), 0, [0, 0, 1]], [0, 0, Time.utc(2026, 3, 21, 18, 7), 0, [-1, 0, 0]],
     [-33.9, 18.4, Time.utc(2026, 12, 21, 10, 44), 0, [0, 0.18, 0.98]],
     [50, 0, Time.utc(2026, 3, 21, 12, 7), 90, [-0.766, 0, 0.643]]].each do |latitude, longitude, time, north, wanted|
      info = @model.shadow_info
      { "Latitude" => latitude, "Longitude" => longitude, "TZOffset" => 0, "ShadowTime" => time, "NorthAngle" => north }
        .each { |key, value| info[key] = value }
      info["SunDirection"].to_a.zip(wanted) { |a, b| assert_in_delta b, a, 0.02, "#{latitude} #{time}" }
    end
  end

  def test_one_model_is_open_at_a_time
    former, @model.name = @model, "Former"
    of_model, of_app = spy(former), spy
    Sketchup.add_observer(of_app)
    of_model.take
    Tempfile.create(["scene", ".json"]) do |file|
      file.write('{"camera": {"eye": [0,0,9], "target": [0,0,0], "fov": 50}, ' \
                 '"entities": [{"box": [[0,0,0],[1,1,1]]}]}')
      file.flush
      assert Sketchup.open_file(file.path)
    end
    opened = Sketchup.active_model
    assert_equal [[:onDeleteModel], [:onOpenModel]], [of_model.take, of_app.take]
    refute_predicate former, :valid?
    camera = opened.active_view.camera
    assert_equal [9, 50, 6], [camera.eye.z, camera.fov, opened.entities.faces.size]
    done = nil
    assert_match(%r{\A/no/such.json: there is no such file$}, capture_io { done = Sketchup.open_file("/no/such.json") }.last)
    assert_equal false, done
    assert_equal opened, Sketchup.active_model, "what cannot be opened changes nothing"
    opened.entities.clear!
    assert_predicate opened, :modified?
    Sketchup.file_new
    refute_predicate opened, :valid?
    again = Sketchup.active_model
    refute again.save
    saving = spy(again)
    assert again.save("/folder/Haus Ä.skp")
    assert_equal ["/folder/Haus Ä.skp", "Haus Ä", false], [again.path, again.title, again.modified?]
    assert_equal %i[onPreSaveModel onSaveModel onPostSaveModel], saving.take
    again.close
    assert_equal %i[onNewModel onNewModel], of_app.take
    assert_predicate Sketchup.active_model, :valid?
    Sketchup.quit
    assert_equal [:onQuit], of_app.take
  ensure
    Sketchup.remove_observer(of_app)
  end

  def test_attributes_of_the_model_are_undone
    id = @entities.add_group.persistent_id
    assert_nil @model.attribute_dictionaries
    assert_equal 3, @model.get_attribute("live", "a", 3)
    assert_nil @entities.first.attribute_dictionary("live")
    assert_equal id + 2, @entities.add_group.persistent_id, "asking makes nothing: a group and its definition have ids"
    @model.set_attribute("live", "a", [1, "x"])
    @model.set_attribute("live", "b", 2.5)
    assert_equal [%w[a b], [[1, "x"], 2.5]], @model.attribute_dictionary("live").then { |d| [d.keys, d.values] }
    Sketchup.undo
    assert_equal ["a"], @model.attribute_dictionary("live").keys
    @model.delete_attribute("live", "a")
    assert_nil @model.attribute_dictionary("live")
    Sketchup.undo
    assert_equal [1, "x"], @model.get_attribute("live", "a")
  end
end
