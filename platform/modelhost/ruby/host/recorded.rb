require_relative "history"

module ModelHost
  # Wraps methods that change a model, so that its history learns of what they did. A model without a
  # history is left alone.
  module Recorded
    def self.wrap(klass, *names)
      klass.prepend(Module.new do
        names.each do |name|
          class_eval <<~RUBY, __FILE__, __LINE__ + 1
            def #{name}(*arguments, &block)
              history = _model._history or return super
              history.edit { super(*arguments, &block) }
            end
          RUBY
        end
      end)
    end
  end

  class Model
    def _model = self
  end

  Recorded.wrap(Model, :set_attribute, :delete_attribute)
  Recorded.wrap(Entity, :set_attribute, :delete_attribute)
  Recorded.wrap(DrawingElement, :hidden=, :visible=, :material=, :layer=, :casts_shadows=, :receives_shadows=, :erase!)
  Recorded.wrap(Face, :add_hole, :add_opening, :clear_openings, :reverse!, :back_material=, :position_material,
                :pushpull)
  Recorded.wrap(Edge, :smooth=, :soft=, :color=)
  Recorded.wrap(ComponentInstance, :name=, :transformation=, :transform!, :make_unique, :_explode)
  Recorded.wrap(ComponentDefinition, :name=)
  Recorded.wrap(Behavior, :always_face_camera=, :cuts_opening=)
  Recorded.wrap(Definitions, :add, :remove)
  Recorded.wrap(Entities, :add_face, :add_edges, :add_line, :add_group, :add_instance, :add_image, :fill,
                :erase_entities, :clear!, :_group, :_transform)
  Recorded.wrap(Material, :name=, :color=, :alpha=, :texture=, :metallic_texture=, :roughness_texture=,
                :normal_texture=, :metallic=, :roughness=, :normal_scale=, :colorize_deltas=, :workflow=,
                :_set_texture_size)
  Recorded.wrap(Materials, :add, :remove)
  Recorded.wrap(Layer, :name=, :visible=, :folder=)
  Recorded.wrap(LayerFolder, :visible=, :add_layer, :add_folder)
  Recorded.wrap(Layers, :add, :remove, :add_folder, :remove_folder)
end
