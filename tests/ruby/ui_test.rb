# The stand-in host's timers, menus, dialogs and list of extensions, without a model.

require "minitest"
require "tmpdir"
require_relative "../../platform/modelhost/ruby/host/ui"
require_relative "../../platform/modelhost/ruby/host/extensions"

class TimersTest < Minitest::Test
  def setup
    @runs = []
    @ids = []
  end

  def teardown = @ids.each { |id| UI.stop_timer(id) }

  def timer(seconds, repeat = false, &block)
    @ids << UI.start_timer(seconds, repeat, &block)
    @ids.last
  end

  def test_due_timers_run_once_in_the_order_in_which_they_are_due
    timer(0.02) { @runs << :second }
    timer(0.01) { @runs << :first }
    timer(60) { @runs << :later }
    timer(0, true) { @runs << :again }
    ModelHost.run_timers
    assert_equal [:again], @runs
    sleep 0.03
    ModelHost.run_timers
    ModelHost.run_timers
    assert_equal %i[again again first second again], @runs
  end

  def test_a_repeating_timer_runs_until_it_is_stopped_by_itself_or_another
    id = timer(0.005, true) do
      @runs << 1
      UI.stop_timer(id) if @runs.size == 3
    end
    ModelHost.run_timers(0.2)
    assert_equal 3, @runs.size

    other = nil
    timer(0) { UI.stop_timer(other) }
    other = timer(0) { @runs << :stopped }
    ModelHost.run_timers
    refute_includes @runs, :stopped
  end

  def test_an_error_is_printed_and_stops_nothing
    timer(0, true) { raise "a fault in a timer" }
    timer(0, true) { @runs << 1 }
    _, said = capture_io { 2.times { ModelHost.run_timers } }
    assert_equal [1, 1], @runs
    assert_equal 2, said.scan("a fault in a timer (RuntimeError)").size
  end

  def test_a_timer_is_not_run_inside_itself_but_others_are
    timer(0, true) do
      @runs << :outer
      ModelHost.run_timers(0.02)
    end
    timer(0.001, true) { @runs << :other }
    ModelHost.run_timers
    assert_equal 1, @runs.count(:outer)
    assert_includes @runs, :other
    ModelHost.run_timers
    assert_equal 2, @runs.count(:outer)
  end
end

class MenusTest < Minitest::Test
  def test_a_command_in_a_menu_and_a_toolbar
    chosen = 0
    state = MF_ENABLED
    command = UI::Command.new("Start") { chosen += 1 }
    command.set_validation_proc { state }
    menu = UI.menu("Plugins").add_submenu("Sample")
    menu.add_item(command)
    menu.add_separator
    id = menu.add_item("Plain") { chosen += 10 }
    menu.set_validation_proc(id) { MF_CHECKED | MF_GRAYED }
    bar = UI::Toolbar.new("Sample").add_item(command).add_separator

    ModelHost.choose("Extensions", "Sample", "Start")
    assert_equal 1, chosen
    state = MF_GRAYED
    assert_raises(ArgumentError) { ModelHost.choose("Extensions", "Sample", "Start") }
    assert_predicate ModelHost.menu_item("Extensions", "Sample", "Plain"), :checked?
    assert_raises(ArgumentError) { ModelHost.choose("Extensions", "Sample", "Plain") }
    error = assert_raises(ArgumentError) { ModelHost.choose("Extensions", "Sample", "Stop") }
    assert_equal "the menu Sample has no Stop, but Start, Plain", error.message
    assert_equal 1, chosen

    assert_equal [command, nil], bar.to_a
    assert_equal TB_NEVER_SHOWN, bar.get_last_state
    bar.restore
    assert_predicate bar, :visible?
    bar.hide
    bar.restore
    refute_predicate bar, :visible?, "what the user has hidden stays so"
  end

  def test_dialogs_take_their_answers_in_order
    ModelHost.answers.push("/a folder", IDYES)
    assert_equal "/a folder", UI.select_directory(title: "Where?")
    assert_equal IDOK, UI.messagebox("One button asks for no answer.")
    assert_equal IDYES, UI.messagebox("Really?", MB_YESNO)
    assert_nil UI.openpanel("Which?", "/", "*.json")
    assert_equal ["One button asks for no answer.", "Really?"], ModelHost.messages.last(2)
  end
end

class ExtensionsTest < Minitest::Test
  def test_an_extension_is_loaded_when_it_is_switched_on
    Dir.mktmpdir do |folder|
      $LOAD_PATH.unshift(folder)
      File.write(File.join(folder, "sample_plugin.rb"), "LOADED_SAMPLES = (defined?(LOADED_SAMPLES) ? LOADED_SAMPLES : 0) + 1\n")
      File.write(File.join(folder, "broken_plugin.rb"), "raise 'a fault while it loads'\n")
      sample = SketchupExtension.new("Sample", "sample_plugin")
      assert Sketchup.register_extension(sample, false)
      assert_predicate sample, :registered?
      refute_predicate sample, :loaded?
      2.times { assert sample.check }
      assert_equal 1, LOADED_SAMPLES
      refute Sketchup.register_extension(SketchupExtension.new("Sample", "sample_plugin")), "the name is taken"
      _, said = capture_io { refute Sketchup.register_extension(SketchupExtension.new("Broken", "broken_plugin"), true) }
      assert_match(/extension Broken: .*a fault while it loads/, said)
    ensure
      $LOAD_PATH.delete(folder)
    end
  end

  def test_files_are_marked_as_loaded_whatever_their_case
    refute file_loaded?("Menus_Of_A_Sample.rb")
    file_loaded("menus_of_a_sample.rb")
    assert file_loaded?("Menus_Of_A_Sample.rb")
  end
end

require "minitest/autorun"
