module QuellixLive
  # Of a definition's entities. It keeps the definition's id, which cannot be read once that is gone.
  class ContentObserver < Sketchup::EntitiesObserver
    extend Watching

    def initialize(watch, definition_id)
      @watch = watch
      @definition_id = definition_id
    end

    tells(:onElementAdded, :onElementModified) { |watch, _, entity| watch.edit(@definition_id, entity) }
    tells(:onElementRemoved) { |watch, *| watch.edit(@definition_id) }
  end
end
