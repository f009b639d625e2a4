# Random edits of a model, of every kind that its methods offer, and what the model is like in full.
module RandomModel
  SQUARE = [[0, 0, 0], [10, 0, 0], [10, 10, 0], [0, 10, 0]].freeze
  PICTURE = { pixels: "\x00\x00\xFF\x00\xFF\x00".b * 2, width: 2, height: 2, bits: 24, size: [4, 2] }.freeze

  module_function

  # Part by part, so that it can be told which part an edit has changed: values of the definitions and
  # the contents of the root and of each, in the order of their lists.
  def dump(model)
    parts = { [:definitions] => model.definitions.map { |definition| definition(definition) },
              [:materials] => model.materials.map { |material| material(material) },
              [:layers] => layers(model),
              [:options] => model.rendering_options.each_pair.to_h,
              [:shadow] => model.shadow_info.to_h,
              [:pages] => model.pages.map { |page| page_values(page) },
              [:model] => [model.name, attributes(model)],
              [:contents, 0] => contents(model.entities) }
    model.definitions.each { |d| parts[[:contents, d.persistent_id]] = contents(d.entities) }
    parts
  end

  def contents(entities)
    entities.map { |entity| [entity.persistent_id, *element(entity), *shape(entity)] }
  end

  def element(entity)
    [entity.material&.persistent_id, entity.layer.persistent_id, entity.hidden?, attributes(entity)]
  end

  def shape(entity)
    case entity
    when ModelHost::Face
      at = entity.points.first
      [entity.points, entity.holes, entity.plane, entity.area, entity.back_material&.persistent_id,
       entity.uv_at(at), entity.uv_at(at, false), entity.edges.map(&:persistent_id)]
    when ModelHost::Edge
      [entity.start.to_a, entity.end.to_a, entity.soft?, entity.smooth?, entity.faces.map(&:persistent_id)]
    else
      [entity.name, entity.definition.persistent_id, entity.transformation.to_a]
    end
  end

  def definition(definition)
    behavior = definition.behavior
    [definition.persistent_id, definition.name, behavior.always_face_camera?, behavior.cuts_opening?,
     definition.instances.map(&:persistent_id), attributes(definition)]
  end

  def material(material)
    texture = material.texture && [material.texture.filename, material.texture.width, material.texture.height]
    [material.persistent_id, material.name, material.color.to_a, material.alpha, texture, material.metallic,
     material.roughness, material.normal_scale, material.colorize_deltas, material.workflow, attributes(material)]
  end

  def layers(model)
    [model.layers.map { |layer| [layer.persistent_id, layer.name, layer.visible?, layer.folder&.persistent_id] },
     model.layers._all_folders.map do |folder|
       [folder.persistent_id, folder.name, folder.visible?, folder.folder&.persistent_id,
        *[folder.layers, folder.folders].map { |list| list.map(&:persistent_id) }]
     end]
  end

  def page_values(page)
    [page.name, page.use_camera?, page.camera._values, page.shadow_info.to_h, page.layers.map(&:persistent_id)]
  end

  def attributes(owner)
    owner.attribute_dictionaries.to_a.map { |dictionary| [dictionary.name, dictionary.keys, dictionary.values] }
  end

  # A bitmap of one pixel.
  def write_picture(path)
    File.binwrite(path, ["BM", 58, 0, 54, 40, 1, 1, 1, 24, 0, 4, 0, 0, 0, 0, 255, 128, 0, 0].pack("a2V3V3v2V6C4"))
  end

  # Makes edits; a seed and a number of edits give always the same model.
  class Editor
    KINDS = %i[face edges hole pushpull reverse paint_front paint_back position edge_flags group instance image move
               unique explode erase hide layer attribute transform group_some copy component fill definition purge
               behavior rename new_material material_values texture remove_material new_layer layer_values folder remove_layer
               remove_folder option shadow page page_values erase_page clear mirror_placed].freeze

    # So that models grow.
    OFTEN = KINDS + %i[face group instance image fill definition new_material move] * 3

    attr_reader :model, :random

    def initialize(model, seed)
      @model = model
      @random = Random.new(seed)
      @count = 0
      @kinds = []
    end

    # One edit; its kind, or nil where the model has nothing to edit so. All kinds have their turn.
    def edit
      @count += 1
      @kinds = OFTEN.shuffle(random: random) if @kinds.empty?
      kind = @kinds.pop
      kind if send(kind)
    rescue ArgumentError
      # What is flat, or would lie inside itself.
      nil
    end

    private

    def pick(list) = list.to_a.sample(random: random)
    def owner = pick([model, *pick([[], model.definitions.reject(&:image?)])])
    def entities = owner.entities
    def some(*classes)
      pick([model, *model.definitions].flat_map { |o| o.entities.select { |e| classes.any? { |c| c === e } } })
    end

    def placed = some(Sketchup::ComponentInstance)
    def number(range = 0.5..9.5) = random.rand(range)
    def paint = pick([nil, *model.materials])
    def turn = Geom::Transformation.rotation([0, 0, 0], [1, 2, 3], number) * Geom::Transformation.translation([number, number, 0])
    def mirror = Geom::Transformation.scaling(pick([-1, 1.5]), 1, pick([1, 2]))

    def face
      where = turn
      entities.add_face(*RandomModel::SQUARE.map { |point| where * Geom::Point3d.new(point) })
    end

    def edges = entities.add_edges(*Array.new(3) { [number, number, number] })

    def fill
      entities.fill([*RandomModel::SQUARE, [5, 5, number]], [[0, 1, 4], [1, 2, 4], [2, 3, 4], [3, 0, 4]], paint, true)
    end

    def hole
      face = some(Sketchup::Face) or return
      corners = face.points.first(3)
      inner = corners.map { |c| (0..2).map { |i| (c[i] * 8 + corners.sum { |p| p[i] } / 3 * 2) / 10 } }
      random.rand < 0.5 ? face.add_hole(inner) : face.add_opening(inner)
    end

    def pushpull = some(Sketchup::Face)&.pushpull(number(-5.0..5.0))
    def reverse = some(Sketchup::Face)&.reverse!

    def paint_side(writer)
      thing = some(Sketchup::Face, *(Sketchup::ComponentInstance if writer == :material=)) or return
      thing.public_send(writer, paint)
      true
    end

    def paint_front = paint_side(:material=)
    def paint_back = paint_side(:back_material=)

    def position
      face, material = some(Sketchup::Face), pick(model.materials)
      return unless face && material
      points = face.points.first(3)
      face.position_material(material, points.flat_map { |p| [p, [number, number]] }, pick([true, false]))
      true
    end

    def edge_flags
      edge = some(Sketchup::Edge) or return
      edge.public_send(pick(%i[soft= smooth= hidden=]), pick([true, false]))
      true
    end

    def group = entities.add_group.entities.add_face(RandomModel::SQUARE)
    def definition = model.definitions.add("D").entities.add_face(RandomModel::SQUARE)

    def instance
      definition = pick(model.definitions.reject { |d| d.group? || d.image? }) or return
      entities.add_instance(definition, turn)
    end

    def image = entities.add_image(Editor.picture, [number, 0, 0], 3)

    def move
      thing = placed or return
      pick([true, false]) ? thing.transform!(turn) : thing.transformation = turn
      true
    end

    def unique = placed&.make_unique
    def explode = placed&.explode
    def erase = (thing = some(Sketchup::DrawingElement)) && (thing.erase! || true)

    def hide
      thing = some(Sketchup::DrawingElement) or return
      thing.hidden = !thing.hidden?
      true
    end

    def layer
      thing = some(Sketchup::DrawingElement) or return
      thing.layer = pick(model.layers)
      true
    end

    def attribute
      thing = pick([model, some(Sketchup::DrawingElement), pick(model.definitions), pick(model.materials)].compact)
      thing.set_attribute(pick(%w[a b]), pick(%w[x y]), pick([1, "text", [1.5, [true]]]))
      thing.delete_attribute("a", "x") if random.rand < 0.3
      true
    end

    def sample_of(list) = list.to_a.sample(1 + random.rand(4), random: random)

    def transform
      list = entities
      list.transform_entities(pick([turn, mirror]), sample_of(list)) if list.length > 0
    end

    def group_some
      list = entities
      list.add_group(sample_of(list)) if list.length > 0
    end

    def copy = some(Sketchup::Group)&.copy
    def component = some(Sketchup::Group)&.to_component
    def clear = random.rand < 0.5 && entities.clear!

    def purge
      gone = pick(model.definitions.reject { |d| d.group? || d.image? })
      random.rand < 0.5 && gone && (model.definitions.remove(gone) || true)
    end

    def behavior
      definition = pick(model.definitions) or return
      definition.behavior.always_face_camera = !definition.behavior.always_face_camera?
      true
    end

    def rename
      thing = pick([placed, pick(model.definitions), pick(model.materials), pick(model.layers)].compact)
      thing.name = "N#{@count}"
      true
    end

    def new_material = model.materials.add("M")

    def material_values
      material = pick(model.materials) or return
      material.public_send(*pick([[:color=, [random.rand(256), 2, 3]], [:alpha=, number(0.0..1.0)], [:metallic=, 0.5],
                                  [:roughness=, nil], [:colorize_deltas=, [10, 0.1, 0]], [:workflow=, :pbr]]))
      true
    end

    def texture
      material = pick(model.materials) or return
      random.rand < 0.7 ? material.texture = RandomModel::PICTURE : material.texture = nil
      material.texture.size = [number, number] if material.texture
      true
    end

    def remove_material = (gone = pick(model.materials)) && (model.materials.remove(gone) || true)
    def new_layer = model.layers.add("L#{@count}")

    def layer_values
      layer = pick(model.layers)
      layer.visible = !layer.visible?
      layer.folder = pick([nil, *model.layers._all_folders])
      true
    end

    def folder
      folder = model.layers.add_folder("F")
      inside = pick(model.layers._all_folders)
      folder.folder = inside unless inside == folder
      folder.visible = pick([true, false])
      true
    end

    def remove_layer
      gone = pick(model.layers.to_a.drop(1)) or return
      model.layers.remove(gone, pick([true, false]))
    end

    def remove_folder = (gone = pick(model.layers._all_folders)) && model.layers.remove_folder(gone)

    def option
      model.rendering_options[pick(%w[FaceFrontColor SkyColor])] = [random.rand(256), 2, 3]
      model.rendering_options["DrawHorizon"] = pick([true, false])
      true
    end

    def shadow
      model.shadow_info[pick(%w[Latitude NorthAngle])] = number
      model.shadow_info["ShadowTime"] = Time.utc(2026, 3, 1 + random.rand(28))
      true
    end

    def page = model.pages.add
    def page_values = (page = pick(model.pages)) && (page.name = "P#{@count}") && page.update
    def erase_page = (gone = pick(model.pages)) && model.pages.erase(gone)

    def mirror_placed = (thing = placed) && thing.transform!(mirror)

    class << self
      attr_accessor :picture
    end
  end
end
