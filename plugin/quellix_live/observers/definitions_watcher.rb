module QuellixLive
  # Of the list of definitions.
  class DefinitionsWatcher < Sketchup::DefinitionsObserver
    extend Watching

    tells(:onComponentAdded) { |watch, _, definition| watch.follow(definition) }
    tells(:onComponentPropertiesChanged, :onComponentTypeChanged) { |watch, _, definition| watch.kind(definition) }
    tells(:onComponentRemoved) { |watch, _, definition| watch.unfollow(definition) }
  end
end
