# Ctrl-C, time-outs and other threads, while a renderer is alive but does not go on.

require_relative "helper"
require_relative "../soak/machine"
require "modelhost"

class InterruptTest < LinkTest
  SAMPLE = File.expand_path("../../examples/house.json", __dir__)
  CAMERA = [[1, 0, 0], [0, 0, 0], [0, 0, 1], 35, [0, 0, 0]].freeze

  def setup
    super
    @before = [Machine.threads, Machine.descriptors]
    @model = ModelHost.load(SAMPLE)
    @killer = Killer.new
  end

  def teardown
    ModelHost.reset_modes
    super
    @killer.stop
    @model.close
  end

  def export(reload = false) = link.do_import(@model.handle, "a.skp", reload, true)

  # The link is closed, another renderer starts at once and gets everything, the stalled one ends.
  def assert_closed_cleanly(what)
    assert_equal false, link.is_alive, what
    assert_empty Machine.mappings, what
    ENV.delete("KVAPP_SCRIPT")
    assert start, what
    export(true)
    link.quit
    assert_equal [0, 9], report.values_at("faultCount", "meshes"), what
    sleep(0.01) until (Machine.running_children - [@killer.pid]).empty?
    assert_empty link_objects, what
  end

  def assert_interrupted(error, delay: 0.3)
    @killer.aim(Process.pid, delay, "INT") if error == Interrupt
    assert_raises(error) { yield }
    @killer.wait if error == Interrupt
  end

  # The thread goes on waiting until it is ended as well.
  def join_thread_of(&block)
    thread = Thread.new(&block)
    thread.join
  ensure
    thread.kill.join
  end

  HANG = { hang: "forever" }.freeze

  def test_ctrl_c_ends_a_wait_for_a_stalled_renderer
    { "a query" => [{ command: "GetLinkCamera", **HANG }, ->(t) { t.link.do_rendering(*CAMERA) }],
      "a command behind a pipelined one" => [{ command: "SetMessage", **HANG }, ->(t) { 2.times { t.link.show_message("a") } }],
      "a reload that is not acknowledged" => [{ command: "ReloadFromPlugin", **HANG }, ->(t) { t.link.reload_from_plugin; 2.times { t.link.show_message("a") } }],
      "an export's material" => [{ command: "AppendMaterial", nth: 5, **HANG }, ->(t) { t.export }],
      "an export's mesh" => [{ command: "AppendMesh", nth: 3, **HANG }, ->(t) { t.export }],
      "an export's end" => [{ export_end: 1, **HANG }, ->(t) { t.export; t.link.quit }],
      "the closing" => [{ command: "CloseApp", **HANG }, ->(t) { t.link.quit }],
      **%w[commandReady commandDone].to_h do |event|
        ["the held mutex of #{event}", [{ command: "SetMessage", hold_mutex: { event: event, then: "hang" } }, ->(t) { t.link.show_message("a"); t.link.do_rendering(*CAMERA) }]]
      end,
      **%w[requestReady requestDone].to_h do |event|
        ["the held mutex of #{event}", [{ command: "SetMessage", request: { code: 102, wait: false }, hold_mutex: { event: event, then: "hang" } }, ->(t) { t.link.show_message("a"); t.link.do_rendering(*CAMERA) }]]
      end,
      "a wait on another thread" => [{ command: "GetLinkCamera", **HANG }, ->(t) { t.join_thread_of { t.link.do_rendering(*CAMERA) } }]
    }.each do |what, (step, call)|
      assert start(step), what
      warn what if ENV["TELL"]
      assert_interrupted(Interrupt) { call.call(self) }
      assert_closed_cleanly(what)
    end
    assert_equal @before.first, Machine.threads
  end

  # The model's walk is broken off as well, not only the waits.
  def test_ctrl_c_ends_an_export_that_takes_long_on_the_hosts_side
    ModelHost.watch("")
    assert start
    export
    link.quit
    whole = ModelHost.call_counts
    { "SUFaceGetFrontMaterial" => 0.01, "SUMaterialGetName" => 0.1, "SUFaceGetOuterLoop" => 0.02 }.each do |slow, seconds|
      ModelHost.reset_modes
      ModelHost.cost(slow, seconds)
      link.clear_reload_cache
      assert start
      assert_interrupted(Interrupt, delay: 0.4) { export }
      assert_operator ModelHost.call_counts[slow], :<, whole[slow], slow
      ModelHost.reset_modes
      assert_closed_cleanly(slow)
    end
  end

  def test_whatever_a_signal_handler_raises_ends_the_wait
    assert start({ command: "GetLinkCamera", **HANG })
    former = trap("INT") { raise SystemExit, 7 }
    assert_interrupted(SystemExit) do
      @killer.aim(Process.pid, 0.1, "INT")
      link.do_rendering(*CAMERA)
    end
    trap("INT", former)
    @killer.wait
    assert_closed_cleanly("exit from a signal handler")
  end

  # A handler that only notes the signal leaves the wait alone.
  def test_a_signal_that_is_handled_does_not_end_the_wait
    noted = 0
    former = trap("INT") { noted += 1 }
    assert start({ command: "GetLinkCamera", link_camera: true, delay_ms: 400 })
    @killer.aim(Process.pid, 0.1, "INT")
    link.do_rendering(*CAMERA)
    trap("INT", former)
    @killer.wait
    assert_equal 1, noted
    link.quit
    assert_includes command_names, "SetCamera"
  end

  # In a callback Ruby runs, so what ends its caller comes out there; it must not get lost. The
  # renderer goes on once it is answered, and the link stays; one that does not is given up.
  def test_what_ends_a_callbacks_caller_goes_on_to_it
    { Interrupt => -> { raise Interrupt }, UncaughtThrowError => -> { throw :out, 5 } }.each do |kind, ending|
      assert start({ command: "GetLinkCamera", request: 102 }, receiver: Receiver.new(on_reload: ending))
      kind == Interrupt ? assert_raises(Interrupt) { link.do_rendering(*CAMERA) } : assert_equal(5, catch(:out) { link.do_rendering(*CAMERA) })
      assert link.is_alive, kind
      link.show_message("after it")
      link.quit
      assert_equal ["SetMessage"], command_names.last(1), kind
    end
    assert start({ command: "GetLinkCamera", request: 102, hang: "forever" }, receiver: Receiver.new(on_reload: -> { raise Interrupt }))
    assert_raises(Interrupt) { link.do_rendering(*CAMERA) }
    assert_closed_cleanly("Interrupt, and a renderer that hangs")
    assert start({ command: "SetMessage", request: 102 }, receiver: Receiver.new(on_reload: -> { Thread.current.kill }))
    thread = Thread.new do
      link.show_message("a")
      500.times { link.poll_to_plugin; sleep(0.01) }
    end
    assert thread.join(10), "a thread that ends itself in a callback"
    assert link.is_alive
    poll_until { requests.any? }
    assert_equal true, requests.first["acknowledged"]
  end

  # At rest nothing is in flight, and the link stays.
  def test_an_interrupt_in_a_callback_at_rest_leaves_the_link
    assert start({ after_ms: 10, request: 102 }, receiver: Receiver.new(on_reload: -> { raise Interrupt }))
    assert_raises(Interrupt) { poll_until { false } }
    assert link.is_alive
    link.show_message("here")
    link.quit
    assert_equal ["SetMessage"], command_names
    assert_equal true, requests.first["acknowledged"]
  end

  # It would wait for the first one, which cannot go on while Ruby runs the other.
  def test_another_thread_is_refused_while_a_method_runs
    errors = []
    ask = lambda do
      Thread.new { link.show_message("from elsewhere") rescue errors << $! }.join
    end
    assert start({ command: "GetLinkCamera", request: 102 }, receiver: Receiver.new(on_reload: ask))
    link.do_rendering(*CAMERA)
    assert_equal [RuntimeError], errors.map(&:class)
    Thread.new { link.show_message("alone") }.join
    link.quit
    assert_equal %w[GetLinkCamera SetCamera SetMessage], command_names
  end
end

require "minitest/autorun"
