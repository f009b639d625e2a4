require "tmpdir"
require_relative "model"

# The host's names for what it is made of.
module Sketchup
  %i[Entity DrawingElement Entities Face Edge ComponentInstance Group Image ComponentDefinition Behavior Material
     Materials Layer Layers LayerFolder Model RenderingOptions ShadowInfo View Pages Page Texture Vertex
     AttributeDictionary].each { |name| const_set(name, ModelHost.const_get(name)) }
  DefinitionList = ModelHost::Definitions

  @observers = ModelHost::Observers.new
  @defaults = {}

  class << self
    # The text in the status line, and those of its other panels by number.
    attr_reader :status_text

    # Always the same version: what a plug-in asks for so as to know what it can use.
    def version = "25.0.0"
    def version_number = 2_500_000_000
    def app_name = "Model host"
    def is_64bit? = true
    def platform = RUBY_PLATFORM.match?(/mswin|mingw/) ? :platform_win : :platform_osx
    def get_locale = "en-US"
    def temp_dir = Dir.tmpdir
    def active_model = ModelHost.active || open_model(ModelHost::Model.new)

    def add_observer(observer) = @observers.add(:app, observer)
    def remove_observer(observer) = @observers.remove(:app, observer)

    # Takes the place of the active model. False when it cannot be read; why is told on the standard
    # error.
    def open_file(path, with_status: false)
      model = ModelHost.load(path)
      ModelHost.activate(model, :onOpenModel)
      with_status ? ModelHost::Model::LOAD_STATUS_SUCCESS : true
    rescue RuntimeError => e
      warn e.message
      false
    end

    def file_new
      ModelHost.activate(ModelHost::Model.new, :onNewModel)
      true
    end

    def undo = active_model.history.undo

    # Those of the host's commands that do not need a screen.
    def send_action(action)
      case action
      when "editUndo:", 57603 then active_model.history.undo
      when "editRedo:", 57604 then active_model.history.redo
      when "viewZoomExtents:", 10527 then active_model.active_view.zoom_extents
      else return false
      end
      true
    end

    def status_text=(text)
      set_status_text(text)
    end

    # Panel 0 is the status line.
    def set_status_text(text = "", panel = 0)
      @status_text = text.to_s if panel.to_i.zero?
      true
    end

    def read_default(section, key, default = nil) = @defaults.fetch([section, key], default)

    def write_default(section, key, value)
      @defaults[[section, key]] = value
      true
    end

    # A file of a plug-in, without its ending too.
    def require(path) = Kernel.require(path)
    alias load require

    # A plug-in folder or a file in one, or nil.
    def find_support_file(name, folder = nil)
      places = $LOAD_PATH.map { |path| File.expand_path(File.join(path, *folder&.delete_prefix("Plugins"), name)) }
      places.find { |path| File.exist?(path) }
    end

    def quit
      @observers.call(:app, :onQuit)
    end

    # Tells the application's observers.
    def _tell(...) = @observers.call(:app, ...)

    private

    def open_model(model)
      model.history
      ModelHost.active = model
    end
  end
end

module ModelHost
  # Puts a model in the place of the active one, which is closed; observers of the application hear
  # `event` with it.
  def self.activate(model, event = :onOpenModel)
    former = active
    return model if former.equal?(model)
    model.history
    former&._close
    self.active = model
    former&._release
    Sketchup._tell(event, model)
    model
  end
end
