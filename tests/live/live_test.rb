# What a plug-in author sees of the live library: on the stand-in host, with a stand-in renderer.

require_relative "../ruby/helper"
require "sketchup.rb"
$LOAD_PATH.unshift(ENV.fetch("PLUGIN_DIR"))
require "quellix_live"
require "quellix_live/live_link"

# Lets a test do something while the renderer asks.
module Asked
  class << self
    attr_accessor :by_renderer
  end

  def get_su_version
    Asked.by_renderer&.call
    super
  end
end

QuellixLive::Callbacks.prepend(Asked)

class LiveTest < LinkTest
  def setup
    super
    ENV["KVAPP_SCENE_JSON"] = "1"
    Sketchup.file_new
    @model = Sketchup.active_model
    @material = @model.materials.add("Red")
    @material.color = [200, 20, 20]
    @chair = @model.definitions.add("Chair")
    square(@chair.entities).material = @material
    @chairs = Array.new(3) { |i| @model.entities.add_instance(@chair, moved(40 * i)) }
    @group = @model.entities.add_group
    square(@group.entities)
    @statuses = []
  end

  def teardown
    @live&.stop
    Asked.by_renderer = nil
    super
  end

  def square(entities, size = 10) = entities.add_face([0, 0, 0], [size, 0, 0], [size, size, 0], [0, size, 0])
  def moved(x) = Geom::Transformation.translation(Geom::Vector3d.new(x, 0, 0))

  # Starts a link whose renderer follows these steps.
  def go_live(*steps, **options)
    ENV["KVAPP_OUT"] = @out = File.join(@folder, "out-#{@starts = @starts.to_i + 1}")
    script(*steps)
    @live = QuellixLive.start(@model, renderer: KVAPP_DIR, **options)
    @live.on_status { |status| @statuses << status }
  end

  def script(*steps)
    return ENV.delete("KVAPP_SCRIPT") if steps.empty?
    ENV["KVAPP_SCRIPT"] = File.join(@folder, "script.json")
    File.write(ENV["KVAPP_SCRIPT"], JSON.generate(steps))
  end

  # Lets the host's timers run until the block holds.
  def run_until
    until yield
      ModelHost.run_timers(0.02)
    end
  end

  # What was sent since the block began, without what every command brings along.
  def sent
    before = settled.size
    yield
    settled.drop(before).map { |line| line["name"] }
  end

  def exports = commands.count { |line| line["name"] == "SetModelName" }
  def count(names, name) = names.count(name)

  # The scene that was kept is that of a fresh export.
  def assert_in_step(message = nil)
    @live.stop
    found = JSON.parse(File.read(File.join(out, "scene.json")))
    assert_equal 0, report["faultCount"], report["faults"].inspect
    ENV.delete("KVAPP_SCRIPT")
    start
    link.clear_reload_cache
    link.do_import(@model.handle, @model.path, false, true)
    link.quit
    wanted = JSON.parse(File.read(File.join(out, "scene.json")))
    assert_same_scene wanted.except("camera", "background"), found.except("camera", "background"), message
  end

  def test_edits_are_sent_a_moment_after_the_last
    go_live(idle: 1.5)
    assert_equal :in_step, @live.status.state
    names = sent do
      3.times do |i|
        @material.color = [i, 0, 0]
        ModelHost.run_timers(0.1)
      end
      assert_equal :waiting, @live.status.state
      assert @live.pending?
      run_until { @live.status == :in_step }
    end
    assert_equal 1, count(names, "AppendMaterial")
    assert_equal 1, count(names, "AppendMesh"), "the chair once, the group not"
    assert_equal %i[waiting exporting exporting in_step], @statuses.map(&:state)
    assert_equal [0.0, 1.0], @statuses.filter_map(&:progress)
    assert_in_step
  end

  def test_an_operation_is_sent_when_it_ends
    go_live(idle: 0.05)
    names = sent do
      @model.start_operation("Chairs", true)
      @chair.entities.to_a.grep(Sketchup::Face).first.material = nil
      ModelHost.run_timers(0.3)
    end
    assert_empty names.grep(/Append/)
    assert_equal 1, count(sent { @model.commit_operation; run_until { @live.status == :in_step } }, "AppendMesh")
    assert_in_step
  end

  def test_a_move_is_one_command
    go_live
    names = sent do
      @chairs[1].transformation = moved(77)
      run_until { @live.status == :in_step && !@live.pending? }
    end
    assert_equal ["UpdateInstanceTransform"], names
    assert_equal 80, commands.last["message"]
    assert_in_step
  end

  # A light inside, or something that turns to the camera, is placed by every export.
  def test_a_move_of_what_holds_a_light
    lamp = @model.definitions.add("Lamp")
    lamp.set_attribute("corvane_II", "light-type", "point")
    square(lamp.entities)
    @group.entities.add_instance(lamp, moved(5))
    go_live
    names = sent { @group.transformation = moved(50); assert @live.sync }
    assert_equal 0, count(names, "AppendMesh")
    assert_equal 1, count(names, "AppendOmniLight")
    assert_in_step
  end

  def test_an_orbit_is_a_camera_and_no_export
    go_live(idle: 2)
    @material.color = [1, 2, 3]
    names = sent do
      8.times do |i|
        @model.active_view.camera = Sketchup::Camera.new([100, i, 50], [0, 0, 0], Z_AXIS)
        ModelHost.run_timers(0.06)
      end
    end
    assert_operator count(names, "SetCamera"), :>, 4
    assert_empty names.grep(/Append/), "an export does not start while the user orbits"
    run_until { @live.status == :in_step }
    assert_in_step
  end

  def test_the_renderers_camera_moves_the_view_and_does_not_come_back
    numbers = [10, 20, 30, 1, 2, 3, 0, 0, 1, 40]
    go_live({ idle_ms: 50, request: { code: 103, floats: numbers } })
    names = sent do
      run_until { @model.active_view.camera.eye.to_a == [10, 20, 30] }
      ModelHost.run_timers(0.3)
    end
    assert_equal 40, @model.active_view.camera.fov.round
    assert_equal 0, count(names, "SetCamera")
    names = sent do
      @model.active_view.camera = Sketchup::Camera.new([1, 1, 1], [0, 0, 0], Z_AXIS)
      ModelHost.run_timers(0.2)
    end
    assert_equal 1, count(names, "SetCamera"), "the next one goes"
  end

  def test_a_camera_that_is_linked_later
    go_live({ idle_ms: 50, request: { code: 105, ints: [2027, 3, 4, 15, 30, 10] } }, link_camera: false)
    run_until { requests.any? }
    ModelHost.run_timers(0.2)
    assert_equal 0, count(sent { @model.active_view.zoom_extents; ModelHost.run_timers(0.2) }, "SetCamera")
    assert_equal 1, count(sent { @live.link_camera = true; ModelHost.run_timers(0.2) }, "SetCamera")
    assert @live.link_camera?
  end

  def test_the_sun_goes_with_the_camera
    go_live
    @model.shadow_info["DisplayShadows"] = true
    @model.shadow_info["ShadowTime"] = Time.utc(2027, 6, 21, 12, 0, 0)
    ModelHost.run_timers(0.2)
    sun = @model.shadow_info["SunDirection"].to_a
    fields = commands.reverse.find { |line| line["name"] == "SetCamera" }["fields"]
    fields["vector4"].zip(sun) { |found, wanted| assert_in_delta wanted, found, 1e-5 }
    assert_equal 1, exports
  end

  def test_what_the_renderer_asks
    page = @model.pages.add("Front")
    asked = [106, 107, 108, 109, 111, 114, 115].map { |code| { idle_ms: 20, request: { code: code, name: "view" } } }
    go_live({ idle_ms: 20, request: { code: 110, name: "view", bytes: "0102030405" } }, *asked,
            { idle_ms: 20, request: { code: 105, ints: [2027, 3, 4, 15, 30, 10] } })
    run_until { requests.size == 9 }
    answers = requests.to_h { |line| [line["code"], [line["answer"].to_s].pack("H*")] }
    assert_equal 1, answers[106][8, 4].unpack1("L<")
    assert_equal page.name, answers[106][16, 16].unpack1("Z*")
    camera = answers[107].unpack("e13")
    assert_equal @model.active_view.camera.eye.to_a.map(&:round), camera.first(3).map(&:round)
    assert_equal 10, answers[108].unpack("e3l<7").size
    assert_equal "\0", answers[109][0], "nothing was edited"
    assert_equal "\x01\x02\x03\x04\x05".b, answers[111][16, 5]
    assert_equal "\1", answers[114][0]
    assert_equal Quellix_SUInterface::SU_VERSION, answers[115].unpack1("Q<")
    assert_equal [2027, 3, 4, 15, 30, 10], QuellixLive::Scenes.date(@model.shadow_info)
    assert_equal [5, 0x04030201, 5], @live.settings.load("view")
    Sketchup.undo  # the date
    Sketchup.undo
    assert_nil @live.settings.load("view")
  end

  def test_settings_of_the_renderer
    go_live({ idle_ms: 30, request: { code: 113, flag: 0 } }, { idle_ms: 30, request: { code: 112, name: "none" } })
    names = sent { run_until { !@live.use_pbr? && @live.status == :in_step && !@live.pending? } }
    assert_equal 2, count(names, "AppendMesh"), "another way of materials is everything"
    @live.use_pbr = true
    assert @live.sync
    assert_in_step
  end

  def test_a_reload_that_the_renderer_wants_and_one_that_it_does_not
    go_live({ idle_ms: 300, request: 116 }, { idle_ms: 4000, request: 102 }, auto_sync: true, idle: 1.0)
    @material.color = [9, 9, 9]
    run_until { requests.any? { |line| line["code"] == 116 } }
    ModelHost.run_timers(1.2)
    assert_equal 1, exports, "the next one on its own is left out"
    run_until { exports == 2 }
    assert_equal 102, requests.last["code"]
    assert_in_step
  end

  def test_a_renderer_that_has_gone
    go_live({ idle_ms: 100, exit: 0 })
    run_until { @live.status == :renderer_gone }
    @chairs[0].material = @material
    refute @live.sync
    script
    @live.restart
    assert_equal :in_step, @live.status.state
    assert_in_step
  end

  def test_the_renderers_user_quits
    go_live({ idle_ms: 100, quit: true })
    run_until { @live.status == :renderer_gone }
    refute @live.alive?
    script
    @live.restart
    assert @live.alive?
    assert_in_step
  end

  def test_undo_redo_and_abort
    go_live
    { undo: -> { Sketchup.undo }, redo: -> { Sketchup.send_action("editRedo:") } }.each_value do |step|
      @model.start_operation("Paint", true)
      @chairs[2].material = @material
      @chairs[0].erase!
      @model.commit_operation
      assert @live.sync
      step.call
      assert @live.sync
      @chairs = @model.entities.grep(Sketchup::ComponentInstance)
    end
    @model.start_operation("Nothing", true)
    @group.erase!
    square(@chair.entities, 5)
    @model.abort_operation
    assert @live.sync
    assert_in_step
  end

  def test_another_model
    go_live(idle: 0.05)
    Sketchup.file_new
    @model = Sketchup.active_model
    square(@model.entities.add_group.entities).material = @model.materials.add("Blue")
    run_until { exports == 2 && @live.status == :in_step }
    @model.materials["Blue"].color = [0, 0, 250]
    run_until { exports == 3 && @live.status == :in_step }
    assert_equal @model, @live.model
    assert_in_step
  end

  def test_a_model_closed_while_it_is_sent
    go_live({ command: "AppendMesh", nth: 3, request: 115 })
    model = @model
    Asked.by_renderer = -> { model.close }
    @material.color = [7, 7, 7]
    refute @live.sync
    assert_equal :error, @live.status.state
    assert_match(/closed/, @live.status.message)
    Sketchup.file_new
    @model = Sketchup.active_model
    square(@model.entities)
    run_until { @live.status == :in_step && !@live.pending? }
    assert_in_step
  end

  def test_an_observer_that_fails
    go_live
    @chair.entities.grep(Sketchup::Face).first.material = nil
    broken = @live.instance_variable_get(:@watch)
    def broken.edit(*) = raise("broken here")
    3.times { square(@chair.entities, 3) }
    assert_equal 1, @statuses.count { |status| status == :error }
    assert_match(/broken here/, @statuses.find { |status| status == :error }.message)
    broken.singleton_class.remove_method(:edit)
    names = sent { assert @live.sync }
    assert_equal 2, count(names, "AppendMesh"), "everything"
    assert_equal 0, count(sent { assert @live.sync }, "AppendMesh"), "and once"
    assert_in_step
  end

  def test_an_export_that_fails_leaves_the_next_complete
    go_live(idle: 0.05)
    @material.color = [3, 3, 3]
    failing = @live.settings
    def failing.use_pbr? = raise("no settings")
    ModelHost.run_timers(0.4)
    assert_equal 1, @statuses.count { |status| status == :error }, "it is not tried again and again"
    failing.singleton_class.remove_method(:use_pbr?)
    names = sent { assert @live.sync }
    assert_equal 2, count(names, "AppendMesh")
    assert_in_step
  end

  def test_bad_input
    { nil => /no model/, @model => /no renderer/ }.each do |model, said|
      error = assert_raises(QuellixLive::Error) { QuellixLive.start(model, renderer: @folder) }
      assert_match said, error.message
    end
    assert_equal "", @model.path, "a model without a path is exported"
    go_live
    assert_equal "Untitled", JSON.parse(File.read(File.join(out, "scene-1.json")))["modelName"] || "Untitled"
    assert_raises(QuellixLive::Error) { @live.start }
    @live.on_status { raise "listener" }
    assert_match(/listener/, stderr_of { @live.sync })
    @live.stop
    refute @live.sync
    @live.stop
    assert_equal :stopped, @live.status.state
  end

  def test_a_model_saved_under_another_name
    go_live
    names = sent do
      @model.save(File.join(@folder, "Other.json"))
      ModelHost.run_timers(0.1)
    end
    assert_equal ["SetModelName"], names
    assert_equal "Other", report_after_stop["modelName"]
  end

  def report_after_stop
    @live.stop
    report
  end

  # Owners of one definition in different paints, without a word about caches.
  def test_paints_of_one_component
    go_live
    [@material, nil, @model.materials.add("Green")].zip(@chairs) { |paint, chair| chair.material = paint }
    assert @live.sync
    assert_in_step
  end
end

require "minitest/autorun"
