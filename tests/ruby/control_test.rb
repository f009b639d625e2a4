# The methods that start, steer and stop the renderer, and what they do with wrong arguments and a
# renderer that goes away.

require_relative "helper"

class ControlTest < LinkTest
  X = [1.0, 0.0, 0.0].freeze
  CAMERA = [X, [0, 0, 0], [0, 0, 1], 35, [0, 0, 0]].freeze
  SETTINGS = [0.1, 0.2, 0.3, 1, 2, 3, 4, 5, 6, 7.9].freeze
  MATRIX = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1].freeze

  METHODS = %i[init_renderer init_reload prepare_renderer do_rendering do_rendering_without_progress
               do_rendering_with_background_settings quit set_background_settings set_camera_link
               show_message set_progress set_model_name is_alive invalidate_material_cache
               invalidate_layer init_children_map invalidate_definition invalidate_geometry_cache
               update_instance_transform update_cache_info poll_to_plugin do_import reload_from_plugin
               clear_model_data_for_reload clear_reload_cache].freeze
  ARITIES = [2, 0, 1, 5, 5, 6, 0, 1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 2, 0, 0, 4, 0, 0, 0].freeze

  def test_the_class_has_its_methods_and_its_version
    assert_equal 2027, Quellix_SUInterface::SU_VERSION
    assert_equal METHODS.sort, Quellix_SUInterface.instance_methods(false).sort
    METHODS.zip(ARITIES) { |name, arity| assert_equal arity, Quellix_SUInterface.instance_method(name).arity, name }
  end

  def test_without_a_link_nothing_happens
    assert_nil link.do_rendering(*CAMERA)
    assert_nil link.do_rendering_with_background_settings(*CAMERA, SETTINGS)
    assert_nil link.set_background_settings(SETTINGS)
    assert_nil link.prepare_renderer(true)
    assert_nil link.set_camera_link(true)
    assert_nil link.show_message("text")
    assert_nil link.set_progress(0.5)
    assert_nil link.set_model_name("a.skp")
    assert_nil link.do_import(0, "a.skp", false, false)
    assert_nil link.update_instance_transform(1, MATRIX)
    %i[init_reload quit poll_to_plugin reload_from_plugin clear_model_data_for_reload update_cache_info
       clear_reload_cache].each { |name| assert_nil link.public_send(name), name }
    assert_equal false, link.is_alive
    assert_empty link_objects
  end

  def fields(name) = commands.select { |line| line["name"] == name }.map { |line| line["fields"] }

  def test_only_true_is_a_reload_and_only_false_and_nil_unlink_the_camera
    start
    [true, false, 1, nil, "true"].each { |value| assert_nil link.prepare_renderer(value) }
    [true, 0, "", false, nil].each { |value| assert_nil link.set_camera_link(value) }
    link.quit
    bytes = commands.map { |line| line["bytes"][8, 2] }
    assert_equal %w[01 00 00 00 00], bytes.first(5)
    assert_equal %w[01 01 01 00 00], bytes[5, 5]
  end

  def test_the_first_camera_is_sent_and_later_ones_to_a_linked_renderer
    start({ command: "GetLinkCamera", nth: 4, link_camera: true })
    link.do_rendering(*CAMERA)                   # forced
    link.do_rendering_without_progress(*CAMERA)  # not linked
    link.set_background_settings(SETTINGS)       # not linked
    link.do_rendering(*CAMERA)                   # linked from here on
    link.do_rendering_without_progress(*CAMERA)
    link.set_background_settings(SETTINGS)
    link.do_rendering_with_background_settings(*CAMERA, SETTINGS)
    link.quit
    sent = command_names - ["GetLinkCamera"]
    assert_equal %w[SetCamera SetCamera SetCamera SetBackgroundSettings SetCameraAndBackgroundSettings], sent
    assert_equal %w[01 01 00], commands.select { |line| line["name"] == "SetCamera" }.map { |line| line["bytes"][112, 2] }
  end

  def test_a_reload_does_not_move_an_unlinked_camera
    start
    link.init_reload
    link.do_rendering(*CAMERA)
    link.quit
    assert_equal ["GetLinkCamera"], command_names

    start
    link.set_background_settings(SETTINGS) # sent, and the camera is still owed
    link.do_rendering(*CAMERA)
    link.do_rendering(*CAMERA)
    link.quit
    assert_equal %w[GetLinkCamera SetBackgroundSettings GetLinkCamera SetCamera GetLinkCamera], command_names
  end

  # The reaction of a plug-in to a camera moved in the renderer is not sent back to it, once.
  def test_a_camera_that_the_renderer_moved_is_not_echoed
    receiver = Receiver.new(on_camera_changed_by_gui: ->(_) { link.do_rendering(*CAMERA) })
    start({ command: "ClearModelDataForReload", link_camera: true },
          { idle_ms: 20, request: { code: 103, floats: [0] * 10 } }, receiver: receiver)
    link.clear_model_data_for_reload
    poll_until { requests.size == 1 }
    link.do_rendering(*CAMERA)
    link.quit
    assert_equal %w[ClearModelDataForReload GetLinkCamera GetLinkCamera SetCamera], command_names
    assert_equal 1, receiver.calls.size
  end

  def test_texts_and_names
    start
    link.set_model_name("C:/m/House.skp")
    link.set_model_name("")
    link.set_model_name("/家/بيت 🏠.skp")
    link.show_message("a\0b")
    link.show_message("")
    link.quit
    texts = commands.first(5).map { |line| line["fields"]["text"] }
    assert_equal ["House", "Untitled", "بيت 🏠", "a", ""], texts
  end

  def test_texts_of_any_encoding_arrive_as_utf8
    start
    link.show_message("Grüße".encode("ISO-8859-1"))
    link.show_message("家".encode("Shift_JIS"))
    link.show_message("夜".encode("UTF-16LE"))
    link.show_message("夜".b)
    link.show_message("plain".encode("US-ASCII"))
    link.set_model_name("/m/Über.skp".encode("Windows-1252"))
    ["\xFF", "\xFF".b, "\xFF".dup.force_encoding("US-ASCII"), "\xD8\x00".dup.force_encoding("UTF-16BE")].each do |broken|
      [-> { link.show_message(broken) }, -> { link.set_model_name(broken) }, -> { link.do_import(0, broken, false, false) }].each do |call|
        assert_raises(ArgumentError, broken.inspect) { call.call }
      end
    end
    link.quit
    assert_equal %w[Grüße 家 夜 夜 plain Über], commands.filter_map { |line| line["fields"]["text"] }
  end

  # Call, and the error a Ruby programmer expects of it.
  def wrong_calls
    short = [1, 2]
    [
      [TypeError, -> { link.init_renderer(nil, nil) }],
      [ArgumentError, -> { link.init_renderer(nil, "a\0b") }],
      [TypeError, -> { link.do_rendering(nil, X, X, 1, X) }],
      [ArgumentError, -> { link.do_rendering(X, short, X, 1, X) }],
      [TypeError, -> { link.do_rendering(X, X, [1, nil, 3], 1, X) }],
      [TypeError, -> { link.do_rendering(X, X, X, "1", X) }],
      [ArgumentError, -> { link.do_rendering_without_progress(X, X, X, 1, []) }],
      [TypeError, -> { link.do_rendering_without_progress(X, X, X, 1, { a: 1 }) }],
      [ArgumentError, -> { link.do_rendering_with_background_settings(*CAMERA, SETTINGS.first(9)) }],
      [TypeError, -> { link.do_rendering_with_background_settings(*CAMERA, [*SETTINGS.first(9), "x"]) }],
      [TypeError, -> { link.set_background_settings(nil) }],
      [ArgumentError, -> { link.set_background_settings([]) }],
      [RangeError, -> { link.set_background_settings([0, 0, 0, 2**70, 0, 0, 0, 0, 0, 0]) }],
      [TypeError, -> { link.show_message(:symbol) }],
      [TypeError, -> { link.show_message(nil) }],
      [TypeError, -> { link.set_progress("half") }],
      [TypeError, -> { link.set_model_name(7) }],
      [ArgumentError, -> { link.set_model_name("a\0b") }],
      [TypeError, -> { link.invalidate_material_cache("x") }],
      [TypeError, -> { link.invalidate_layer(nil) }],
      [RangeError, -> { link.invalidate_layer(2**64) }],
      [TypeError, -> { link.invalidate_definition([]) }],
      [TypeError, -> { link.invalidate_geometry_cache({}) }],
      [TypeError, -> { link.init_children_map("model") }],
      [TypeError, -> { link.update_instance_transform(1, { a: 1 }) }],
      [TypeError, -> { link.update_instance_transform("1", MATRIX) }],
      [TypeError, -> { link.update_instance_transform(1, [nil] * 16) }],
      [TypeError, -> { link.do_import("model", "a.skp", false, false) }],
      [TypeError, -> { link.do_import(0, nil, false, false) }],
      [ArgumentError, -> { link.do_import(0, "a\0b", false, false) }],
      [ArgumentError, -> { link.do_import(0, "a") }],
      [NoMethodError, -> { link.no_such_method }]
    ]
  end

  def test_wrong_arguments_raise_and_send_nothing
    start
    wrong_calls.each_with_index { |(error, call), i| assert_raises(error, "call #{i}") { call.call } }
    assert_nil link.update_instance_transform(1, MATRIX.first(15))
    assert link.is_alive
    link.show_message("still linked")
    link.quit
    assert_equal ["SetMessage"], command_names
  end

  # What a number conversion or a string conversion of Ruby accepts is accepted.
  def test_what_ruby_converts_is_taken
    number = Class.new(Numeric) { def to_f = 0.25 }.new
    text = Class.new { def to_str = "from to_str" }.new
    start
    link.set_progress(number)
    link.set_progress(Rational(3, 4))
    link.show_message(text)
    link.invalidate_layer(-1)
    link.invalidate_material_cache(2**32 + 5)
    link.quit
    assert_equal [0.25, 0.75], fields("SetProgress").map { |f| f["progress"] }
    assert_equal ["from to_str"], fields("SetMessage").map { |f| f["text"] }
  end

  def test_a_renderer_that_does_not_start_is_told_and_leaves_a_dead_link
    text = told { assert_equal false, link.init_renderer(Receiver.new, File.join(@folder, "ヌル")) }
    assert_equal "Error: Failed to start the app\n", text
    assert_equal false, link.is_alive
    assert_nil link.do_rendering(*CAMERA)
    assert_nil link.quit
    assert_empty link_objects
    assert start
    assert link.is_alive
  end

  def test_a_directory_with_spaces_quotes_and_other_scripts
    directory = File.join(@folder, "it's a 家 dir")
    FileUtils.mkdir_p(directory)
    FileUtils.cp_r(File.join(KVAPP_DIR, "KvApp"), directory)
    assert start(directory: directory)
    link.show_message("here")
    link.quit
    assert_equal ["SetMessage"], command_names
    Dir.chdir(directory) { assert start(directory: "."), "a relative directory" }
  end

  # Ways to vanish while the plug-in waits, and whether the link ends by the renderer's own word.
  VANISHING = [
    { command: "GetLinkCamera", exit: 0 }, { command: "GetLinkCamera", crash: true },
    { command: "GetLinkCamera", hold_mutex: { event: "commandDone" } },
    { command: "GetLinkCamera", quit: true }
  ].freeze

  def test_a_renderer_that_vanishes_during_a_wait
    VANISHING.each do |step|
      receiver = Receiver.new
      assert start(step, receiver: receiver)
      link.do_rendering(*CAMERA)
      assert_equal false, link.is_alive, step.inspect
      assert_nil link.show_message("dropped")
      assert_equal step.key?(:quit) ? [[:on_renderer_quit]] : [], receiver.calls
      link.quit
      sleep(0.01) until link_objects.empty?
    end
  end

  def test_a_renderer_that_exits_at_once
    assert start({ after_ms: 0, exit: 5 })
    sleep(0.01) while link.is_alive
    link.quit
    assert_empty link_objects
    # The next start cleans up what a run without a quit left behind.
    assert start({ after_ms: 0, crash: true })
    sleep(0.01) while link.is_alive
    ENV.delete("KVAPP_SCRIPT")
    assert start
    link.show_message("clean")
    link.quit
    assert_equal ["SetMessage"], command_names
    assert_empty link_objects
  end

  def test_the_renderers_quit_at_rest_ends_the_link
    receiver = Receiver.new(on_renderer_quit: -> { link.show_message("not any more") })
    start({ idle_ms: 10, quit: true }, receiver: receiver)
    poll_until { !receiver.calls.empty? }
    assert_equal [[:on_renderer_quit]], receiver.calls
    assert_equal false, link.is_alive
    assert_nil link.quit
    assert_equal ["Qlx"], (link_objects + ["Qlx"]).map { |name| name[0, 3] }.uniq
    assert start
    assert link.is_alive
  end

  def test_callbacks_may_use_the_extension
    seen = []
    reload = lambda do
      seen << link.is_alive
      link.show_message("from the callback")
      link.poll_to_plugin
      link.update_instance_transform(3, MATRIX)
      begin
        link.init_renderer(Receiver.new, KVAPP_DIR)
      rescue RuntimeError => e
        seen << e.message
      end
      begin
        link.do_import(0, "a.skp", true, false)
      rescue RuntimeError => e
        seen << e.message
      end
    end
    start({ command: "GetLinkCamera", request: 102 }, receiver: Receiver.new(on_reload: reload))
    link.do_rendering(*CAMERA)
    link.quit
    assert_equal [true, "init_renderer cannot be called from a callback of the renderer",
                  "do_import cannot run in a callback that is served during another command; call it after the callback has returned"],
                 seen
    assert_equal %w[GetLinkCamera SetMessage UpdateInstanceTransform SetCamera], command_names
  end

  def test_quit_in_a_callback_closes_once_the_callback_has_returned
    %i[idle wait].each do |kind|
      alive = nil
      receiver = Receiver.new(on_reload: lambda do
        link.quit
        alive = link.is_alive
        link.show_message("too late")
      end)
      start(kind == :idle ? { idle_ms: 5, request: 102 } : { command: "GetLinkCamera", request: 102 }, receiver: receiver)
      kind == :idle ? poll_until { !alive.nil? } : link.do_rendering(*CAMERA)
      assert_equal false, alive
      assert_equal false, link.is_alive
      assert_equal "closed", report["exitReason"]
      refute_includes command_names, "SetMessage"
      assert_empty link_objects
    end
  end

  def test_quit_twice_and_a_second_start_without_quit
    start
    link.do_rendering(*CAMERA)
    assert start, "a start over a living renderer"
    link.show_message("two")
    2.times { assert_nil link.quit }
    assert_equal ["SetMessage"], command_names
    assert_empty link_objects
  end

  # Children that Ruby started itself are still reaped by Ruby.
  def test_rubys_own_children_are_left_alone
    start
    assert system(RbConfig.ruby, "-e", "exit")
    child = spawn(RbConfig.ruby, "-e", "exit 3")
    assert_equal 3, Process.wait2(child).last.exitstatus
    assert link.is_alive
  end
end

require "minitest/autorun"
