# The example renderer, which knows no more than docs/protocol.md says, follows the sessions that the
# stand-in follows and counts the same.

require_relative "helper"
require "modelhost"

class MinimalRendererTest < LinkTest
  SAMPLE = File.expand_path("../../examples/house.json", __dir__)
  # Read once in a process.
  ENV["QUELLIX_NO_TEX_DOWNSCALE"] = "1"
  CAMERA = [[1, -9, 3], [0, 0, 0], [0, 0, 1], 35, [0, 0, 1]].freeze
  BACKGROUND = [0.6, 0.75, 0.9, 0, 0, 0, 0, 0, 0, 0].freeze
  COUNTS = %w[materialsSent materialsReferenced meshesSent placementsSent ownersReferenced lightsSent
              verticesSent trianglesSent].freeze
  MINIMAL_DIR = ENV.fetch("MINIMAL_RENDERER_DIR")

  # A host of its own, which exports again and again, or once and then rests.
  HOST = <<~'RUBY'
    require "modelhost"; require "Quellix"
    link = Quellix_SUInterface.new
    model = ModelHost.load(ENV["SAMPLE"])
    receiver = Object.new
    def receiver.get_su_version = 2027
    link.init_renderer(receiver, ENV["MINIMAL_RENDERER_DIR"])
    loop do
      link.do_import(model.handle, "a.skp", false, true)
      sleep if ENV["RESTS"]
      link.clear_reload_cache
    end
  RUBY

  # What the renderer prints that is started in the block, and quits there.
  def printed_in
    file = File.join(@folder, "printed")
    saved = $stdout.dup
    $stdout.reopen(file, "w")
    yield
    File.readlines(file, chomp: true)
  ensure
    $stdout.reopen(saved)
  end

  def export(model, reload)
    link.prepare_renderer(reload)
    link.do_import(model.handle, SAMPLE, reload, true)
    link.init_children_map(model.handle)
    link.update_cache_info
  end

  # What a renderer's answer decides is in it too: whether a view is sent.
  def views
    link.do_rendering(*CAMERA)
    link.set_camera_link(true)
    link.do_rendering_without_progress(*CAMERA)
    link.set_background_settings(BACKGROUND)
    link.set_camera_link(false)
    link.do_rendering_with_background_settings(*CAMERA, BACKGROUND)
  end

  # One instance is moved, and a material gets a texture that is larger than the segment.
  def edit(model)
    moved = model.entities.instances.first
    moved.transform!(ModelHost::Transformation.translation([10, 0, 0]))
    link.update_instance_transform(moved.persistent_id, moved.transformation.to_a)
    wood = model.materials["Wood"]
    wood.texture = { pixels: "\x10\x20\x30\xFF".b * (4096 * 5200), width: 4096, height: 5200, bits: 32, size: [4, 4] }
    link.invalidate_material_cache(wood.persistent_id & 0xFFFFFFFF)
  end

  def session
    model = ModelHost.load(SAMPLE)
    export(model, false)
    views
    link.reload_from_plugin
    edit(model)
    export(model, true)
    link.clear_model_data_for_reload
    yield if block_given?
    export(model, true)
    link.quit
    link.clear_reload_cache
  ensure
    model&.close
  end

  def numbers(line) = line.scan(/(\w+)=(\d+)/).to_h { |name, number| [name, number.to_i] }

  # How often progress is told depends on how fast the threads are.
  def without_progress(hash) = hash.except("SetProgress")

  def test_a_whole_session_counts_as_the_stand_in_counts
    receiver = Receiver.new(get_su_version: 2027)
    lines = printed_in do
      assert start(receiver: receiver, directory: MINIMAL_DIR)
      session { poll_until { receiver.calls.any? } }
    end
    refute link.is_alive
    assert_empty link_objects
    start
    session
    assert_equal 0, report["faultCount"], report["faults"]

    sent = report["commands"]
    %w[count bytes].zip(%w[commands bytes]) do |key, what|
      wanted = sent.transform_values { |total| total[key] }
      assert_equal without_progress(wanted), without_progress(numbers(lines.grep(/\A#{what}:/).first)), what
    end
    assert_operator sent.keys.size, :>=, 19
    exports = lines.grep(/\Aexport:/).map { |line| COUNTS.map { |name| numbers(line).fetch(name, 0) } }
    assert_equal report["exports"].map { |summary| summary.values_at(*COUNTS) }, exports
    assert_equal 3, exports.size
    assert_includes lines, "version: 2027"
    assert_equal "end: closed", lines.last
  end

  # The pipe ends when nobody is left who could print.
  def test_a_killed_host_is_no_reason_to_stay
    [nil, 0, 0.03, 0.1].each do |delay|
      environment = { "SAMPLE" => SAMPLE, "RESTS" => delay ? nil : "1" }
      host = IO.popen(environment, [RbConfig.ruby, *$LOAD_PATH.first(2).map { |path| "-I#{path}" }, "-e", HOST])
      sign = delay ? "SetModelName" : "export:"
      line = host.gets until line&.start_with?(sign)
      sleep(delay || 0.1)
      Process.kill(:KILL, host.pid)
      assert_equal "end: the host is gone", host.readlines(chomp: true).last
      host.close
      assert_empty link_objects.grep(/ToPlugin/)
    end
    # The next host finds nothing in its way.
    lines = printed_in { start(directory: MINIMAL_DIR) && link.quit }
    assert_equal "end: closed", lines.last
    assert_empty link_objects
  end
end

require "minitest/autorun"
