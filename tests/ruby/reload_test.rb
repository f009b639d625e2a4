# Reloads: after an edit and the calls that a plug-in makes for it, the renderer's scene is that of a
# fresh export into a fresh renderer, value for value, and only what had to be sent was sent.

require_relative "helper"
require "modelhost"

SAMPLE = File.expand_path("../../examples/house.json", __dir__)

PICTURE = Dir.glob("/usr/share/assimp/models/**/*.png").min

class ReloadTest < LinkTest
  WATCHDOG_SECONDS = 240

  def setup
    super
    ENV["KVAPP_SCENE_JSON"] = "1"
    @model = ModelHost.load(SAMPLE)
  end

  def teardown
    super
    @model.close
  end

  def start(...)
    @exports = 0
    super
  end

  # The block runs before the caches become what the export used.
  def export(reload)
    @exports += 1
    link.prepare_renderer(reload)
    link.do_import(@model.handle, SAMPLE, reload, true)
    link.init_children_map(@model.handle)
    yield if block_given?
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

  # The scenes after the next reload, and after an export of everything to the same renderer.
  def reloaded_and_fresh
    export(true)
    link.clear_reload_cache
    link.clear_model_data_for_reload
    export(true)
    # Answered when what was sent before is done, files and all.
    link.do_rendering([1, 0, 0], [0, 0, 0], [0, 0, 1], 35, [0, 0, 0])
    [scene(@exports - 1), scene(@exports)]
  end

  # Changes that are seen and reported at once. The scan of the export under way may have come before
  # or come after, and what it sends as well.
  CHANGES = {
    "a material's colour" => ->(t) { t.material("Door paint").color = [200, 30, 30]; t.repaint(t.material("Door paint")) },
    "a material removed" => lambda do |t|
      id = t.id32(t.material("Brick"))
      t.model.materials.remove(t.material("Brick"))
      t.link.invalidate_material_cache(id)
    end,
    "a definition edited" => EDITS["a definition edited"].last,
    "a group edited" => lambda do |t|
      t.group("Porch").entities.add_face([0, 0, 300], [50, 0, 300], [50, 50, 300])
      t.link.invalidate_definition(t.group("Porch").definition.persistent_id)
    end,
    "a face at the root" => lambda do |t|
      t.model.entities.add_face([0, 0, 900], [50, 0, 900], [50, 50, 900])
      t.link.invalidate_geometry_cache(0)
    end,
    "a layer hidden" => EDITS["a layer hidden"].last,
    # On which lies what owners have inside.
    "a layer of what is nested" => lambda do |t|
      layer = t.model.layers["Openings"]
      layer.visible = false
      t.link.invalidate_layer(layer.persistent_id)
    end,
    "a layer removed" => lambda do |t|
      id = t.model.layers["Draft"].persistent_id
      t.model.layers.remove(t.model.layers["Draft"])
      t.link.invalidate_layer(id)
    end,
    "an instance moved" => lambda do |t|
      door = t.instance("front door")
      door.transform!(t.moved([0, -40, 0]))
      t.link.update_instance_transform(door.persistent_id, door.transformation.to_a)
    end
  }.freeze

  # Early: with the export's first text, before it scans the model; late: with the text of the lights,
  # when all meshes have been made; after: between the export and the promotion of the caches.
  def test_what_is_reported_around_an_export_counts
    { "early" => 1, "late" => 2, "after" => nil }.each do |moment, text|
      @model.close
      @model = ModelHost.load(SAMPLE)
      pending = nil
      nth = 0
      answer = lambda do
        nth += 1
        pending.call(self) if pending && nth == text
        pending = nil if nth == text
        nil
      end
      start({ command: "SetMessage", repeat: "forever", request: 102 }, receiver: Receiver.new(on_reload: answer))
      export(false)
      CHANGES.each do |what, change|
        pending, nth = change, 0
        export(true) { change.call(self) unless text }
        assert_nil pending, "#{moment}: the callback did not come" if text
        reloaded, fresh = reloaded_and_fresh
        assert_same_scene fresh, reloaded, "#{what}, #{moment}"
      end
      link.quit
      assert_equal 0, report["faultCount"], report["faults"].inspect
    end
  end

  # The walk has read all places by the time that the first mesh is on its way; the others follow.
  def test_a_move_that_the_export_overtakes
    @model.close
    @model = ModelHost::Model.new
    parts = Array.new(3) { |i| @model.definitions.add("Part #{i}").tap { |part| part.entities.add_face([0, 0, 0], [10, 0, 0], [10, 10, 0]) } }
    placed = parts.map { |part| @model.entities.add_instance(part) }
    move = lambda do
      placed.each_with_index do |instance, i|
        instance.transformation = moved([7, i, 0])
        link.update_instance_transform(instance.persistent_id, instance.transformation.to_a)
      end
      nil
    end
    start({ command: "AppendMesh", request: 102 }, receiver: Receiver.new(on_reload: move))
    export(false)
    reloaded, fresh = reloaded_and_fresh
    assert_same_scene fresh, reloaded
  end

  # What lies loose at the root is one mesh, which its images' layers and pictures reach too.
  def test_changes_of_what_lies_loose_at_the_root
    layers = %w[Image Face].map { |name| @model.layers.add(name) }
    image = @model.entities.add_image(PICTURE, [0, 0, 900], 48)
    face = @model.entities.add_face([0, 0, 950], [50, 0, 950], [50, 50, 950])
    face.material = @model.materials.add("Loose")
    [image, face].zip(layers) { |entity, layer| entity.layer = layer }
    start
    export(false)
    layers.each do |layer|
      2.times do
        # The second time what depends on the layer is known from an export that sent nothing of it.
        export(true)
        layer.visible = !layer.visible?
        link.invalidate_layer(layer.persistent_id)
        export(true)
      end
    end
    [image.definition, face.material].each { |shown| repaint(shown); export(true) }
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].inspect
    vertices = (1..report["exports"].size).map { |n| report["exports"][n - 1]["verticesSent"] }
    roots = vertices.map { |count| count - vertices[1] }
    assert_equal [0] * 5, roots.values_at(1, 3, 5, 7, 1), roots.inspect
    all = roots[4]
    assert_equal [all - 4, all, all - 3, all, all, all], roots.values_at(2, 4, 6, 8, 9, 10), roots.inspect
  end

  def distorted(entities, material, z, shift)
    square = [[0, 0, z], [10, 0, z], [10, 10, z], [0, 10, z]]
    face = entities.add_face(square)
    face.position_material(material, square.zip([[0, 0], [1, 0], [1, 1], [shift, 0.9]]).flatten(1))
    face
  end

  # Texture ids are given anew by each export: a distorted face that is walked earlier takes the id of
  # the next, and a plain one's.
  def test_distorted_textures_keep_to_their_faces
    @model.close
    @model = ModelHost::Model.new
    brick = @model.materials.add("Brick")
    brick.texture = { pixels: Random.new(1).bytes(3 * 8 * 8), width: 8, height: 8, bits: 24, size: [10, 10] }
    plain = @model.entities.add_group
    plain.entities.add_face([0, 0, 5], [10, 0, 5], [10, 10, 5]).material = brick
    3.times { |i| distorted(@model.entities.add_group.entities, brick, i, 0.2 + i / 10.0) }
    first = distorted(@model.entities.add_group.entities, brick, 9, 0.7)
    start
    export(false)
    edits = {
      "one before all others" => lambda do
        part = @model.definitions.add("Part")
        distorted(part.entities, brick, 20, 0.6)
        @model.entities.add_instance(part)
      end,
      "one laid anew" => lambda do
        points = first.points
        first.position_material(brick, points.zip([[0, 0], [1, 0], [1, 1], [0.1, 0.8]]).flatten(1))
        link.invalidate_definition(@model.entities.groups.last.definition.persistent_id)
      end,
      "one fewer" => -> { @model.entities.groups[1].erase! },
      "its pixels" => lambda do
        brick.texture = { pixels: Random.new(2).bytes(3 * 8 * 8), width: 8, height: 8, bits: 24, size: [10, 10] }
        repaint(brick)
      end
    }
    reloads = edits.map do |what, edit|
      edit.call
      reloaded, fresh = reloaded_and_fresh
      assert_same_scene fresh, reloaded, what
      export(true)
      @exports
    end
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].inspect
    reloads.each { |number| refute_includes sent_by(number), "AppendMaterial", "nothing changed" }
  end

  # Whether the tests of that name pass in a process of their own, which reads its switches anew.
  def passes_with?(switches, pattern)
    system(switches, RbConfig.ruby, "-W", "-E", "UTF-8", __FILE__, "-n", pattern, out: File::NULL)
  end

  def test_reloads_after_separate_walks
    skip "this is that process" if ENV["QUELLIX_UNIFIED_SCAN"]
    assert passes_with?({ "QUELLIX_UNIFIED_SCAN" => "0" }, "/reported|loose|distorted|row/")
  end

  # The walk waits for its first mesh while the callback adds a group, which it finds and the scan has
  # not seen: its material is not known there.
  def test_what_is_added_behind_the_scan_is_sent_again
    waiting = { "QUELLIX_IPC_PIPELINE" => "0", "QUELLIX_GEO_PIPELINE" => "0", "QUELLIX_GEO_PARALLEL" => "0" }
    return assert passes_with?(waiting, __method__.to_s) unless ENV["QUELLIX_IPC_PIPELINE"]
    @model.close
    @model = ModelHost::Model.new
    part = @model.definitions.add("Part")
    part.entities.add_face([0, 0, 0], [10, 0, 0], [10, 10, 0])
    @model.entities.add_instance(part)
    add = lambda do
      @model.entities.add_group.entities.add_face([0, 0, 5], [10, 0, 5], [10, 10, 5]).material = @model.materials.add("Fresh")
    end
    start({ command: "AppendMesh", request: 102 }, receiver: Receiver.new(on_reload: add))
    export(false)
    assert_equal 1, @model.entities.groups.size, "the callback came in time"
    reloaded, fresh = reloaded_and_fresh
    assert_same_scene fresh, reloaded
    assert_equal 2, scene(1)["placements"].size, "the walk found it"
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

  # The lines of the cache methods in the timing log of a process of its own, which tell what they did.
  def logged(script, environment = {})
    log = File.join(@folder, "log")
    script = %(require "modelhost"; require "Quellix"; link = Quellix_SUInterface.new; model = ModelHost::Model.new\n#{script})
    command = [ENV.fetch("RUBY", RbConfig.ruby), *$LOAD_PATH.first(2).map { |path| "-I#{path}" }, "-e", script]
    assert system({ "QUELLIX_PERF_LOG_FILE" => log, **environment }, *command)
    lines = File.readlines(log, chomp: true).map { |line| line[/\[DLL\] (.*)/, 1].sub(/[\d.]+ ms/, "T") }
    lines.grep(/Cache|ChildrenMap|Invalidate/)
  end

  def test_the_log_of_the_cache_methods
    lines = logged(<<~RUBY)
      model.entities.add_group
      2.times { link.init_children_map(model.handle) }
      link.invalidate_layer(5); link.invalidate_definition(6); link.invalidate_geometry_cache(7)
      link.update_cache_info; link.clear_reload_cache; link.invalidate_material_cache(8)
    RUBY
    assert_equal ["InitChildrenMap: T (definitions=1)"] * 2 +
                 ["InvalidateLayerCache: pid=5", "InvalidateDefinition: pid=6",
                  "InvalidateGeometryCache: pid=7 erased=0 (cached=0)",
                  "UpdateCacheInfo: materials 0->0, instances 0->0", "ClearGeometryCache (cached=0)"], lines
  end

  # What a callback asks for while an export runs is done when the export has ended, once, in order.
  def test_the_cache_methods_in_a_callback
    steps = File.join(@folder, "callback.json")
    File.write(steps, JSON.generate([{ command: "SetMessage", request: 102 }]))
    lines = logged(<<~RUBY, "KVAPP_SCRIPT" => steps)
      group = model.entities.add_group
      group.entities.add_face([0, 0, 0], [9, 0, 0], [9, 9, 0])
      receiver = Object.new
      receiver.define_singleton_method(:on_reload) do
        link.invalidate_geometry_cache(0)
        link.init_children_map(model.handle)
        link.update_cache_info
        link.invalidate_definition(7)
      end
      link.init_renderer(receiver, #{KVAPP_DIR.inspect})
      link.do_import(model.handle, "a.skp", false, false)
      link.update_cache_info
      link.quit
    RUBY
    assert_equal ["ClearGeometryCache (cached=0)",
                  "InvalidateGeometryCache: pid=0 erased=1 (cached=1)",
                  "InitChildrenMap: skipped (built by unified scan, definitions=1)",
                  "UpdateCacheInfo: materials 2->2, instances 1->1", "InvalidateDefinition: pid=7",
                  "UpdateCacheInfo: materials 2->0, instances 1->0"], lines
  end
end

require "minitest/autorun"
