module QuellixLive
  # Of the view: its camera.
  class ViewWatcher < Sketchup::ViewObserver
    extend Watching

    tells(:onViewChanged) { |watch, *| watch.view }
  end
end
