module QuellixLive
  # Of date, time and place: the sun, which goes with the camera.
  class ShadowWatcher < Sketchup::ShadowInfoObserver
    extend Watching

    tells(:onShadowInfoChanged) { |watch, *| watch.view }
  end
end
