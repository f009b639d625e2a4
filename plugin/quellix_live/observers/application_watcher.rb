module QuellixLive
  # Of the application: which model it shows.
  class ApplicationWatcher < Sketchup::AppObserver
    extend Watching

    tells(:onNewModel, :onOpenModel, :onActivateModel) { |watch, model| watch.opened(model) }
    tells(:onQuit) { |watch, *| watch.quit }
  end
end
