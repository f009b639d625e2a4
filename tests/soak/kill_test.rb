# The renderer is killed at a random instant of everything that the extension does, time and again.
# After each kill the call in progress returns, a new renderer can be started at once and gets the
# whole scene, and nothing of the killed one is left.

require_relative "../ruby/helper"
require_relative "machine"
require "modelhost"

class KillTest < LinkTest
  WATCHDOG_SECONDS = 3600
  KILLS = Integer(ENV.fetch("KILLS", "40"))
  LIMIT = Float(ENV.fetch("SOAK_SECONDS", "3600"))
  RANDOM_SEED = Integer(ENV.fetch("KILL_SEED", "2027"))

  SAMPLE = File.expand_path("../../examples/house.json", __dir__)
  CAMERA = [[1, 0, 0], [0, 0, 0], [0, 0, 1], 35, [0, 0, 0]].freeze
  EVENTS = %w[commandReady commandDone segmentReplaced requestReady requestDone].freeze
  CHANNEL = %w[Qlx_Lock_ToApp1_seg Qlx_Lock_ToApp2_seg Qlx_Lock_ToApp3_seg Qlx_Lock_ToPlugin1_seg
               Qlx_Lock_ToPlugin2_seg Qlx_Mem_ToApp Qlx_Mem_ToPlugin].freeze

  # Each returns the longest delay of the kill in seconds, and the renderer's script.
  KINDS = {
    starting: ->(_) { [0.03, []] },
    export: ->(_) { [0.25, []] },
    reload: ->(_) { [0.25, []] },
    camera: ->(_) { [0.1, [{ at: 1, link_camera: true }]] },
    requests: ->(_) { [0.15, [106, 107, 110, 111].map { |code| { idle_ms: 1, request: { code: code, name: "p", bytes: "0102030405" }, repeat: "forever" } }] },
    asking: ->(_) { [0.25, [{ command: "AppendMesh", request: 107, repeat: "forever" }]] },
    growth: ->(_) { [0.9, []] },
    # These kill themselves where no signal from outside would hit.
    mutex: ->(random) { [nil, [{ at: random.rand(1..40), hold_mutex: { event: EVENTS.sample(random: random) } }]] },
    replacing: ->(_) { [nil, [{ command: "MemoryDestroyed", crash: true }]] },
    answering: ->(random) { [nil, [{ at: random.rand(1..40), phase: "after", crash: true }]] }
  }.freeze

  def setup
    super
    ENV["KVAPP_SCENE_JSON"] = "1"
    ENV.delete("KVAPP_BYTES")
    @random = Random.new(RANDOM_SEED)
    @killer = Killer.new
    @models = { house: ModelHost.load(SAMPLE), big: big_model }
    @references = @models.to_h { |name, model| [name, reference(model)] }
  end

  def teardown
    @killer.stop
    @models.each_value(&:close)
    super
  end

  # One material whose command does not fit into the segment as it is made.
  def big_model
    model = ModelHost::Model.new
    group = model.entities.add_group
    group.entities.add_face([0, 0, 0], [10, 0, 0], [10, 10, 0]).material = material = model.materials.add("Big")
    picture = -> { { pixels: @random.bytes(4) * (2048 * 2048), width: 2048, height: 2048, bits: 32, size: [4, 4] } }
    material.texture = picture.call
    material.metallic = material.roughness = material.normal_scale = 1.0
    material.metallic_texture = picture.call
    material.roughness_texture = picture.call
    material.normal_texture = picture.call
    model
  end

  def receiver
    Receiver.new(on_get_scenes: [["s", *[0.5] * 10, 1, *[2] * 6, *[0.25] * 3]].flatten,
                 on_request_camera_info: [0.0] * 13, load_parameters: [6, 1, 770])
  end

  def export(model, reload = false)
    link.prepare_renderer(reload)
    link.do_import(model.handle, "a.skp", reload, true)
    link.update_cache_info
  end

  def scene = JSON.parse(File.read(File.join(out, "scene-1.json")))

  def reference(model)
    start
    export(model)
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].inspect
    scene
  end

  # One thing that a plug-in does; called until the renderer is gone.
  def act(kind, model)
    case kind
    when :starting, :camera then link.do_rendering_without_progress(*CAMERA)
    when :requests then 20.times { link.poll_to_plugin }
    when :reload
      @models[:house].entities.instances.each { |i| link.invalidate_geometry_cache(i.persistent_id) if @random.rand < 0.3 }
      export(model, true)
    else export(model)
    end
  end

  # In the order of their starts. One that was closed may still be ending.
  def renderers = Machine.children - [@killer.pid]

  def kill_during(kind, model)
    delay, steps = KINDS[kind].call(@random)
    ENV.delete("KVAPP_SCRIPT")
    ended = renderers.select { |pid| zombie?(pid) }
    assert start(*steps, receiver: receiver)
    assert_empty ended & renderers, "#{kind}: ended children that nobody reaped"
    export(model) if kind == :reload
    @killer.aim(renderers.last, @random.rand(delay)) if delay
    Timeout.timeout(60 * TIME_FACTOR, nil, "#{kind}: the renderer is not gone") do
      act(kind, model) while link.is_alive
    end
    returned = Machine.now
    # Two are promised; the rest is room for a busy machine.
    assert_operator returned - @killer.wait, :<, 20, "#{kind}: the call returned late" if delay
  end

  def start_again(kind, model, name)
    FileUtils.rm_rf(out)
    ENV.delete("KVAPP_SCRIPT")
    assert start(receiver: receiver), "#{kind}: no second start"
    export(model)
    link.do_rendering(*CAMERA)
    assert_equal CHANNEL, link_objects.sort, "#{kind}: objects besides those of the new channel"
    link.quit
    assert_equal 0, report["faultCount"], "#{kind}: #{report["faults"]}"
    assert_same_scene(@references[name].except("camera"), scene.except("camera"), kind)
    FileUtils.rm_rf(out)
  end

  def assert_nothing_left(kind, before)
    sleep(0.005) until renderers.all? { |pid| zombie?(pid) }
    assert_empty link_objects, "#{kind}: objects"
    assert_empty Machine.mappings, "#{kind}: mappings"
    assert_equal before, [Machine.threads, Machine.descriptors], "#{kind}: threads and descriptors"
  end

  def zombie?(pid)
    File.read("/proc/#{pid}/stat").split(")").last.split.first == "Z"
  rescue Errno::ENOENT, Errno::ESRCH
    true
  end

  def test_kills
    before = [Machine.threads, Machine.descriptors]
    ends = Machine.now + LIMIT
    done = Hash.new(0)
    KILLS.times do |i|
      break if Machine.now > ends
      # The large ones cost most of the time.
      kind = KINDS.keys[i % KINDS.size]
      kind = :export if %i[growth replacing].include?(kind) && i >= 20 && i % 40 >= 20
      name = %i[growth replacing].include?(kind) ? :big : :house
      kill_during(kind, @models[name])
      start_again(kind, @models[name], name)
      assert_nothing_left(kind, before)
      done[kind] += 1
    end
    puts "kills: #{done.values.sum} #{done}"
  end
end

require "minitest/autorun"
