# Reloads: after an edit and the calls that a plug-in makes for it, the renderer's scene is that of a
# fresh export into a fresh renderer, value for value, and only what had to be sent was sent.

require_relative "helper"
require "modelhost"

SAMPLE = File.expand_path("../../examples/house.json", __dir__)

PICTURE = Dir.glob("/usr/share/assimp/models/**/*.png").min

class ReloadTest < LinkTest
  def setup
    super
    ENV["KVAPP_SCENE_JSON"] = "1"
    @model = ModelHost.load(SAMPLE)
  end

  def teardown
    super
    @model.close
  end

  def export(reload)
    link.prepare_renderer(reload)
    link.do_import(@model.handle, SAMPLE, reload, true)
    link.update_cache_info
  end

  def scene(number) = JSON.parse(File.read(File.join(out, "scene-#{number}.json")))

  # How many commands of each name belonged to the export of that number.
  def sent_by(number)
    first, last = report["exports"][number - 1].values_at("firstCommand", "lastCommand")
    commands.select { |line| line["n"].between?(first, last) }.map { |line| line["name"] }.tally
  end

  def instance(name) = @model.entities.instances.find { |i| i.name == name }
  def group(name) = @model.entities.groups.find { |g| g.name == name }
  def material(name) = @model.materials[name]
  def id32(entity) = entity.persistent_id & 0xFFFFFFFF
  def moved(by) = ModelHost::Transformation.translation(by)

  def repaint(entity) = link.invalidate_material_cache(id32(entity))
  def touch(entity) = link.invalidate_geometry_cache(entity.persistent_id)

  # The edit with its calls; how many materials and meshes must be sent for it at the most (the
  # camera-facing trees' mesh is sent by every export).
  EDITS = {
    "nothing" => [0, 1, ->(_) {}],
    "a material's colour" => [1, 3, ->(t) { t.material("Door paint").color = [200, 30, 30]; t.repaint(t.material("Door paint")) }],
    "a texture" => [1, 1 + 9, lambda do |t|
      t.material("Wood").texture = { pixels: "\x10\x20\x30\xFF".b * 4, width: 2, height: 2, bits: 32, size: [4, 4] }
      t.repaint(t.material("Wood"))
    end],
    "an instance moved" => [0, 2, lambda do |t|
      t.instance("front door").transform!(t.moved([0, -40, 0]))
      t.touch(t.instance("front door"))
    end],
    "a definition edited" => [0, 3, lambda do |t|
      window = t.instance("kitchen").definition
      window.entities.add_face([0, -9, 0], [60, -9, 0], [60, -9, 5])
      t.link.invalidate_definition(window.persistent_id)
    end],
    "a layer hidden" => [0, 3, lambda do |t|
      layer = t.group("Roof").layer
      layer.visible = false
      t.link.invalidate_layer(layer.persistent_id)
    end],
    "a layer shown" => [0, 3, lambda do |t|
      layer = t.group("Sketch").layer
      layer.visible = true
      t.link.invalidate_layer(layer.persistent_id)
    end],
    "a light's power" => [0, 1, ->(t) { t.instance("porch light").set_attribute("corvane_II", "light-power", 7.0) }],
    "a material's emission" => [0, 1, ->(t) { t.material("Glass").set_attribute("corvane_II", "light_power", 50) }],
    "an instance added" => [0, 2, lambda do |t|
      added = t.model.entities.add_instance(t.model.definitions["Fence"], t.moved([-240, -300, -4]))
      added.material = t.material("Wood")
    end],
    "a group added" => [0, 2, ->(t) { t.model.entities.add_group.entities.add_face([0, 0, 300], [50, 0, 300], [50, 50, 300]) }],
    "a group removed" => [0, 1, ->(t) { t.group("Porch").erase! }],
    "an instance hidden" => [0, 1, ->(t) { t.instance("east").hidden = true; t.touch(t.instance("east")) }],
    "a new material" => [1, 3, lambda do |t|
      t.group("Porch").entities.faces.first.material = t.model.materials.add("Fresh")
      t.touch(t.group("Porch"))
    end],
    "a material no longer used" => [0, 3, lambda do |t|
      t.group("Porch").entities.faces.each { |f| f.material = t.material("Frame") if f.material == t.material("Gravel") }
      t.touch(t.group("Porch"))
    end],
    "an image replaced" => [1, 2, lambda do |t|
      old = t.model.entities.images.first
      place = old.transformation
      t.link.invalidate_geometry_cache(0)
      old.erase!
      t.model.entities.add_image(PICTURE, [0, 0, 0], 48).transformation = place
    end]
  }.freeze

  attr_reader :model

  def test_every_edit_reaches_the_renderer_and_little_else
    EDITS.each do |what, (materials, meshes, edit)|
      @model.close
      @model = ModelHost.load(SAMPLE)
      start
      export(false)
      edit.call(self)
      export(true)
      link.quit
      assert_equal 0, report["faultCount"], "#{what}: #{report["faults"].inspect}"
      reloaded = scene(2)
      sent = sent_by(2)
      bytes = report["exports"][1]["bytes"]
      start
      export(false)
      link.quit
      assert_same_scene scene(1), reloaded, what
      assert_operator sent.values_at("AppendMaterial", "AppendPBRMaterial").sum(&:to_i), :<=, materials, "#{what}: #{sent}"
      assert_operator sent["AppendMesh"].to_i, :<=, meshes, "#{what}: #{sent}"
      assert_equal [1, 1], sent.values_at("AppendCachedMaterials", "InstanciateMeshBatch"), what
      assert_operator bytes, :<, report["exports"][0]["bytes"] / 4, what if what == "nothing"
    end
  end

  # Many edits one after another, with a reload after each, end where a fresh export starts.
  def test_a_row_of_reloads
    start
    export(false)
    ["an instance moved", "a layer hidden", "a material's colour", "an instance added", "a group removed", "a texture"].each do |what|
      EDITS[what].last.call(self)
      export(true)
    end
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].inspect
    reloaded = scene(7)
    start
    export(false)
    link.quit
    assert_same_scene scene(1), reloaded
  end

  def test_the_caches_of_an_older_renderer_are_forgotten
    start
    export(false)
    link.quit
    start
    export(true)
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].inspect
    assert_equal 9, report["meshes"]
    refute_includes command_names, "AppendCachedMaterials"
  end

  def test_clear_reload_cache_sends_everything_again
    start
    export(false)
    link.clear_reload_cache
    link.clear_model_data_for_reload
    export(true)
    link.quit
    assert_same_scene scene(1), scene(2)
    assert_nil sent_by(2)["AppendCachedMaterials"]
  end

  # The methods' lines in the timing log, which tell what they did.
  def test_the_log_of_the_cache_methods
    log = File.join(@folder, "log")
    script = <<~RUBY
      require "modelhost"; require "Quellix"
      link = Quellix_SUInterface.new
      model = ModelHost::Model.new
      model.entities.add_group
      2.times { link.init_children_map(model.handle) }
      link.invalidate_layer(5); link.invalidate_definition(6); link.invalidate_geometry_cache(7)
      link.update_cache_info; link.clear_reload_cache; link.invalidate_material_cache(8)
    RUBY
    env = { "QUELLIX_PERF_LOG_FILE" => log }
    assert system(env, ENV.fetch("RUBY", RbConfig.ruby), *$LOAD_PATH.first(2).map { |path| "-I#{path}" }, "-e", script)
    lines = File.readlines(log, chomp: true).map { |line| line[/\[DLL\] (.*)/, 1].sub(/[\d.]+ ms/, "T") }
    assert_equal ["InitChildrenMap: T (definitions=1)"] * 2 +
                 ["InvalidateLayerCache: pid=5", "InvalidateDefinition: pid=6",
                  "InvalidateGeometryCache: pid=7 erased=0 (cached=0)",
                  "UpdateCacheInfo: materials 0->0, instances 0->0", "ClearGeometryCache (cached=0)"], lines
  end
end

require "minitest/autorun"
