# Models that no sane modeller makes: the export ends, and the renderer finds no fault in it.

require_relative "../ruby/helper"
require_relative "machine"
require "modelhost"

class HostileTest < LinkTest
  WATCHDOG_SECONDS = 600
  GROUPS = Integer(ENV.fetch("EMPTY_GROUPS", "20000"))
  POINTS = Integer(ENV.fetch("FACE_POINTS", "20000"))
  SIDE = Integer(ENV.fetch("TEXTURE_SIDE", "4096"))
  SQUARE = [[0, 0, 0], [10, 0, 0], [10, 10, 0], [0, 10, 0]].freeze

  def setup
    super
    ENV.delete("KVAPP_BYTES")
    @model = ModelHost::Model.new
    @owned = ModelHost.owned_objects
  end

  def teardown
    ModelHost.reset_modes
    super
    @model.close
    assert_equal @owned, ModelHost.owned_objects
  end

  # Exports twice, the second time by reference where that can be, and returns the report.
  def export(what = nil, pbr: true)
    start
    link.do_import(@model.handle, "a.skp", false, pbr)
    link.update_cache_info
    link.do_import(@model.handle, "a.skp", true, pbr)
    link.quit
    assert_equal 0, report["faultCount"], "#{what}: #{report["faults"].inspect}"
    report
  end

  def renew
    @model.close
    @model = ModelHost::Model.new
  end

  # Groups in groups; what lies deeper than the bound is left out, everything above it arrives.
  def test_deep_nesting
    [500, 1500].each do |depth|
      renew
      entities = @model.entities
      depth.times do |i|
        entities.add_face(SQUARE.map { |x, y, _| [x + i, y, i] })
        entities = entities.add_group.entities
      end
      assert_equal 2 * [depth, 601].min, export(depth)["triangles"], depth
      link.init_children_map(@model.handle)
    end
  end

  def test_a_flood_of_empty_groups
    GROUPS.times { @model.entities.add_group }
    part = @model.definitions.add("Empty")
    1000.times { @model.entities.add_instance(part) }
    assert_equal [0, 0], export.values_at("meshes", "placements")
  end

  # Faces that the host would refuse as well are skipped by this test, not by the extension.
  def try_face(entities, points)
    entities.add_face(points)
  rescue StandardError
    nil
  end

  def test_points_that_are_no_places
    [Float::NAN, Float::INFINITY, -Float::INFINITY, 1e308, 1e39, 3e38, 1e-320].each do |value|
      renew
      group = @model.entities.add_group
      group.entities.add_face(SQUARE)
      try_face(group.entities, [[value, 0, 0], [10, 0, 5], [10, 10, 5]])
      try_face(group.entities, [[value, 0, 9], [value, 10, 9], [value, 10, 9 + value]])
      export(value)
    end
  end

  def test_transformations_of_every_kind
    odd = [[0, 1, 1], [-1, 1, 1], [0, 0, 0], [-1, -1, -1], [1e-30, 1, 1], [1e30, 1e30, 1e30]].map { |x, y, z| [x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1] }
    odd += [[Float::NAN] * 16, [Float::INFINITY] * 16]
    odd.each_with_index do |matrix, i|
      renew
      part = @model.definitions.add("Part")
      part.entities.add_face(SQUARE)
      inner = part.entities.add_group
      inner.entities.add_face(SQUARE)
      begin
        inner.transformation = ModelHost::Transformation.new(matrix)
        @model.entities.add_instance(part, ModelHost::Transformation.new(matrix))
      rescue StandardError
        next
      end
      export("matrix #{i}")
    end
  end

  def test_large_and_tiny_faces
    round = Array.new(POINTS) { |i| angle = i * 2 * Math::PI / POINTS; [1000 * Math.cos(angle), 1000 * Math.sin(angle), 0] }
    @model.entities.add_face(round)
    group = @model.entities.add_group
    try_face(group.entities, [[0, 0, 0], [1, 0, 0]])
    try_face(group.entities, [[0, 0, 0], [1, 0, 0], [2, 0, 0]])
    try_face(group.entities, [[0, 0, 0], [0, 0, 0], [0, 0, 0]])
    try_face(group.entities, [[0, 0, 1e-30], [1e-30, 0, 1e-30], [0, 1e-30, 1e-30]])
    try_face(group.entities, [[0, 0, 0], [9, 9, 0], [9, 0, 0], [0, 9, 0]])
    # Slivers without area are left out.
    assert_operator export["triangles"], :>, POINTS * 0.99
  end

  def test_textures_of_every_size
    [[1, 1], [1, SIDE], [SIDE, 1], [3, 5], [SIDE, SIDE]].each do |width, height|
      renew
      material = @model.materials.add("Texture")
      material.texture = { pixels: "\x10\x20\x30".b * (width * height), width: width, height: height, bits: 24, size: [4, 4] }
      @model.entities.add_face(SQUARE).material = material
      assert_equal 1, export([width, height])["textures"]
    end
  end

  # The host gives no pixels, no size, no name, an id of 0: one call of the export fails at a time.
  def test_calls_that_fail
    calls = %w[SUTextureGetImageRep SUImageRepGetPixelDimensions SUImageRepGetData SUImageRepGetDataSize SUImageRepConvertTo32BitsPerPixel
               SUTextureGetColorizedImageRep SUTextureWriterLoadEntity SUTextureWriterLoadFace SUTextureWriterWriteTexture SUTextureWriterCreate
               SUMaterialGetName SUMaterialGetTexture SUMaterialGetColor SUEntityGetPersistentID SUDrawingElementGetLayer
               SUComponentInstanceGetTransform SUGroupGetTransform SUComponentInstanceGetDefinition SUGroupGetDefinition
               SUComponentDefinitionGetEntities SUModelGetEntities SUModelGetLayers SUEntitiesGetFaces SUEntitiesGetNumFaces
               SUEntitiesGetGroups SUEntitiesGetInstances SUImageGetImageRep SUImageGetDimensions SUFaceGetOuterLoop SUFaceGetPlane
               SULoopGetVertices SUVertexGetPosition SUMeshHelperCreate SUFaceGetUVHelperWithTextureHandle SUUVHelperGetFrontUVQ
               SUTypedValueGetDouble SUTypedValueGetType SUAttributeDictionaryGetValue SUStringGetUTF8 SUStringGetUTF8Length
               SUComponentDefinitionGetBehavior SUDrawingElementGetBoundingBox]
    house = ModelHost.load(File.expand_path("../../examples/house.json", __dir__))
    start
    calls.each do |name|
      [[1, true], [3, true], [20, false]].each do |nth, onwards|
        ModelHost.fail_call(name, nth, 6, onwards)
        link.do_import(house.handle, "a.skp", false, true)
        ModelHost.reset_modes
        link.clear_reload_cache
      end
    end
    link.do_import(house.handle, "a.skp", false, true)
    link.quit
    assert_equal [0, []], [report["faultCount"], report["faults"].map { |fault| fault.values_at("name", "text") }.uniq.first(5)]
    assert_equal 9, report["meshes"]
  ensure
    house&.close
  end

  def test_attributes_of_every_type_and_materials_without_names
    values = [nil, true, 7, -1, 2**31 - 1, 0.5, Float::NAN, 1e300, "text", "", "\u5bb6", [1, "a"], [], Time.at(0), [1, 2, 3]]
    keys = %w[diffuse reflection reflection_blur refraction bump_depth light_power light_power_high_intensity hidden hidden_lem material_type
              light-type light-power light-color beam-angle beam-angle-wide color power]
    values.each_with_index do |value, i|
      renew
      material = @model.materials.add(i.even? ? "" : "M")
      lamp = @model.definitions.add("Lamp")
      lamp.entities.add_face(SQUARE)
      instance = @model.entities.add_instance(lamp)
      @model.entities.add_face(SQUARE).material = material
      keys.each do |key|
        [material, instance, lamp].each do |entity|
          next if key == "light-type" && entity != lamp
          entity.set_attribute("corvane_II", key, key == "light-type" && i.odd? ? "softspot" : value)
        rescue StandardError
          nil
        end
      end
      export(value.inspect)
      export("#{value.inspect} classic", pbr: false)
    end
  end
end

require "minitest/autorun"
