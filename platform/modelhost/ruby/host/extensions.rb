# A plug-in as the user sees it in the list of extensions; it is loaded when it is switched on.
class SketchupExtension
  attr_accessor :name, :description, :version, :creator, :copyright
  attr_reader :extension_path

  # The path is that of the file to load, without its ending; a relative one is looked for in the
  # plug-in folders, which are on the load path.
  def initialize(name, path)
    @name = name
    @extension_path = path
    @loaded = @registered = @load_on_start = false
  end

  def registered? = @registered
  def loaded? = @loaded
  def load_on_start? = @load_on_start

  # Switches it on; false when its file could not be loaded.
  def check
    @load_on_start = true
    return true if @loaded
    require extension_path
    @loaded = true
  rescue StandardError, ScriptError => e
    warn "Error loading the extension #{name}: #{e.full_message(highlight: false)}"
    false
  end

  # What is loaded stays until the host is started again.
  def uncheck
    @load_on_start = false
    true
  end

  def register(load_on_start)
    @registered = true
    load_on_start ? check : true
  end
end

module Sketchup
  @extensions = []

  class << self
    attr_reader :extensions

    # False when one of that name is there, or its file cannot be loaded.
    def register_extension(extension, load_on_start = false)
      return false if extensions.any? { |other| other.name == extension.name }
      extensions << extension
      extension.register(load_on_start)
    end
  end
end

LOADED_FILES = []
Object.private_constant :LOADED_FILES

# What a plug-in asks and says so that its menus are made once, however often its files are loaded.
def file_loaded?(file) = LOADED_FILES.include?(file.downcase)

def file_loaded(file)
  LOADED_FILES << file.downcase unless file_loaded?(file)
  LOADED_FILES
end
