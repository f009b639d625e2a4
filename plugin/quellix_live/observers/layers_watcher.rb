module QuellixLive
  # Of layers and their folders; which of them count for what is shown is found out later.
  class LayersWatcher < Sketchup::LayersObserver
    extend Watching

    tells(:onLayerAdded, :onLayerChanged, :onLayerRemoved, :onRemoveAllLayers, :onLayerFolderAdded,
          :onLayerFolderChanged, :onLayerFolderRemoved, :onParentFolderChanged) { |watch, *| watch.layers }
  end
end
