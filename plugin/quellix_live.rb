# Keeps a renderer in step with a model: `QuellixLive.start(model, renderer: folder)`. In the host this
# file is the plug-in's root, which puts it into the list of extensions.
module QuellixLive
  VERSION = "1.0.0"

  # What could not be done, in one sentence for the user.
  class Error < StandardError; end

  # By their files, so that the host's load path stays as it is.
  { Extension: "extension", Host: "host", LiveLink: "live_link", Plugin: "plugin" }.each do |name, file|
    autoload name, File.join(__dir__, "quellix_live", file)
  end

  def self.start(...) = LiveLink.start(...)

  def self.register
    extension = SketchupExtension.new("Quellix Live", File.join(__dir__, "quellix_live", "main"))
    extension.description = "Keeps the renderer in step with the model."
    extension.version = VERSION
    extension.creator = "Quellix"
    Sketchup.register_extension(extension, true)
  end
end

QuellixLive.register if defined?(SketchupExtension)
