# The plug-in as its user installs it: what the archive holds is loaded by the stand-in host, and all that
# follows is done through its menu.

require "json"
require "minitest"
require "minitest/mock"
require "tmpdir"
require "timeout"

$LOAD_PATH.unshift(ENV.fetch("MODELHOST_DIR"))
require "modelhost"
require "sketchup.rb"

class PluginTest < Minitest::Test
  FOLDER = ENV.fetch("PLUGIN_DIR")
  RENDERER = ENV.fetch("KVAPP_DIR")
  MENU = ["Extensions", "Quellix Live"].freeze

  def setup
    @folder = Dir.mktmpdir("quellix-plugin")
    ENV["KVAPP_PICTURE"] = "0"
    ENV["KVAPP_OUT"] = @out = File.join(@folder, "out")
    @@said ||= load_plugin
    Sketchup.file_new
    @model = Sketchup.active_model
    @timers = ModelHost.timers.size
    square(0)
  end

  def teardown
    choose("Stop") if item("Stop").enabled?
    assert_equal @timers, ModelHost.timers.size, "something still runs"
    Sketchup.write_default("QuellixLive", "Renderer", nil)
    Sketchup.write_default("QuellixLive", "AutoSync", true)
    FileUtils.rm_rf(@folder)
  end

  def run = Timeout.timeout(60 * Integer(ENV.fetch("TIME_FACTOR", "1"))) { super }

  # As the host does with every root file. Gives what was printed meanwhile.
  def load_plugin
    _, said = capture_io do
      require File.join(FOLDER, "quellix_live.rb")
      QuellixLive::LiveLink
    end
    said
  end

  def square(x) = @model.entities.add_face([x, 0, 0], [x + 10, 0, 0], [x + 10, 10, 0], [x, 10, 0])
  def item(text) = ModelHost.menu_item(*MENU, text)
  def choose(text) = ModelHost.choose(*MENU, text)
  def enabled = ModelHost.menu_item(*MENU).items.compact.select(&:enabled?).map(&:text)
  def checked = ModelHost.menu_item(*MENU).items.compact.select(&:checked?).map(&:text)

  # What the user is told during the block.
  def told
    before = ModelHost.messages.size
    yield
    ModelHost.messages.drop(before)
  end

  def begin_link
    Sketchup.write_default("QuellixLive", "Renderer", RENDERER)
    choose("Start")
  end

  def status_until(text)
    ModelHost.run_timers(0.02) until Sketchup.status_text == "Quellix Live: #{text}"
  end

  def commands
    file = File.join(@out, "commands.jsonl")
    File.exist?(file) ? File.readlines(file).map { |line| JSON.parse(line)["name"] } : []
  end

  def test_everything_needed_is_in_the_archive
    extension = Sketchup.extensions.find { |each| each.name == "Quellix Live" }
    assert_predicate extension, :loaded?
    assert_empty @@said, "a warning"
    assert_equal %w[quellix_live quellix_live.rb], Dir.children(FOLDER).sort
    bar = ModelHost.toolbars.find { |each| each.name == "Quellix Live" }
    assert_predicate bar, :visible?
    bar.to_a.compact.each { |command| assert File.file?(command.small_icon), command.menu_text }
    assert_equal %w[quellix.rbs quellix_live.rbs], Dir.children(File.join(FOLDER, "quellix_live/sig")).sort
    return unless RUBY_PLATFORM.match?(/mingw|mswin/)
    assert_equal %w[boost earcut gcc-runtime glm mingw-w64-runtime wxwidgets].map { |name| "#{name}.txt" },
                 Dir.children(File.join(FOLDER, "quellix_live/licences")).sort
  end

  def test_start_edit_and_stop
    assert_equal %w[Start Auto-sync], enabled
    assert_empty told { begin_link }
    assert_equal "Quellix Live: in step", Sketchup.status_text
    assert_includes $LOADED_FEATURES.map { |file| File.expand_path(file) }, File.expand_path("quellix_live/native/Quellix.so", FOLDER)
    assert_equal ["Stop", "Sync", "Auto-sync", "Send everything", "Link camera"], enabled
    assert_equal ["Auto-sync", "Link camera"], checked

    sent = commands.count("AppendMesh")
    square(20)
    status_until("waiting")
    status_until("in step")
    assert_operator commands.count("AppendMesh"), :>, sent, "the edit arrived"
    choose("Link camera")
    assert_equal ["Auto-sync"], checked
    choose("Stop")
    assert_equal "Quellix Live: stopped", Sketchup.status_text
    assert_equal "CloseApp", commands.last
    assert_equal %w[Start Auto-sync], enabled
  end

  def test_auto_sync_is_kept_and_sync_sends_without_it
    choose("Auto-sync")
    assert_empty checked
    begin_link
    assert_equal ["Link camera"], checked
    sent = commands.size
    square(20)
    ModelHost.run_timers(0.5)
    refute_includes commands.drop(sent), "AppendMesh"
    choose("Sync")
    assert_includes commands.drop(sent), "AppendMesh"
    sent = commands.size
    choose("Send everything")
    assert_includes commands.drop(sent), "AppendMesh"
  end

  def test_a_renderer_that_has_gone_is_started_again
    File.write(ENV["KVAPP_SCRIPT"] = File.join(@folder, "script.json"), JSON.generate([{ command: "AppendMesh", nth: 2, exit: 3 }]))
    begin_link
    assert_equal "Quellix Live: in step", Sketchup.status_text
    choose("Send everything")
    assert_match(/renderer gone/, Sketchup.status_text)
    assert item("Start").enabled?
    ENV.delete("KVAPP_SCRIPT")
    assert_empty told { choose("Start") }
    assert_equal "Quellix Live: in step", Sketchup.status_text
  ensure
    ENV.delete("KVAPP_SCRIPT")
  end

  def test_the_renderers_folder_is_asked_for_once
    assert_empty told { choose("Start") }, "who chooses no folder is told nothing"
    assert_equal %w[Start Auto-sync], enabled
    ModelHost.answers.push(@folder)
    assert_match(%r{\AQuellix Live: #{@folder} holds no KvApp/KvApp\.exe\z}, told { choose("Start") }.join("|"))
    ModelHost.answers.push(File.join(RENDERER, "KvApp"))
    assert_empty told { choose("Start") }
    assert_equal RENDERER, Sketchup.read_default("QuellixLive", "Renderer")
    choose("Stop")
    assert_empty told { choose("Start") }
  end

  def test_what_goes_wrong_is_one_sentence
    Sketchup.write_default("QuellixLive", "Renderer", RENDERER)
    assert_equal ["Quellix Live: there is no model"], Sketchup.stub(:active_model, nil) { told { choose("Start") } }
    assert_equal %w[Start Auto-sync], enabled
  end

  def test_the_host_quits
    begin_link
    Sketchup.quit
    assert_equal "CloseApp", commands.last
    assert_equal %w[Start Auto-sync], enabled
  end
end

require "minitest/autorun"
