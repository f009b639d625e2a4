module QuellixLive
  # What is known of a model between two exports: as much as it takes to tell what an edit changed, and
  # the ids of what may be gone when that is told.
  class ModelMemory
    # A top-level instance or group.
    Owner = Struct.new(:id, :definition_id, :matrix, :paint, :layer, :hidden, :sent_always)
    Layer = Struct.new(:id, :shown)

    COLORS = { "FaceFrontColor" => Changes::FRONT_COLOR, "FaceBackColor" => Changes::BACK_COLOR }.freeze

    # `per_paint`: owners of one definition in different paints have meshes of their own.
    def initialize(model, per_paint:)
      @model = model
      @per_paint = per_paint
      learn
    end

    # Reads all of it anew.
    def learn
      @owners = Contents.placed(@model.entities).to_h { |entity| [entity.entityID, owner_of(entity)] }
      @definitions = @model.definitions.to_h { |definition| [definition, kind_of(definition)] }
      @materials = @model.materials.to_h { |material| [material, material.persistent_id] }
      @layers = layers_now
      @colors = colors_now
    end

    # Entities of the root were added or changed.
    def compare_owners(entities, changes, contents)
      entities.each do |entity|
        next unless entity.valid? && entity.parent == @model
        was = @owners[entity.entityID]
        now = @owners[entity.entityID] = owner_of(entity)
        was ? compare_owner(was, now, changes, contents.sent_always?(entity.definition)) : uneven(now, changes)
      end
    end

    def owner?(entity_id) = @owners.key?(entity_id)

    # An owner is gone, of which only this number is left.
    def forget_owner(entity_id, changes) = uneven(@owners.delete(entity_id), changes)

    def compare_definitions(definitions, changes)
      definitions.each do |definition|
        next unless definition.valid?
        was, now = @definitions[definition], kind_of(definition)
        @definitions[definition] = now
        changes.definition(definition.persistent_id) if was && was != now
      end
    end

    def add_material(material) = @materials[material] = material.persistent_id

    # The id as it was when the material was there.
    def remove_material(material, changes)
      id = @materials.delete(material)
      id ? changes.material(id) : changes.everything
    end

    # Layers that are shown or hidden now, by themselves or by a folder, and those that are gone.
    def compare_layers(changes)
      was, @layers = @layers, layers_now
      was.each { |layer, known| changes.layer(known.id) if @layers[layer] != known }
    end

    def compare_colors(changes)
      was, @colors = @colors, colors_now
      COLORS.each { |name, key| changes.material(key) if was[name] != @colors[name] }
    end

    private

    def owner_of(entity)
      Owner.new(entity.persistent_id, entity.definition.persistent_id, entity.transformation.to_a,
                entity.material, entity.layer, entity.hidden?, Contents.sent_always?(entity.definition))
    end

    def compare_owner(was, now, changes, sent_always)
      if was.definition_id != now.definition_id || was.paint != now.paint
        changes.owner(now.id)
        [was, now].each { |owner| uneven(owner, changes) }
      elsif was.hidden != now.hidden || was.layer != now.layer
        changes.export
      end
      changes.move(now.id, now.matrix) if was.matrix != now.matrix && !now.sent_always && !now.hidden
      # Lights have values of their own.
      changes.export if now.sent_always || (sent_always && was.matrix != now.matrix)
    end

    # Where one mesh a definition is sent, the paint of the first owner counts for all.
    def uneven(owner, changes)
      changes.export
      changes.definition(owner.definition_id) unless @per_paint
    end

    def kind_of(definition)
      [definition.get_attribute(Contents::DICTIONARY, "light-type", ""), definition.behavior.always_face_camera?]
    end

    def layers_now = @model.layers.to_h { |layer| [layer, Layer.new(layer.persistent_id, shown?(layer))] }

    def shown?(layer)
      return false unless layer.visible?
      folder = layer.folder
      folder = folder.folder while folder&.visible?
      folder.nil?
    end

    def colors_now = COLORS.keys.to_h { |name| [name, @model.rendering_options[name].to_a] }
  end
end
