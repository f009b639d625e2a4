# What the Ruby tests share: the extension in this process, stand-in renderers that it starts, and
# what those wrote.

require "fileutils"
require "json"
require "minitest"
require "tmpdir"
require "timeout"
require_relative "system"

$LOAD_PATH.unshift(ENV.fetch("EXTENSION_DIR"), ENV.fetch("MODELHOST_DIR"))
require "Quellix"

KVAPP_DIR = ENV.fetch("KVAPP_DIR")

# Answers the renderer's requests from a table of values or procs, and keeps what it was asked.
class Receiver
  METHODS = %i[on_reload on_camera_changed_by_gui on_renderer_quit on_datetime_updated on_get_scenes
               on_request_camera_info on_request_shadow_info model_out_of_sync? save_parameters
               load_parameters remove_attribute set_use_pbr get_use_pbr get_su_version
               suppress_autosync_once].freeze

  attr_reader :calls

  def initialize(answers = {})
    @answers = answers
    @calls = []
  end

  METHODS.each do |name|
    define_method(name) do |*arguments|
      @calls << [name, *arguments]
      answer = @answers[name]
      answer.respond_to?(:call) ? answer.call(*arguments) : answer
    end
  end
end

class LinkTest < Minitest::Test
  WATCHDOG_SECONDS = 60
  # How many times longer things take as they were built.
  TIME_FACTOR = Integer(ENV.fetch("TIME_FACTOR", "1"))

  attr_reader :link, :out

  def setup
    @folder = Dir.mktmpdir("quellix-test")
    @link = Quellix_SUInterface.new
    ENV["KVAPP_PICTURE"] = "0"
    ENV["KVAPP_BYTES"] = "4096"
    ENV.delete("KVAPP_SCRIPT")
    ENV.delete("KVAPP_SCENE_JSON")
  end

  def teardown
    link.quit
    link.clear_reload_cache
    FileUtils.rm_rf(@folder)
  end

  # A test that hangs fails instead.
  def run
    Timeout.timeout(self.class::WATCHDOG_SECONDS * TIME_FACTOR) { super }
  end

  # Starts a renderer that follows these steps.
  def start(*steps, receiver: Receiver.new, directory: KVAPP_DIR)
    # A former renderer may still be writing.
    ENV["KVAPP_OUT"] = @out = File.join(@folder, "out-#{@starts = @starts.to_i + 1}")
    unless steps.empty?
      script = File.join(@folder, "script.json")
      File.write(script, JSON.generate(steps))
      ENV["KVAPP_SCRIPT"] = script
    end
    link.init_renderer(receiver, directory)
  end

  # Polls, as a timer of the plug-in does, until the block holds.
  def poll_until
    until yield
      link.poll_to_plugin
      sleep(0.005)
    end
  end

  def lines(name)
    file = File.join(out, name)
    File.exist?(file) ? File.readlines(file).map { |line| JSON.parse(line) } : []
  end

  def commands = lines("commands.jsonl")
  def requests = lines("requests.jsonl")
  def report = JSON.parse(File.read(File.join(out, "report.json")))

  # The commands when no more come.
  def settled
    seen = nil
    sleep(0.05) until seen == (seen = commands)
    seen
  end

  # The names of the commands that arrived, without the closing one.
  def command_names = commands.map { |line| line["name"] } - ["CloseApp"]

  def link_objects = TestSystem.link_objects

  # Two scenes are the same; what differs first is told, not all of both.
  def assert_same_scene(wanted, found, what = nil)
    return assert(true) if wanted == found
    parts = wanted.keys.reject { |key| wanted[key] == found[key] }.map do |key|
      sides = [wanted[key], found[key]].map { |side| Array(side) }
      missing, extra = sides[0] - sides[1], sides[1] - sides[0]
      "#{key}: #{missing.size} missing, #{extra.size} too many, such as #{missing.first.inspect[0, 600]} and #{extra.first.inspect[0, 600]}"
    end
    flunk("#{what}: #{parts.join("\n")}")
  end

  # What the user is told during the block.
  def told(&block) = TestSystem::WINDOWS ? TestSystem.message_box_of(&block) : stderr_of(&block)

  # Standard error of the block, native output included. A renderer that outlives the block goes on
  # writing there, so it is a file.
  def stderr_of
    file = File.join(@folder, "stderr")
    saved = $stderr.dup
    $stderr.reopen(file, "w")
    yield
    $stderr.flush
    File.read(file)
  ensure
    $stderr.reopen(saved)
  end
end
