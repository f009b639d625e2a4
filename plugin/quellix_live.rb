# Keeps a renderer in step with a model: `QuellixLive.start(model, renderer: folder)`. In the host this
# file is the plug-in's root, which puts it into the list of extensions.
module QuellixLive
  VERSION = "1.0.0"

  # What could not be done, in one sentence for the user.
  class Error < StandardError; end

  autoload :Extension, "quellix_live/extension"
  autoload :Host, "quellix_live/host"
  autoload :LiveLink, "quellix_live/live_link"
  autoload :Plugin, "quellix_live/plugin"

  def self.start(...) = LiveLink.start(...)
end

$LOAD_PATH.unshift(__dir__) unless $LOAD_PATH.include?(__dir__)
