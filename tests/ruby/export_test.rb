# Whole exports of small models: what arrives, in which order, and what happens on the way.

require_relative "helper"
require "modelhost"

SAMPLE = File.expand_path("../../examples/house.json", __dir__)

class ExportTest < LinkTest
  SQUARE = [[0, 0, 0], [10, 0, 0], [10, 10, 0], [0, 10, 0]].freeze

  def setup
    super
    @model = ModelHost::Model.new
    ENV["KVAPP_SCENE_JSON"] = "1"
  end

  def teardown
    super
    @model.close
  end

  def export(model = @model, path = "a.skp", reload: false, pbr: false)
    link.do_import(model.handle, path, reload, pbr)
  end

  def finish
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].inspect
    report
  end

  def of(name) = commands.select { |line| line["name"] == name }

  # The vertices of a mesh as ten floats each, and its triangles as five words each.
  def mesh(line)
    bytes = [line["bytes"]].pack("H*")
    vertices, at, triangles, triangle_at = bytes.unpack("@80L<4")
    [bytes.unpack("@#{at}e#{vertices * 10}").each_slice(10).to_a,
     bytes.unpack("@#{triangle_at}L<#{triangles * 5}").each_slice(5).to_a]
  end

  def matrix(line) = [line["bytes"]].pack("H*").unpack("@16e16")
  def mesh_id(line) = [line["bytes"]].pack("H*").unpack1("@8Q<")

  def test_the_order_of_an_export
    red = @model.materials.add("Red")
    @model.entities.add_face(SQUARE).material = red
    start
    assert_nil export(@model, "C:/x/Haus ö.skp")
    finish
    names = command_names
    assert_equal %w[SetModelName SetMessage SetProgress AppendMaterial AppendMaterial], names.first(5)
    assert_equal %w[SetMessage SetMessage SetProgress], names.last(3)
    assert_equal ["Haus ö", "Exporting materials and surfaces...", "Exporting lights...", ""],
                 (of("SetModelName") + of("SetMessage")).map { |line| line["fields"]["text"] }
    assert_equal [[0, "DefaultFaceFrontColor"], [1, "DefaultFaceBackColor"], [2, "Red"]],
                 of("AppendMaterial").map { |line| line["fields"].values_at("index", "name") }
    assert_equal 1, of("AppendMesh").size
  end

  def test_one_face_value_for_value
    red = @model.materials.add("Red")
    red.color = [255, 51, 0]
    face = @model.entities.add_face(SQUARE.map { |x, y, z| [x, y, z + 5] })
    face.material = red
    start
    export
    finish
    vertices, triangles = mesh(of("AppendMesh").first)
    normal = [0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0]
    assert_equal [[0.0, 0.0, 5.0], [10.0, 0.0, 5.0], [10.0, 10.0, 5.0], [0.0, 10.0, 5.0]].map { |p| p + normal }, vertices
    assert_equal [[0, 1, 2, 2, 1], [0, 2, 3, 2, 1]], triangles
    material = [of("AppendMaterial").last["bytes"]].pack("H*")
    ambient_and_diffuse = material.unpack("@8e6").map { |v| v.round(6) }
    assert_equal [0.3, 0.06, 0.0, 1.0, 0.2, 0.0], ambient_and_diffuse
    assert_equal [0.5, 0.5, 0.5, 1.0, 0.0, 0.0], material.unpack("@32e6")
    assert_equal [0.0, 1.0], material.unpack("@60ex4e") # no refraction without parameters, opaque
  end

  # A definition is one mesh in its own space with what is nested in it; its placements follow.
  def test_nesting_and_placements
    part = @model.definitions.add("Part")
    part.entities.add_face(SQUARE)
    inner = part.entities.add_group
    inner.entities.add_face(SQUARE)
    inner.transformation = ModelHost::Transformation.translation([0, 0, 7])
    first = @model.entities.add_instance(part, ModelHost::Transformation.translation([100, 0, 0]))
    @model.entities.add_instance(part, ModelHost::Transformation.scaling(2))
    start
    export
    finish
    sent, placed = of("AppendMesh"), of("InstanciateMesh")
    assert_equal [1, 1], [sent.size, placed.size]
    assert_equal [part.persistent_id] * 2, [mesh_id(sent[0]), mesh_id(placed[0])]
    assert_equal [100.0, 0.0, 0.0, 1.0], matrix(sent[0]).last(4)
    assert_equal 2.0, matrix(placed[0]).first
    assert_equal first.persistent_id, [sent[0]["bytes"]].pack("H*").unpack1("@104Q<")
    vertices, = mesh(sent[0])
    assert_equal [0.0, 7.0], vertices.map { |v| v[2] }.uniq.sort
  end

  def test_hidden_things_send_no_geometry
    layers = %w[Shown Hidden Folded].to_h { |name| [name, @model.layers.add(name)] }
    layers["Hidden"].visible = false
    folder = @model.layers.add_folder("Outer")
    layers["Folded"].folder = folder.add_folder("Inner")
    folder.visible = false
    @model.layers.add("Empty")
    [[layers["Shown"], false], [layers["Hidden"], false], [layers["Folded"], false], [layers["Shown"], true]].each_with_index do |(layer, hidden), i|
      group = @model.entities.add_group
      group.entities.add_face(SQUARE.map { |x, y, z| [x, y, z + i] })
      group.layer = layer
      group.hidden = hidden
    end
    nested = @model.entities.add_group
    deeper = nested.entities.add_group
    deeper.entities.add_face(SQUARE)
    deeper.layer = layers["Hidden"]
    nested.entities.add_face(SQUARE.map { |x, y, z| [x, y, z + 50] }).layer = layers["Hidden"]
    start
    export
    finish
    assert_equal [[0.0]], of("AppendMesh").map { |line| mesh(line).first.map { |v| v[2] }.uniq }
  end

  def test_materials_are_inherited_and_numbered_by_their_ids
    colors = %w[A B C].map { |name| @model.materials.add(name) }
    outer = @model.entities.add_group
    outer.material = colors[2]
    outer.entities.add_face(SQUARE)
    painted = outer.entities.add_face(SQUARE.map { |x, y, z| [x, y, z + 1] })
    painted.material = colors[0]
    middle = outer.entities.add_group
    middle.material = colors[1]
    middle.entities.add_face(SQUARE.map { |x, y, z| [x, y, z + 2] })
    @model.entities.add_face(SQUARE)
    start
    export
    finish
    by_height = of("AppendMesh").flat_map do |line|
      vertices, triangles = mesh(line)
      triangles.map { |t| [mesh_id(line).zero?, vertices[t[0]][2], t[3], t[4]] }
    end
    assert_equal [[true, 0.0, 0, 1], [false, 0.0, 4, 4], [false, 1.0, 2, 4], [false, 2.0, 3, 3]].sort_by(&:to_s), by_height.uniq.sort_by(&:to_s)
  end

  def test_names
    {"" => "Untitled", "/" => "Untitled", "/a/b/.skp" => ".skp", "家.skp" => "家"}.each do |path, name|
      start
      export(@model, path)
      finish
      assert_equal name, of("SetModelName").first["fields"]["text"]
    end
  end

  def test_only_true_is_a_reload
    @model.entities.add_face(SQUARE).material = metal = @model.materials.add("Metal")
    metal.metallic = 0.5
    flags = [true, 1, "true", nil]
    start
    flags.product(flags) do |reload, pbr|
      link.clear_reload_cache
      export(reload: reload, pbr: pbr)
    end
    finish
    seen = report["exports"].map do |part|
      sent = commands.select { |line| line["n"].between?(*part.values_at("firstCommand", "lastCommand")) }
      # Progress stays at 0 during a reload.
      [sent.none? { |line| line["fields"].fetch("progress", 0).positive? }, sent.any? { |line| line["name"] == "AppendPBRMaterial" }]
    end
    only_true = [true, false, false, false]
    assert_equal only_true.product(only_true), seen
  end

  # A model that is none gives an empty scene, and nothing worse.
  def test_handles_that_are_no_model
    gone = ModelHost::Model.new
    handle = gone.handle
    gone.close
    [0, 1, handle, 2**63].each do |bad|
      start
      assert_nil link.do_import(bad, "a.skp", false, false)
      link.quit
      assert_equal [0, 0], report.values_at("faultCount", "meshes"), bad
    end
  end

  def test_the_sample_arrives_whole
    model = ModelHost.load(SAMPLE)
    start
    export(model, SAMPLE, pbr: true)
    summary = finish
    # Nine definitions and groups that are seen, and what lies loose at the root.
    assert_equal [9, 24, 3], summary.values_at("meshes", "placements", "lights")
    assert_equal "House".downcase, summary["modelName"]
    names = of("AppendMaterial").map { |line| line["fields"]["name"] }
    assert_includes names, "絵.png"
    assert_equal ["Copper"], of("AppendPBRMaterial").map { |line| line["fields"]["name"] }
    assert_equal 2, names.count("Poster"), "seen with its own mapping and with a distorted one"
  ensure
    model&.close
  end

  def worker_asks(steps, answers = {})
    threads = []
    receiver = Receiver.new(answers.merge(on_request_camera_info: lambda do
      threads << Thread.current
      [0.0] * 13
    end))
    model = ModelHost.load(SAMPLE)
    start(*steps, receiver: receiver)
    export(model)
    model.close
    [threads, receiver]
  end

  # The geometry worker's command cannot go on before Ruby has answered; Ruby runs on its own thread.
  def test_a_request_during_a_workers_command_is_answered_at_once
    threads, = worker_asks([{ command: "AppendMesh", nth: 3, request: 107 }])
    finish
    assert_equal [Thread.main], threads
    assert_operator requests.first["ms"], :<, 500
    assert_equal 9, report["meshes"]
  end

  def test_a_callback_that_raises_does_not_disturb_an_export
    text = stderr_of do
      worker_asks([{ command: "AppendMesh", nth: 2, request: 102 }], on_reload: -> { raise "no" })
    end
    finish
    assert_includes text, "on_reload raised RuntimeError: no"
    assert_equal 9, report["meshes"]
  end

  # What a callback changes while an export runs is not lost: the caches take it after the export.
  def test_changes_reported_during_an_export_count_after_it
    model = ModelHost.load(SAMPLE)
    pids = model.entities.instances.map(&:persistent_id)
    start({ command: "AppendMesh", nth: 2, request: 102 },
          receiver: Receiver.new(on_reload: -> { pids.each { |pid| link.invalidate_geometry_cache(pid) } }))
    export(model)
    link.update_cache_info
    before = of("AppendMesh").size
    export(model, reload: true)
    finish
    assert_operator of("AppendMesh").size, :>, before + 3
  ensure
    model&.close
  end

  def test_the_renderer_quits_or_dies_during_an_export
    [{ quit: true }, { crash: true }, { exit: 0 }, { hold_mutex: { event: "commandDone" } }].each do |ending|
      %w[AppendMaterial AppendMesh SetProgress].each do |command|
        _, receiver = worker_asks([{ command: command, nth: 4, **ending }])
        assert_equal false, link.is_alive
        assert_equal ending.key?(:quit) ? 1 : 0, receiver.calls.count([:on_renderer_quit])
        # The caches are empty again, so that the next renderer gets everything.
        ENV.delete("KVAPP_SCRIPT")
        model = ModelHost.load(SAMPLE)
        start
        export(model)
        finish
        model.close
        assert_equal 9, report["meshes"]
      end
    end
  end
end

require "minitest/autorun"
