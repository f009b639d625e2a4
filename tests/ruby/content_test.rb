# What materials, textures, images and lights become, value for value.

require_relative "helper"
require "modelhost"

class ContentTest < LinkTest
  SQUARE = [[0, 0, 0], [10, 0, 0], [10, 10, 0], [0, 10, 0]].freeze
  D = "corvane_II"

  def setup
    super
    @model = ModelHost::Model.new
    @height = 0
  end

  def teardown
    super
    @model.close
  end

  def export(pbr: false)
    start
    link.do_import(@model.handle, "a.skp", false, pbr)
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].inspect
  end

  # Each on a height of its own.
  def square
    @height += 1
    @model.entities.add_face(SQUARE.map { |x, y, _| [x, y, @height] })
  end

  def paint(name, attributes = {})
    material = @model.materials.add(name)
    yield material if block_given?
    attributes.each { |key, value| material.set_attribute(D, key, value) }
    square.material = material
    material
  end

  # Fields of every material sent, by name; a name with several has a list of them.
  def materials
    commands.select { |line| line["name"].start_with?("Append") && line["name"].end_with?("Material") }
            .to_h { |line| [line["fields"]["name"], line["fields"].merge("bytes" => [line["bytes"]].pack("H*"))] }
  end

  def rounded(values) = values.map { |v| v.is_a?(Float) ? v.round(5) : v }

  # Attributes (and opacity), and the fields that they lead to.
  CLASSIC = {
    "none" => [{}, nil, { refraction: 0.0, lightPower: 0.0, materialType: "Default", opacity: 1.0, diffuse: 1.0 }],
    "opaque at 0.995" => [{}, 0.995, { opacity: 1.0 }],
    "opaque at 0.99" => [{}, 0.99, { opacity: 1.0 }],
    "not at 0.985" => [{}, 0.985, { opacity: 0.985 }],
    "other key" => [{ "x" => 1 }, nil, { refraction: 1.0, lightPower: 0.0 }],
    "refraction 0.01" => [{ "refraction" => 0.01 }, nil, { refraction: 1.0 }],
    "refraction 0.02" => [{ "refraction" => 0.02 }, nil, { refraction: 0.02 }],
    "reflection" => [{ "reflection" => 0.5, "reflection_blur" => true, "refraction_blur" => true }, nil,
                     { reflection: 0.5, specular: 0.5, reflectionBlur: true, refractionBlur: true }],
    "diffuse and bump" => [{ "diffuse" => 0.25, "bump_depth" => 1.5 }, nil, { diffuse: 0.25, bumpDepth: 1.5 }],
    "wrong types" => [{ "diffuse" => 1, "reflection" => "0.5", "reflection_blur" => 1, "bump_depth" => { float: 0.5 }, "light_power" => 50.0, "hidden" => "yes", "material_type" => 3 },
                      nil, { diffuse: 1.0, reflection: 0.0, reflectionBlur: false, bumpDepth: 0.0, lightPower: 0.0, hidden: false, materialType: "Default" }],
    "power" => [{ "light_power" => 50 }, nil, { lightPower: 5.0 }],
    "high power" => [{ "light_power" => 50, "light_power_high_intensity" => true }, nil, { lightPower: 500.0 }],
    "power as short" => [{ "light_power" => { short: 50 } }, nil, { lightPower: 0.0 }],
    "hidden" => [{ "hidden" => true }, 0.5, { hidden: true, opacity: 0.0, refraction: 1.0, diffuse: 1.0 }],
    "hidden as emitter" => [{ "hidden" => false, "hidden_lem" => true }, nil, { hidden: true, opacity: 0.0 }],
    "type" => [{ "material_type" => "Metallic" }, nil, { materialType: "Metallic" }]
  }.freeze

  def test_classic_materials
    CLASSIC.each { |name, (attributes, opacity)| paint(name, attributes) { |m| m.alpha = opacity if opacity } }
    export
    CLASSIC.each do |name, (_, _, wanted)|
      found = materials[name].slice(*wanted.keys.map(&:to_s))
      assert_equal rounded(wanted.values), rounded(found.values), "#{name}: #{found}"
    end
  end

  PBR = {
    "opacity 0.995" => [{}, ->(m) { m.alpha = 0.995 }, { transparency: 0.0 }],
    "opacity 0.9" => [{}, ->(m) { m.alpha = 0.9 }, { transparency: 0.1 }],
    "hidden" => [{ "hidden" => true }, ->(_) {}, { transparency: 1.0, hidden: true, refraction: 1.0 }],
    "by type" => [{ "material_type" => "Metallic" }, ->(m) { m.metallic = nil; m.roughness = 0.2 }, { metallic: 1.0, roughness: 0.2 }],
    "lower case" => [{ "material_type" => "metallic" }, ->(m) { m.roughness = 0.2 }, { metallic: 0.0 }],
    "blur" => [{ "reflection_blur" => true }, ->(m) { m.metallic = 0.7 }, { metallic: 0.7, roughness: 0.3 }],
    "scale" => [{}, ->(m) { m.normal_scale = 0.4 }, { normalScale: 0.4, normalTexture: nil }]
  }.freeze

  def test_metallic_roughness_materials
    PBR.each do |name, (attributes, set)|
      paint(name, attributes) do |m|
        m.metallic = 0.0
        set.call(m)
        m.workflow = :pbr if m.respond_to?(:workflow=)
      end
    end
    paint("classic")
    export(pbr: true)
    PBR.each do |name, (_, _, wanted)|
      found = materials[name].slice(*wanted.keys.map(&:to_s))
      assert_equal rounded(wanted.values), rounded(found.values), "#{name}: #{found}"
    end
    assert_includes materials["classic"], "opacity"
    # Without the flag all of them are classic.
    export
    assert(materials.values.all? { |fields| fields.key?("opacity") })
  end

  RGB = { pixels: "\x01\x02\x03\x04\x05\x06".b, width: 2, height: 1, bits: 24, size: [5, 5] }.freeze
  RGBA = { pixels: "\x01\x02\x03\x40\x05\x06\x07\x80".b, width: 2, height: 1, bits: 32, size: [5, 5] }.freeze

  def pixels(name)
    offset = materials[name]["bytes"].unpack1("@104Q<")
    materials[name]["bytes"].byteslice(offset..).bytes
  end

  def test_textures_of_every_depth
    paint("24") { |m| m.texture = RGB }
    paint("32 opaque") { |m| m.texture = RGBA.merge(use_alpha: false) }
    paint("32 alpha") { |m| m.texture = RGBA.merge(use_alpha: true) }
    paint("8") { |m| m.texture = { pixels: "\x07\x09".b, width: 2, height: 1, bits: 8 } }
    paint("colorized") { |m| m.texture = RGBA.merge(use_alpha: true); m.colorize_deltas = [0, 0, 0.5] }
    export
    assert_equal [1, 2, 3, 255, 4, 5, 6, 255], pixels("24")
    assert_equal [1, 2, 3, 255, 5, 6, 7, 255], pixels("32 opaque")
    assert_equal RGBA[:pixels].bytes, pixels("32 alpha")
    assert_equal [2, 1], materials["8"]["texture"] && materials["8"]["bytes"].unpack("@80Q<Q<")
    assert_equal [0x40, 0x80], pixels("colorized").values_at(3, 7), "alpha is the plain picture's"
    refute_equal [1, 2, 3], pixels("colorized").first(3)
    names = materials.values.map { |m| m["textureName"] }.reject(&:nil?).reject(&:empty?)
    assert_equal 5, names.uniq.size
    names.each { |text| assert_match(/\A\h{8}-\h{4}-4\h{3}-[89ab]\h{3}-\h{12}\z/, text) }
  end

  # A material without a texture id on the faces that show it has no texture; with a distorted mapping
  # beside the plain one it is two.
  def test_one_material_with_two_texture_ids
    material = paint("Poster") { |m| m.texture = RGB }
    distorted = square
    corners = SQUARE.map { |x, y, _| [x, y, @height] }
    distorted.position_material(material, corners.zip([[0, 0], [1, 0], [1, 1], [0.3, 0.9]]).flatten(1))
    export
    sent = commands.select { |line| line["name"] == "AppendMaterial" && line["fields"]["name"] == "Poster" }.map { |line| line["fields"] }
    assert_equal 2, sent.size
    assert_equal [material.persistent_id & 0xFFFFFFFF], sent.map { |f| f["key"] & 0xFFFFFFFF }.uniq
    assert_equal sent.map { |f| f["key"] >> 32 }.sort, sent.sort_by { |f| f["index"] }.map { |f| f["key"] >> 32 }
    assert_equal [2, 3], sent.map { |f| f["index"] }.sort
  end

  def test_images_share_the_picture_of_their_definition
    picture = Dir.glob("/usr/share/assimp/models/**/*.png").min
    first = @model.entities.add_image(picture, [0, 0, 0], 20)
    group = @model.entities.add_group
    inside = group.entities.add_image(picture, [0, 0, 0], 20)
    group.transformation = ModelHost::Transformation.translation([0, 0, 9])
    inside.transformation = ModelHost::Transformation.scaling(1, 1, 1)
    export
    images = materials.values.select { |m| m["name"].end_with?(".png") }
    keys = [first, inside].map { |image| image.definition.persistent_id }.uniq
    assert_equal keys.size, commands.count { |l| l["name"] == "AppendMaterial" && l["fields"]["name"].end_with?(".png") }
    assert(images.all? { |m| m["texture"] })
    quads = commands.select { |l| l["name"] == "AppendMesh" }.map { |l| l["fields"].values_at("vertexCount", "triangleCount") }
    assert_equal [[4, 2]] * 2, quads
  end

  # Pixels that the host fails to give are none, rather than black or see-through ones; what was baked
  # into a file leaves none behind.
  def test_pixels_that_cannot_be_read
    { "24" => RGB, "32" => RGBA.merge(use_alpha: true), "padded" => { pixels: "\x01".b * 9, width: 3, height: 1, bits: 24 } }
      .each { |name, texture| paint(name) { |m| m.texture = texture } }
    paint("colorized") { |m| m.texture = RGBA.merge(use_alpha: true); m.colorize_deltas = [0, 0, 0.5] }
    corners = SQUARE.map { |x, y, _| [x, y, 90] }
    twisted = @model.materials.add("twisted")
    twisted.texture = RGB
    @model.entities.add_face(corners).position_material(twisted, corners.zip([[0, 0], [1, 0], [1, 1], [0.3, 0.9]]).flatten(1))
    @model.entities.add_image(Dir.glob("/usr/share/assimp/models/**/*.png").min, [0, 0, 0], 20)
    before = Dir.glob(File.join(Dir.tmpdir, "cqlx_tw_*"))
    ModelHost.fail_call("SUImageRepGetData", 1, 6, true)
    export
    ModelHost.reset_modes
    sizes = materials.transform_values { |fields| fields["bytes"].unpack("@80Q<Q<Q<") }
    assert_equal [[0, 0, 0]], sizes.values.uniq, sizes.inspect
    assert_empty %w[24 32 padded colorized twisted] - sizes.keys
    refute sizes.keys.any? { |name| name.end_with?(".png") }, "an image without pixels is not sent"
    assert_equal before, Dir.glob(File.join(Dir.tmpdir, "cqlx_tw_*"))
  end

  def lamp(kind, definition: {}, entities: @model.entities, at: [0, 0, 0], **attributes)
    lamp = @model.definitions.add("Lamp")
    lamp.set_attribute(D, "light-type", kind)
    lamp.entities.add_face([-2, -2, 1], [4, -2, 1], [4, 2, 1], [-2, 2, 1])
    instance = entities.add_instance(lamp, ModelHost::Transformation.translation(at))
    attributes.each { |key, value| instance.set_attribute(D, key.to_s.tr("_", "-"), value) }
    instance
  end

  def lights = commands.select { |l| l["name"].end_with?("Light") }.map { |l| [l["name"], *l["fields"].values_at("color", "position").map { |v| rounded(v) }] }

  def test_lights
    lamp("point", at: [10, 20, 30])
    lamp("point", light_power: 3, light_color: { color: [255, 128, 0, 255] })
    lamp("point", light_power: { float: 2.5 })
    lamp("point", light_power: "9")
    lamp("Point")
    lamp("disc")
    lamp("")
    spot = lamp("softspot", beam_angle: 0.2, beam_angle_wide: { float: 0.6 })
    spot.transformation = ModelHost::Transformation.scaling(2)
    export
    assert_equal [["AppendOmniLight", [1.0, 1.0, 1.0], [11.0, 20.0, 31.0]],
                  ["AppendOmniLight", [3.0, 1.50588, 0.0], [1.0, 0.0, 1.0]],
                  ["AppendOmniLight", [2.5, 2.5, 2.5], [1.0, 0.0, 1.0]],
                  ["AppendOmniLight", [1.0, 1.0, 1.0], [1.0, 0.0, 1.0]],
                  ["AppendSpotLight", [1.0, 1.0, 1.0], [2.0, 0.0, 2.0]]], lights
    fields = commands.find { |l| l["name"] == "AppendSpotLight" }["fields"]
    assert_equal [0.0, 0.0, -2.0], fields["direction"].map { |v| v + 0.0 }
    assert_equal [0.2, 0.7854], rounded(fields.values_at("beamAngle", "wideBeamAngle"))
    # Neither a light nor geometry with another kind; plain geometry with an empty one.
    assert_equal 1, commands.count { |l| l["name"] == "AppendMesh" }
  end

  def test_lights_in_lights_groups_and_hidden_places
    outer = lamp("point", at: [0, 0, 100])
    lamp("point", entities: outer.definition.entities, at: [0, 0, 10])
    dark = @model.layers.add("Dark")
    dark.visible = false
    group = @model.entities.add_group
    group.layer = dark
    lamp("point", entities: group.entities, at: [1, 0, 0])
    lamp("point", at: [2, 0, 0]).layer = dark
    lamp("point", at: [3, 0, 0]).hidden = true
    shown = @model.entities.add_group
    lamp("softspot", entities: shown.entities, at: [500, 0, 0])
    export
    # The outer one's box holds the inner one.
    assert_equal [106.0, 111.0, 1.0], lights.map { |_, _, position| position[2] }
    assert_equal 501.0, lights.last[2][0]
  end

  # A component that always faces the camera is sent once for each way to it, and never cached.
  def test_camera_facing_components
    tree = @model.definitions.add("Tree")
    tree.behavior.always_face_camera = true
    tree.entities.add_face([0, 0, 0], [5, 0, 0], [5, 0, 9])
    grove = @model.definitions.add("Grove")
    grove.entities.add_instance(tree)
    grove.entities.add_face(SQUARE)
    2.times { |i| @model.entities.add_instance(grove, ModelHost::Transformation.translation([i * 50, 0, 0])) }
    direct = @model.entities.add_instance(tree, ModelHost::Transformation.translation([0, 99, 0]))
    export
    meshes = commands.select { |l| l["name"] == "AppendMesh" }.map { |l| l["fields"] }
    facing = meshes.select { |m| m["pass"] == 1 }
    assert_equal [tree.persistent_id | (1 << 63)], facing.map { |m| m["meshId"] }
    placed = commands.select { |l| l["name"] == "InstanciateMesh" && l["fields"]["meshId"] >> 63 == 1 }.map { |l| l["fields"] }
    keys = (facing + placed).map { |m| m["cacheKey"] }
    assert_equal 3, keys.uniq.size
    assert_equal [0, 1, 1], keys.map { |key| key >> 63 }.sort
    assert_includes keys, direct.persistent_id
  end
end

require "minitest/autorun"
