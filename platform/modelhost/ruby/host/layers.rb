require_relative "recorded"

module ModelHost
  class Layer
    def display_name = name
    def hidden? = !visible?
  end

  module FolderChange
    def folder=(folder)
      _model._history&.tell(:layers, :onParentFolderChanged, _model.layers, self)
      super
    end
  end
  Layer.prepend(FolderChange)

  class LayerFolder
    def each_layer(&block) = layers.each(&block)
    def each_folder(&block) = folders.each(&block)
    def count_layers = layers.size
    def count_folders = folders.size
    def display_name = name
    def remove_folder(folder) = _model.layers.remove_folder(folder)


    # Puts it into another one, or with nil at the top.
    def folder=(other)
      _model.layers._history_edit { _put_into(other) }
    end

    def name=(name)
      _model.layers._history_edit { _rename(name) }
    end
  end

  class Layers
    include Observed

    def _observed = :layers
    def model = _model
    def parent = _model
    def at(key) = self[key]
    def count(*arguments, &block) = arguments.empty? && !block ? length : super
    def each_folder(&block) = folders.each(&block)
    def count_folders = folders.size

    alias _all_folders folders
    # Those at the top.
    def folders = _all_folders.reject(&:folder)

    # Those at the top alone, and in no folder.
    def each_layer(&block) = reject(&:folder).each(&block)
    def add_layer(name) = add(name)
    def purge_unused = 0

    def _history_edit(&block) = _model._history ? _model._history.edit(&block) : block.call

    def unique_name(wish = "Layer")
      return wish unless self[wish]
      (1..).lazy.map { |n| "#{wish}#{n}" }.find { |name| self[name].nil? }
    end

    # With what is on it, or else that comes to lie on the first layer.
    module Removal
      def remove(layer, remove_geometry = false)
        layer = self[layer] unless layer.is_a?(Layer)
        raise ArgumentError, "there is no such layer" unless layer
        _history_edit do
          erase_on(layer) if remove_geometry
          super(layer)
        end
        true
      end
    end
    prepend Removal

    private

    def erase_on(layer)
      [_model, *_model.definitions].each do |owner|
        # A definition may have gone with what placed it.
        next unless owner.valid?
        on_it = owner.entities.select { |entity| entity.layer == layer }
        owner.entities.erase_entities(on_it) if on_it.any?
      end
    end
  end
end
