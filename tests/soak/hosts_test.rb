# Two hosts on one machine share the names of the channel: the second takes them over. Neither is hurt.

require_relative "../ruby/helper"
require_relative "machine"
require "modelhost"

class HostsTest < LinkTest
  SAMPLE = File.expand_path("../../examples/house.json", __dir__)
  CAMERA = [[1, 0, 0], [0, 0, 0], [0, 0, 1], 35, [0, 0, 0]].freeze
  ROUNDS = Integer(ENV.fetch("HOST_ROUNDS", "4"))

  # The second host: does what it is told on its standard input and answers with a line.
  OTHER = <<~'RUBY'
    require "modelhost"; require "Quellix"
    $stdout.sync = true
    link = Quellix_SUInterface.new
    model = ModelHost.load(ENV["SAMPLE"])
    while (line = $stdin.gets&.chomp)
      answer = case line
               when "start" then link.init_renderer(Object.new, ENV["KVAPP_DIR"])
               when "export" then link.do_import(model.handle, "b.skp", false, true) || "exported"
               when "quit" then link.quit || "quit"
               when "alive" then link.is_alive
               end
      puts answer
    end
  RUBY

  def setup
    super
    @other_out = File.join(@folder, "other")
    environment = { "SAMPLE" => SAMPLE, "KVAPP_OUT" => @other_out, "KVAPP_PICTURE" => "0" }
    command = [RbConfig.ruby, *$LOAD_PATH.first(2).map { |path| "-I#{path}" }, "-e", OTHER]
    @other = IO.popen(environment, command, "r+")
    @model = ModelHost.load(SAMPLE)
  end

  def teardown
    super
    @other.close
    @model.close
  end

  def tell(what)
    @other.puts(what)
    @other.flush
  end

  def other(what)
    tell(what)
    @other.gets.chomp
  end

  def other_report = JSON.parse(File.read(File.join(@other_out, "report.json"))).values_at("faultCount", "meshes", "modelName")

  def export = link.do_import(@model.handle, "a.skp", false, true)

  # Calls until the link has noticed; each call must come back.
  def until_taken
    yield while link.is_alive
  end

  def test_the_second_host_takes_over_at_rest
    start
    export
    assert_equal "true", other("start")
    until_taken { link.do_rendering(*CAMERA) }
    link.show_message("dropped")
    link.quit
    assert_equal "exported", other("export")
    assert_equal "quit", other("quit")
    assert_equal [0, 9, "b"], other_report
    assert_empty link_objects
  end

  def test_the_second_host_takes_over_during_exports
    ROUNDS.times do |i|
      start
      tell("start")
      sleep(0.02 * i)
      until_taken { export }
      assert_equal "true", @other.gets.chomp
      # Whatever the first one gives up now, the second one's names stay.
      link.quit if i.even?
      assert_equal "exported", other("export")
      assert_equal "quit", other("quit")
      assert_equal [0, 9, "b"], other_report
    end
  end

  # The first one's renderer has not opened the channel yet when the names change hands.
  def test_a_takeover_while_the_first_renderer_is_starting
    ROUNDS.times do
      tell("start")
      start
      @other.gets
      2.times { start }
      export if link.is_alive
      link.quit
      other("quit")
    end
    start
    assert link.is_alive
    export
    link.quit
    assert_equal [0, 9], report.values_at("faultCount", "meshes")
    assert_empty link_objects
  end

  # Two starts at once: the first renderer must not sit down at the second one's channel.
  def test_starts_in_quick_succession
    ROUNDS.times do
      3.times { assert start }
      export
      link.quit
      assert_equal [0, 9], report.values_at("faultCount", "meshes")
      assert_empty link_objects
    end
    sleep(0.05) until Machine.running_children.size <= 1
  end
end

require "minitest/autorun"
