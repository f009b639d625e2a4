# A long day: one edit and one reload after another. Memory stays flat, the host gets every object
# back, and the renderer holds what a fresh export would give it.

# glibc lets what each of its heaps keeps of free memory grow with the largest block that was ever
# freed, up to a bound; a thread that comes late to a heap so adds to the resident memory for some
# hundred reloads. Naming the limit that it starts with, which only a new process can, keeps it, and
# what is read here is what the extension holds.
unless ENV["MALLOC_TRIM_THRESHOLD_"]
  exec({ "MALLOC_TRIM_THRESHOLD_" => "131072" }, RbConfig.ruby, "-W", "-E", "UTF-8", __FILE__, *ARGV)
end

require_relative "../ruby/helper"
require_relative "machine"
require "modelhost"

class ReloadSoak < LinkTest
  WATCHDOG_SECONDS = 36_000
  SAMPLE = File.expand_path("../../examples/house.json", __dir__)
  CYCLES = Integer(ENV.fetch("CYCLES", "50"))
  LIMIT = Float(ENV.fetch("SOAK_SECONDS", "36000"))

  def setup
    super
    ENV.delete("KVAPP_BYTES")
    @random = Random.new(2027)
    @model = ModelHost.load(SAMPLE)
  end

  def teardown
    super
    @model.close
  end

  def export(reload)
    link.do_import(@model.handle, SAMPLE, reload, true)
    link.update_cache_info
  end

  def any(list) = list[@random.rand(list.size)]

  def named = @model.entities.instances.to_a + @model.entities.groups.to_a

  # One change as a modeller makes it, with the call that a plug-in makes for it. What is added is
  # taken away again, so that the model stays its size.
  def edit
    case @random.rand(8)
    when 0
      moved = any(@model.entities.instances.to_a)
      moved.transform!(ModelHost::Transformation.translation([@random.rand(-1.0..1.0), 0, 0]))
      link.invalidate_geometry_cache(moved.persistent_id)
    when 1
      material = any(@model.materials.to_a)
      material.color = Array.new(3) { @random.rand(256) }
      link.invalidate_material_cache(material.persistent_id & 0xFFFFFFFF)
    when 2
      layer = any(@model.layers.to_a)
      layer.visible = !layer.visible?
      link.invalidate_layer(layer.persistent_id)
    when 3
      hidden = any(named)
      hidden.hidden = !hidden.hidden?
      link.invalidate_geometry_cache(hidden.persistent_id)
    when 4
      @added&.erase!
      @added = @model.entities.add_group
      @added.entities.add_face([0, 0, 300], [50, 0, 300], [50, 50, 300]).material = any(@model.materials.to_a)
    when 5
      definition = any(@model.entities.instances.to_a).definition
      @face&.erase!
      @face = nil
      link.invalidate_definition(@changed) if @changed
      @changed = definition.persistent_id
      @face = definition.entities.add_face([0, 0, 500], [5, 0, 500], [5, 5, 500])
      link.invalidate_definition(@changed)
    when 6
      @model.materials["Wood"].texture = { pixels: @random.bytes(3 * 64 * 64), width: 64, height: 64, bits: 24, size: [4, 4] }
      link.invalidate_material_cache(@model.materials["Wood"].persistent_id & 0xFFFFFFFF)
    else
      lamp = @model.entities.instances.find { |i| i.name == "porch light" }
      lamp.set_attribute("corvane_II", "light-power", @random.rand(1.0..9.0))
    end
  end

  # The resident memory that the steps settle at: the median of the last readings.
  def median(readings) = readings.sort[readings.size / 2]

  def test_reload_after_reload
    start
    export(false)
    objects = ModelHost.owned_objects
    # The caches' lines of the timing log tell what they hold; the renderer's report what it holds.
    readings = []
    done = 0
    ends = Machine.now + LIMIT
    CYCLES.times do
      break if Machine.now > ends
      edit
      export(true)
      GC.start if (done % 10).zero?
      readings << Machine.resident_kib
      done += 1
      assert_equal objects, ModelHost.owned_objects, "after #{done} reloads"
    end
    ENV["KVAPP_SCENE_JSON"] = "1"
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].first(3).inspect
    assert_equal [], report["noteCounts"].keys - ["danglingMesh", "danglingOwner"]
    held = report.values_at("materials", "meshes", "placements", "placedTriangles", "lights")
    start
    export(false)
    link.quit
    assert_equal report.values_at("materials", "meshes", "placements", "placedTriangles", "lights"), held
    assert_flat(readings) if done >= 400
    puts "reloads: #{done}, resident KiB: #{readings.first} at first, #{readings[readings.size / 2]} half-way, #{readings.last} at last"
  end

  def assert_flat(readings)
    second_half = readings.last(readings.size / 2)
    tenth = second_half.size / 10
    before, after = median(second_half.first(tenth)), median(second_half.last(tenth))
    assert_operator after, :<, before * 1.01, "resident memory grew from #{before} to #{after} KiB"
  end
end

require "minitest/autorun"
