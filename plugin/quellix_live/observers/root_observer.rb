module QuellixLive
  # Of the model's own entities: instances and groups there are owners, the rest is loose.
  class RootObserver < Sketchup::EntitiesObserver
    extend Watching

    tells(:onElementAdded, :onElementModified) { |watch, _, entity| watch.touch(entity) }
    tells(:onElementRemoved) { |watch, _, entity_id| watch.remove(entity_id) }
  end
end
