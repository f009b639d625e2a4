# The program behind `make live`, with a terminal and without.

require "minitest/autorun"
require "open3"
require "pty"
require "timeout"

class LiveProgramTest < Minitest::Test
  PROGRAM = [RbConfig.ruby, "-W", "-E", "UTF-8", File.expand_path("../../examples/live.rb", __dir__)].freeze
  SECONDS = 120 * ENV.fetch("TIME_FACTOR", "1").to_i

  # The renderers that a process has started.
  def children(pid) = File.read("/proc/#{pid}/task/#{pid}/children").split.map(&:to_i)
  def running?(pid) = File.exist?("/proc/#{pid}")

  def test_without_a_terminal_it_makes_the_tour_once_and_ends
    output, errors, status = Timeout.timeout(SECONDS) do
      Open3.capture3({ "TOUR_PAUSE" => "0.3" }, *PROGRAM, stdin_data: "")
    end
    assert_predicate status, :success?, errors
    steps = output.lines.grep(/\A\w+: /).map { |line| line[/\A\w+/] }
    assert_equal %w[orbit move paint build reshape place hide show shine evening noon dusk clear_sky undo_last], steps
    assert_match %r{http://127\.0\.0\.1:\d+/\h{32}/}, output
    refute_match(/error|warning|live:/i, errors)
  end

  # Reads until it says so; returns what it has said.
  def read_until(reader, said, wanted)
    Timeout.timeout(SECONDS) { said << reader.readpartial(4096) until said.match?(wanted) }
    said
  end

  def in_terminal(&)
    Timeout.timeout(SECONDS * 2) { PTY.spawn({ "TERM" => "dumb", "KVAPP_SCENE_JSON" => nil }, *PROGRAM, &) }
  end

  def test_in_a_terminal_it_is_a_console_whose_edits_are_sent_while_it_waits
    in_terminal do |reader, writer, pid|
      read_until(reader, +"", />> /)
      renderer = children(pid)
      assert_equal 1, renderer.length
      writer.puts "build"
      read_until(reader, +"", /a tower is built.*>> /m)
      # The console waits for the next line, and the edit is sent meanwhile.
      sleep 1.5
      writer.puts "[live.pending?, live.status.state, Thread.main == Thread.current]"
      read_until(reader, +"", /\[false, :in_step, true\]/)
      writer.puts "no_such_edit"
      read_until(reader, +"", /NameError.*>> /m)
      writer.write "\C-d"
      _, status = Process.wait2(pid)
      assert_predicate status, :success?
      refute running?(renderer.first), "the renderer is left running"
    end
  end

  def test_a_model_that_cannot_be_read_is_told_in_a_sentence
    _, errors, status = Open3.capture3(*PROGRAM, "/there/is/no.json", stdin_data: "")
    refute_predicate status, :success?
    assert_match(/^live: the model cannot be read: .*no\.json$/, errors)
    refute_match(/live\.rb:\d+/, errors)
  end
end
