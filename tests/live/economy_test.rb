# What each kind of edit costs on the wire, beside a fresh export of the same model: the table of
# docs/live-link.md. UPDATE=1 writes the table there instead of comparing it.

require_relative "../ruby/helper"
require "sketchup.rb"
$LOAD_PATH.unshift(ENV.fetch("PLUGIN_DIR"))
require "quellix_live"

class EconomyTest < LinkTest
  PAGE = File.expand_path("../../docs/live-link.md", __dir__)
  D = "corvane_II"
  COMPONENTS = 20
  COPIES = 5
  FACES = 12

  # Of the model: `@chairs` are the instances of one component, `@all` those of all, each of which holds a
  # bolt; `@inner` is a group in a group; `@paint` is what the chairs' faces wear.
  EDITS = {
    "an orbit" => -> { @model.active_view.camera = Sketchup::Camera.new([900, -900, 300], [0, 0, 0], Z_AXIS, true, 35.0) },
    "the date" => -> { @model.shadow_info["ShadowTime"] = Time.utc(2027, 3, 1, 9) },
    "a page added" => -> { @model.pages.add("Front") },
    "a top-level instance moved" => -> { @chairs[0].transform!(moved(7)) },
    "a hundred top-level instances moved" => -> { @model.entities.transform_entities(moved(3), @all) },
    "a top-level instance added" => -> { @model.entities.add_instance(@chairs[0].definition, moved(900)) },
    "a top-level instance erased" => -> { @chairs[2].erase! },
    "a top-level instance hidden" => -> { @chairs[3].hidden = true },
    "a top-level instance made unique" => -> { @chairs[4].make_unique },
    "a face of a component painted" => -> { faces(@chairs[0].definition)[0].material = @paint },
    "ten faces added in an operation" => lambda do
      @model.start_operation("Faces", true)
      10.times { |i| square(@chairs[0].definition.entities, i + 1) }
      @model.commit_operation
    end,
    "a bolt moved inside its component" => -> { @chairs[0].definition.entities.grep(Sketchup::ComponentInstance)[0].transform!(moved(2)) },
    "the bolt, which all components hold" => -> { faces(@bolt)[0].reverse! },
    "a group inside a group edited" => -> { square(@inner.entities, 3) },
    "a loose face at the root" => -> { square(@model.entities, 30) },
    "a material that one component wears" => -> { @paint.color = [1, 2, 3] },
    "a material that nothing wears" => -> { @model.materials["Spare"].color = [4, 5, 6] },
    "the default face colour" => -> { @model.rendering_options["FaceFrontColor"] = Sketchup::Color.new(9, 9, 9) },
    "a layer hidden that one instance is on" => -> { @model.layers["Furniture"].visible = false },
    "a top-level instance painted" => -> { @all.last.material = @paint },
    "a light's power" => -> { @lamp.set_attribute(D, "light-power", 5.0) },
    "undo" => -> { @chairs[0].transform!(moved(7)); Sketchup.undo }
  }.freeze

  def setup
    super
    Sketchup.file_new
    @model = Sketchup.active_model
    ENV["KVAPP_SCENE_JSON"] = "1"
    ENV["KVAPP_OUT"] = @out = File.join(@folder, "out")
    build
    @live = QuellixLive.start(@model, renderer: KVAPP_DIR)
  end

  def teardown
    @live&.stop
    super
  end

  def moved(x) = Geom::Transformation.translation(Geom::Vector3d.new(x, 0, 0))
  def square(entities, size) = entities.add_face([0, 0, size], [size, 0, size], [size, size, size], [0, size, size])
  def faces(definition) = definition.entities.grep(Sketchup::Face)

  def build
    @paint, *others = %w[Paint Oak Steel Spare].map { |name| @model.materials.add(name).tap { |m| m.color = [name.size * 20, 90, 90] } }
    @bolt = @model.definitions.add("Bolt")
    square(@bolt.entities, 1).material = others[1]
    layer = @model.layers.add("Furniture")
    instances = Array.new(COMPONENTS) do |c|
      part = @model.definitions.add("Chair #{c}")
      FACES.times { |i| square(part.entities, i + 2).material = c.zero? ? @paint : others[0] }
      part.entities.add_instance(@bolt, moved(1))
      Array.new(COPIES) { |i| @model.entities.add_instance(part, moved(c * 100 + i * 20)) }
    end
    @chairs = instances[0]
    @all = instances.flatten
    instances[1][0].layer = layer
    @inner = @model.entities.add_group.entities.add_group
    square(@inner.entities, 5)
    square(@model.entities, 20)
    lamp = @model.definitions.add("Lamp")
    lamp.set_attribute(D, "light-type", "point")
    square(lamp.entities, 1)
    @lamp = @model.entities.add_instance(lamp, moved(-50))
  end

  # What was sent since the block began. How many steps of progress are shown depends on time.
  def cost
    before = settled.size
    yield
    lines = settled.drop(before).reject { |line| line["name"] == "SetProgress" }
    count = ->(name) { lines.count { |line| line["name"] == name } }
    { exports: count["SetModelName"], materials: count["AppendMaterial"], meshes: count["AppendMesh"],
      bytes: lines.sum { |line| line["message"] } }
  end

  def table
    costs = EDITS.map do |name, edit|
      [name, cost do
        instance_exec(&edit)
        assert @live.sync, @live.status.to_s
        ModelHost.run_timers(0.12)
      end]
    end
    [["everything, as a fresh export", cost { @live.sync_all }], *costs]
  end

  def test_the_table
    rows = table.map { |name, cost| "| #{name} | #{cost.values.join(" | ")} |" }
    text = ["| edit | exports | materials | meshes | bytes |", "|---|---|---|---|---|", *rows, ""].join("\n")
    page = File.read(PAGE)
    place = /(?<=<!-- economy -->\n).*?(?=<!-- \/economy -->)/m
    return File.write(PAGE, page.sub(place, text)) if ENV["UPDATE"] == "1"
    assert_equal page[place], text, "UPDATE=1 ruby tests/live/economy_test.rb writes it"
    @live.stop
    assert_equal 0, report["faultCount"], report["faults"].inspect
  end
end

require "minitest/autorun"
