module QuellixLive
  # Of the rendering options: the colours of faces without paint, and the background.
  class RenderingWatcher < Sketchup::RenderingOptionsObserver
    extend Watching

    tells(:onRenderingOptionsChanged) { |watch, *| watch.options }
  end
end
