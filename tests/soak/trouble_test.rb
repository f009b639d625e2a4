# A machine in trouble: no room for shared memory, no more threads, no more memory, folders that
# cannot be written. Each case runs in a process of its own, which the trouble is made for.

require_relative "../ruby/helper"
require_relative "machine"
require "open3"

class TroubleTest < LinkTest
  WATCHDOG_SECONDS = 240

  # What every case starts with. `outcome` tells what a call came to.
  PRELUDE = <<~'RUBY'
    require "json"; require "fileutils"; require "modelhost"; require "Quellix"
    HOUSE = ModelHost.load(ENV["SAMPLE"])
    LINK = Quellix_SUInterface.new
    RESULTS = {}
    def start(out)
      ENV["KVAPP_OUT"] = File.join(ENV["FOLDER"], out)
      LINK.init_renderer(Object.new, ENV["KVAPP_DIR"])
    end
    def outcome
      yield
      "fine"
    rescue RuntimeError => e
      "#{e.class}: #{e.message}"
    end
    def export(model = HOUSE) = outcome { LINK.do_import(model.handle, "a.skp", false, true) }
    def report(out) = JSON.parse(File.read(File.join(ENV["FOLDER"], out, "report.json"))).values_at("faultCount", "meshes", "materials")
    # One of the interpreter's own may come beside the first.
    def left_over_threads = Dir.children("/proc/self/task").size - 2 > 0
    def big_model(side = 2048)
      model = ModelHost::Model.new
      group = model.entities.add_group
      group.entities.add_face([0, 0, 0], [10, 0, 0], [10, 10, 0]).material = material = model.materials.add("Big")
      picture = { pixels: "\x10\x20\x30\xff".b * (side * side), width: side, height: side, bits: 32, size: [4, 4] }
      material.metallic = material.roughness = material.normal_scale = 1.0
      material.texture = material.metallic_texture = material.roughness_texture = material.normal_texture = picture
      model
    end
  RUBY
  POSTLUDE = "\nputs JSON.generate(RESULTS)\n"

  def run_case(code, wrapper: [], environment: {})
    environment = { "FOLDER" => @folder, "SAMPLE" => File.expand_path("../../examples/house.json", __dir__),
                    "KVAPP_PICTURE" => "0", "KVAPP_BYTES" => nil }.merge(environment)
    command = [*wrapper, RbConfig.ruby, *$LOAD_PATH.first(2).map { |path| "-I#{path}" }, "-e", PRELUDE + code + POSTLUDE]
    output, errors, status = Open3.capture3(environment, *command)
    assert status.success?, "#{status}: #{errors}#{output}"
    JSON.parse(output.lines.last)
  end

  # A shared-memory folder of the case's own, of that size.
  def small_folder(size)
    mount = "mount -t tmpfs -o size=#{size} tmpfs /dev/shm"
    skip "no folder can be mounted here" unless system("unshare", "-m", "sh", "-c", mount, %i[out err] => File::NULL)
    ["unshare", "-m", "sh", "-c", "#{mount} && exec \"$@\"", "sh"]
  end

  def test_no_room_for_the_channel
    results = run_case(<<~'RUBY', wrapper: small_folder("1m"), environment: { "KVAPP_SEGMENT" => "65536" })
      RESULTS["started"] = start("a")
      RESULTS["message"] = outcome { LINK.show_message("a") }
      RESULTS["camera"] = outcome { LINK.do_rendering([1, 0, 0], [0, 0, 0], [0, 0, 1], 35, [0, 0, 0]) }
      RESULTS["export"] = export(big_model)
      RESULTS["threads"] = left_over_threads
      system("mount -o remount,size=400m /dev/shm")
      # The renderer has no room for its own objects while the extension tries; it may have given up.
      used = LINK.is_alive ? "a" : "b"
      RESULTS["alive"] = LINK.is_alive
      start(used) unless LINK.is_alive
      RESULTS["later"] = export
      LINK.quit
      RESULTS["report"] = report(used)
      RESULTS["left"] = Dir.children("/dev/shm")
    RUBY
    assert_equal [true, "fine", "fine"], results.values_at("started", "message", "camera")
    assert_match(/\ARuntimeError: the shared memory for the renderer could not be made: No space left/, results["export"]) if results["alive"]
    assert_equal false, results["threads"]
    # The same link, once there is room.
    assert_equal ["fine", [0, 9], []], [results["later"], results["report"].first(2), results["left"]]
  end

  def test_no_room_to_grow
    results = run_case(<<~'RUBY', wrapper: small_folder("100m"))
      start("a")
      model = big_model
      RESULTS["export"] = export(model)
      LINK.quit
      # Nothing goes on for whoever looks at the renderer.
      RESULTS["end"] = JSON.parse(File.read(File.join(ENV["FOLDER"], "a", "report.json"))).values_at("lastMessage", "lastProgress")
      start("b")
      RESULTS["again"] = export(model)
      RESULTS["alive"] = LINK.is_alive
      RESULTS["smaller"] = export
      LINK.quit
      RESULTS["report"] = report("b")
      RESULTS["left"] = Dir.children("/dev/shm")
    RUBY
    2.times { |i| assert_match(/No space left/, results[%w[export again][i]]) }
    assert_equal ["", 0.0], results["end"]
    assert_equal [true, "fine", [0, 9], []], [results["alive"], results["smaller"], results["report"].first(2), results["left"]]
  end

  # Limits bind ordinary users only, and count all threads of one; the case takes a user of its own.
  def test_no_more_threads
    skip "only root can become another user" unless Process.uid.zero?
    File.chmod(0o777, @folder)
    # The other user may not reach the folder that this was built in.
    renderer = File.join(@folder, "renderer")
    FileUtils.mkdir(renderer)
    FileUtils.cp_r(File.join(KVAPP_DIR, "KvApp"), renderer)
    results = run_case(<<~'RUBY', environment: { "KVAPP_DIR" => renderer })
      Process::UID.change_privilege(60_321)
      ENV.delete("HOME")
      start("a")
      LINK.do_rendering([1, 0, 0], [0, 0, 0], [0, 0, 1], 35, [0, 0, 0])
      mine = Dir.glob("/proc/[0-9]*/task/*").count { |task| File.stat(task).uid == 60_321 rescue false }
      RESULTS["exports"] = (0..3).map do |more|
        Process.setrlimit(:NPROC, mine + more, Process.getrlimit(:NPROC).last)
        export
      end
      RESULTS["threads"] = left_over_threads
      Process.setrlimit(:NPROC, Process.getrlimit(:NPROC).last)
      RESULTS["later"] = export
      LINK.quit
      RESULTS["report"] = report("a")
    RUBY
    assert_operator results["exports"].count { |text| text.start_with?("RuntimeError: ") && text.include?("Resource temporarily unavailable") }, :>=, 2, results.inspect
    assert_equal ["fine", [0, 9], false], [results["later"], results["report"].first(2), results["threads"]]
  end

  def test_not_enough_memory_for_textures
    skip "the address sanitizer ends a process that is out of memory" if ENV.fetch("LD_PRELOAD", "").include?("asan")
    results = run_case(<<~'RUBY')
      start("a")
      model = big_model
      RESULTS["exports"] = [8, 24, 40, 80, 120, 160].map do |mebibytes|
        used = File.read("/proc/self/status")[/VmSize:\s+(\d+)/, 1].to_i
        Process.setrlimit(:AS, (used + mebibytes * 1024) * 1024, Process.getrlimit(:AS).last)
        export(model)
      ensure
        Process.setrlimit(:AS, Process.getrlimit(:AS).last)
      end
      RESULTS["threads"] = left_over_threads
      RESULTS["later"] = export(model)
      LINK.quit
      RESULTS["report"] = report("a")
    RUBY
    assert_operator results["exports"].count { |text| text.start_with?("RuntimeError: ") }, :>=, 2, results.inspect
    assert_equal ["fine", [0, 1, 3], false], [results["later"], results["report"], results["threads"]], results.inspect
  end

  def test_folders_that_are_missing_or_cannot_be_written
    File.write(File.join(@folder, "plain"), "")
    nowhere = File.join(@folder, "plain/nothing")
    { "TMPDIR" => nowhere, "QUELLIX_PERF_LOG_FILE" => nowhere, "QUELLIX_IPC_DIGEST" => nowhere }.tap do |environment|
      results = run_case(<<~'RUBY', environment: environment)
        start("a")
        RESULTS["exports"] = [export, export]
        LINK.quit
        RESULTS["report"] = report("a")
        RESULTS["threads"] = left_over_threads
      RUBY
      assert_equal [%w[fine fine], [0, 9], false], [results["exports"], results["report"].first(2), results["threads"]]
    end
  end

  # What a renderer that was killed at its first steps may leave: objects that nobody finishes.
  def test_objects_that_are_not_finished
    [0, 1, 100, 65_536].each do |bytes|
      start({ after_ms: 0, hang: "forever" })
      sleep(0.1)
      %w[Qlx_Lock_ToPlugin1_seg Qlx_Lock_ToPlugin2_seg].each do |name|
        File.delete("/dev/shm/#{name}")
        File.write("/dev/shm/#{name}", "\0" * bytes)
      end
      ENV.delete("KVAPP_SCRIPT")
      5.times { link.poll_to_plugin }
      assert link.init_renderer(Receiver.new, KVAPP_DIR), bytes
    end
  end
end

require "minitest/autorun"
