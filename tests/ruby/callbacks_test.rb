# What a callback may do with the extension: everything when its request found the link at rest;
# when it interrupted a command, what it sends goes out right after that one. The same for signal
# handlers, and for callbacks on any of Ruby's threads and fibers.

require_relative "helper"
require "modelhost"

class CallbacksTest < LinkTest
  SAMPLE = File.expand_path("../../examples/house.json", __dir__)
  CAMERA = [[1.0, 0.0, 0.0], [0, 0, 0], [0, 0, 1], 35, [0, 0, 0]].freeze
  SETTINGS = [0.1, 0.2, 0.3, 1, 2, 3, 4, 5, 6, 7.9].freeze
  ROUNDS = 50
  QUESTION = { idle_ms: 5, request: 102 }.freeze

  def setup
    super
    @model = ModelHost.load(SAMPLE)
  end

  def teardown
    super
    @model.close
  end

  def reload
    link.init_reload
    link.prepare_renderer(true)
    link.do_import(@model.handle, "House.skp", true, true)
    link.update_cache_info
  end

  def assert_no_faults = assert_equal([], report["faults"])

  # The renderer's user asks for a reload: the plug-in sends it from the callback, with the camera
  # and the background after it.
  def test_a_reload_with_camera_and_background_in_its_callback
    rounds = nil
    receiver = Receiver.new(on_reload: lambda do
      # The first export, whose pauses are rests for the renderer, is not over yet.
      next if rounds.nil? || rounds == ROUNDS
      reload
      link.do_rendering(*CAMERA)
      link.set_background_settings(SETTINGS)
      rounds += 1
    end)
    assert start({ command: "SetModelName", link_camera: true }, QUESTION.merge(repeat: "forever"), receiver: receiver)
    link.do_import(@model.handle, "House.skp", false, true)
    link.update_cache_info
    rounds = 0
    poll_until { rounds == ROUNDS }
    link.quit
    assert_no_faults
    counts = command_names.tally
    assert_equal [ROUNDS, ROUNDS + 1, ROUNDS, ROUNDS, 2 * ROUNDS],
                 counts.values_at("PrepareRendering", "SetModelName", "SetCamera", "SetBackgroundSettings", "GetLinkCamera")
    assert_equal ROUNDS + 1, report["exports"].size
    tail = %w[SetMessage SetProgress GetLinkCamera SetCamera GetLinkCamera SetBackgroundSettings]
    assert_equal tail, command_names.last(tail.size)
  end

  # What is sent first is no command in flight for what is sent next.
  def test_each_of_several_commands_of_a_callback_is_sent
    { [-> { link.show_message("a") }, -> { link.do_rendering(*CAMERA) }] => %w[SetMessage GetLinkCamera SetCamera],
      [-> { link.do_rendering(*CAMERA) }, -> { link.set_background_settings(SETTINGS) }] =>
        %w[GetLinkCamera SetCamera GetLinkCamera SetBackgroundSettings],
      [-> { link.reload_from_plugin }, -> { link.do_rendering(*CAMERA) }] => %w[ReloadFromPlugin GetLinkCamera SetCamera]
    }.each do |calls, wanted|
      done = false
      receiver = Receiver.new(on_reload: -> { calls.each(&:call); done = true })
      # One camera is owed to any renderer; the link is what the second one goes by.
      assert start({ command: "GetLinkCamera", repeat: "forever", link_camera: true }, QUESTION, receiver: receiver)
      poll_until { done }
      link.quit
      assert_equal wanted, command_names
      assert_no_faults
    end
  end

  # The renderer asks for the reload that it was told of before it has finished that command.
  def test_a_reload_that_the_plugin_asked_for
    [0, 150].each do |delay|
      done = false
      receiver = Receiver.new(on_reload: -> { reload; done = true })
      assert start({ command: "ReloadFromPlugin", request: { code: 102, wait: false }, delay_ms: delay }, receiver: receiver)
      link.reload_from_plugin
      poll_until { done }
      link.quit
      assert_equal %w[ReloadFromPlugin PrepareRendering SetModelName], command_names.first(3)
      assert_equal 9, report["meshes"]
      assert_no_faults
    end
  end

  # A handler that runs in a wait interrupts the command that is waited for.
  def test_a_signal_handler_sends_behind_the_command_in_flight
    refused = nil
    former = trap("INT") do
      link.show_message("from the handler")
      link.do_rendering(*CAMERA)
      link.set_camera_link(true)
      reload
    rescue RuntimeError => e
      refused = e.message
    end
    assert start({ command: "GetLinkCamera", delay_ms: 300 }, { command: "AppendMesh", nth: 2, delay_ms: 300 })
    killer = fork { sleep(0.1); Process.kill("INT", Process.ppid); exit!(0) }
    link.do_rendering(*CAMERA)
    Process.wait(killer)
    assert_match(/do_import cannot run/, refused)
    killer = fork { sleep(0.2); Process.kill("INT", Process.ppid); exit!(0) }
    link.do_import(@model.handle, "House.skp", false, true)
    Process.wait(killer)
    link.quit
    # The camera that was owed is the one that the handler sent.
    assert_equal %w[GetLinkCamera SetMessage SetCamera SetLinkCamera PrepareRendering], command_names.first(5)
    assert_equal [2, 9], [command_names.count("SetLinkCamera"), report["meshes"]]
    assert_no_faults
  ensure
    trap("INT", former)
  end unless TestSystem::WINDOWS

  # Whatever thread is inside a method serves the requests that come meanwhile.
  def test_any_ruby_thread_may_call_and_poll
    receiver = Receiver.new(on_reload: -> { link.show_message("answered") }, get_use_pbr: true)
    assert start({ command: "GetLinkCamera", request: 114, link_camera: true }, { idle_ms: 100, request: 102 }, receiver: receiver)
    Thread.new { link.do_rendering(*CAMERA) }.join
    poller = Thread.new { 400.times { link.poll_to_plugin; sleep(0.005) } }
    sleep(0.01) until receiver.calls.size == 2 || !poller.alive?
    poller.kill.join
    link.quit
    assert_equal [[:get_use_pbr], [:on_reload]], receiver.calls
    assert_equal %w[GetLinkCamera SetCamera SetMessage], command_names
    # The renderer gives up waiting after five seconds.
    assert requests.all? { |line| line["acknowledged"] && line["ms"] < 5000 }, requests.inspect
  end

  def test_a_start_on_another_thread_is_refused_and_does_not_spoil_the_main_one
    script = <<~RUBY
      $LOAD_PATH.unshift(#{ENV.fetch("EXTENSION_DIR").dump}, #{ENV.fetch("MODELHOST_DIR").dump})
      require "Quellix"
      link = Quellix_SUInterface.new
      puts Thread.new { link.init_renderer(Object.new, #{KVAPP_DIR.dump}) rescue $!.message }.value
      puts link.init_renderer(Object.new, #{KVAPP_DIR.dump})
      link.set_model_name("a.skp")
      link.quit
    RUBY
    said = IO.popen([RbConfig.ruby, "-E", "UTF-8", "-e", script], &:read)
    assert_equal ["init_renderer is for the host's main thread", "true"], said.lines.map(&:chomp)
  end

  # The link is in order when the time-out comes out of the method: with a wait, and at rest.
  def test_a_time_out_in_a_callback_comes_out_of_the_method
    [{ command: "GetLinkCamera", request: 102 }, QUESTION].each do |step|
      receiver = Receiver.new(on_reload: -> { sleep(20) })
      assert start(step, receiver: receiver)
      assert_raises(Timeout::Error) { Timeout.timeout(0.3) { loop { link.do_rendering(*CAMERA); link.poll_to_plugin; sleep(0.01) } } }
      assert link.is_alive
      link.show_message("after it")
      link.quit
      assert_equal ["SetMessage"], command_names.last(1)
      assert_equal [true], requests.map { |line| line["acknowledged"] }
    end
  end

  def test_what_another_thread_raises_in_a_callback_comes_out_of_the_method
    main = Thread.current
    error = Class.new(Exception)
    receiver = Receiver.new(on_reload: -> { Thread.new { main.raise(error) }; sleep(20) })
    assert start(QUESTION, receiver: receiver)
    assert_raises(error) { poll_until { false } }
    assert link.is_alive
  end

  # A callback that leaves for another fiber is still inside its method.
  def test_a_fiber_that_is_left_in_a_callback_is_told_and_goes_on
    leaving = nil
    receiver = Receiver.new(on_reload: lambda do
      next unless leaving
      leaving = false
      Fiber.yield(:left)
      link.show_message("resumed")
    end)
    assert start(QUESTION.merge(repeat: "forever"), receiver: receiver)
    # The renderer is up: sanitizers cannot follow a C++ exception on a fiber's stack.
    poll_until { receiver.calls.any? }
    leaving = true
    fiber = Fiber.new { poll_until { leaving == false }; :ended }
    assert_equal :left, fiber.resume
    error = assert_raises(RuntimeError) { link.show_message("from outside") }
    assert_equal "another fiber is inside a method of the extension; resume it until its end", error.message
    assert_equal :ended, fiber.resume
    link.show_message("outside again")
    link.quit
    assert_equal(["resumed", "outside again"], commands.filter_map { |line| line["fields"]["text"] if line["name"] == "SetMessage" })
  end

  def test_a_forked_child_leaves_the_channel_alone
    assert start
    link.do_rendering(*CAMERA)
    child = fork do
      states = [link.is_alive, link.show_message("from the child"), link.quit]
      exit!(states == [false, nil, nil] ? 0 : 1)
    end
    assert_equal 0, Process.wait2(child).last.exitstatus
    assert link.is_alive
    link.show_message("from the parent")
    link.quit
    assert_equal %w[GetLinkCamera SetCamera SetMessage], command_names
  end unless TestSystem::WINDOWS
end

require "minitest/autorun"
