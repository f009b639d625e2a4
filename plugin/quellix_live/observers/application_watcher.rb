module QuellixLive
  # Of the application: which model it shows.
  class ApplicationWatcher < Sketchup::AppObserver
    extend Watching

    tells(:onNewModel, :onOpenModel) { |link, model| link.opened(model) }
    tells(:onActivateModel) { |link, model| link.activated(model) }
    tells(:onQuit) { |link, *| link.quit }
  end
end
