# The same model gives the same scene whatever the switches say, whatever host call fails once, and in
# any language; calls that the host does not allow at the same time never overlap.

require_relative "helper"
require "modelhost"

SAMPLE = File.expand_path("../../examples/house.json", __dir__)

class VariantsTest < LinkTest
  WATCHDOG_SECONDS = 240

  def setup
    super
    ENV["KVAPP_SCENE_JSON"] = "1"
  end

  # Switches are read once in a process, so each combination has one of its own.
  EXPORT = <<~'RUBY'
    require "json"; require "modelhost"; require "Quellix"
    sample, kvapp, watched = ARGV
    link = Quellix_SUInterface.new
    model = ModelHost.load(sample)
    exit 2 unless link.init_renderer(Object.new, kvapp)
    ModelHost.watch(watched)
    2.times do |i|
      link.do_import(model.handle, sample, i == 1, true)
      link.update_cache_info
    end
    overlaps = ModelHost.overlaps
    link.quit
    abort overlaps.join unless overlaps.empty?
  RUBY

  SERIALISED = "meshhelper,uvhelper,texturewriter,imagerep"

  SWITCHES = [
    [{}, SERIALISED],
    [{ "QUELLIX_UNIFIED_SCAN" => "0" }, SERIALISED],
    [{ "QUELLIX_MAT_PIPELINE" => "0" }, SERIALISED],
    [{ "QUELLIX_IPC_PIPELINE" => "0" }, SERIALISED],
    [{ "QUELLIX_SU_GATES" => "all:mutex" }, "#{SERIALISED},facedata,attrdict"],
    [{ "QUELLIX_UNIFIED_SCAN" => "0", "QUELLIX_MAT_PIPELINE" => "0", "QUELLIX_SU_GATES" => "all:mutex" },
     "#{SERIALISED},facedata,attrdict"],
    [{ "QUELLIX_GEO_PIPELINE" => "0" }, SERIALISED],
    [{ "QUELLIX_GEO_PIPELINE" => "0", "QUELLIX_GEO_PARALLEL" => "0" }, SERIALISED]
  ].freeze

  def test_switches_change_how_and_not_what
    scenes = SWITCHES.each_with_index.map do |(switches, watched), i|
      folder = File.join(@folder, "variant-#{i}")
      env = switches.merge("KVAPP_OUT" => folder)
      loaded = $LOAD_PATH.first(2).map { |path| "-I#{path}" }
      assert system(env, RbConfig.ruby, *loaded, "-e", EXPORT, SAMPLE, KVAPP_DIR, watched), switches.inspect
      assert_equal 0, JSON.parse(File.read(File.join(folder, "report.json")))["faultCount"], switches.inspect
      [1, 2].map { |number| JSON.parse(File.read(File.join(folder, "scene-#{number}.json"))) }
    end
    SWITCHES.zip(scenes) do |(switches, _), (first, reload)|
      assert_same_scene scenes[0][0], first, switches.inspect
      assert_same_scene first, reload, switches.inspect
    end
  end

  # Each host call that an export makes fails once, early and late. The export ends, what the renderer
  # gets is in order, and nothing of the host's is left behind.
  def test_a_host_call_that_fails_counts_as_an_absent_value
    model = ModelHost.load(SAMPLE)
    start
    ModelHost.watch("")
    link.do_import(model.handle, SAMPLE, false, true)
    counts = ModelHost.call_counts
    handle = model.handle
    ModelHost.reset_modes
    owned = ModelHost.owned_objects
    assert_operator counts.size, :>, 60, "the export is to call most of the host"
    counts.each do |function, count|
      [1, count / 2 + 1].uniq.each do |nth|
        ModelHost.fail_call(function, nth)
        link.clear_reload_cache
        assert_nil link.do_import(handle, SAMPLE, false, true), function
        ModelHost.reset_modes
        # A release that the host refuses leaves its object, and it alone.
        owned += 1 if function.end_with?("Release")
        assert_equal owned, ModelHost.owned_objects, "#{function}, call #{nth}"
      end
    end
    link.clear_reload_cache
    link.do_import(model.handle, SAMPLE, false, true)
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].first(3).inspect
    last = Dir.glob(File.join(out, "scene-*.json")).map { |file| file[/\d+/] && File.basename(file)[/\d+/].to_i }.max
    first = JSON.parse(File.read(File.join(out, "scene-1.json")))
    assert_same_scene first, JSON.parse(File.read(File.join(out, "scene-#{last}.json"))), "all is well again afterwards"
    model.close
  end

  NAMES = ["木造の家", "بيت خشبي", "🏡🌳 House"].freeze

  def test_names_of_every_script
    NAMES.each do |name|
      folder = File.join(@folder, name)
      FileUtils.mkdir_p(folder)
      model = ModelHost::Model.new
      paint = model.materials.add(name)
      paint.texture = { pixels: "\x01\x02\x03".b * 4, width: 2, height: 2, bits: 24 }
      layer = model.layers.add(name)
      face = model.entities.add_face([0, 0, 0], [9, 0, 0], [9, 9, 0])
      face.material = paint
      face.layer = layer
      image = File.join(folder, "#{name}.png")
      FileUtils.cp(Dir.glob("/usr/share/assimp/models/**/*.png").min, image)
      model.entities.add_image(image, [0, 0, 5], 10)
      scenes = [name, *(1..10).to_a, 1, *(1..6), 1, 2, 3]
      start({ command: "AppendMesh", request: 106 }, receiver: Receiver.new(on_get_scenes: scenes))
      link.do_import(model.handle, File.join(folder, "#{name}.skp"), false, false)
      link.show_message(name)
      link.quit
      model.close
      assert_equal 0, report["faultCount"], report["faults"].inspect
      assert_equal name, report["modelName"]
      assert_equal name, report["lastMessage"]
      sent = commands.select { |line| line["name"] == "AppendMaterial" }.map { |line| line["fields"]["name"] }
      assert_includes sent, name
      assert sent.any? { |text| text.end_with?("#{name}.png") }, sent.inspect
      table = [requests.first["answer"]].pack("H*").byteslice(16, 15).force_encoding("UTF-8")
      assert table.delete("\0").then { |cut| name.start_with?(cut) && cut.valid_encoding? }, table.inspect
    end
  end

  # A texture that is distorted on its face is baked through a temporary file, which is gone afterwards.
  def test_no_temporary_file_is_left
    before = Dir.glob(File.join(Dir.tmpdir, "cqlx_tw_*"))
    model = ModelHost.load(SAMPLE)
    start
    link.do_import(model.handle, SAMPLE, false, true)
    model.close
    assert_equal before, Dir.glob(File.join(Dir.tmpdir, "cqlx_tw_*"))
  end
end

require "minitest/autorun"
