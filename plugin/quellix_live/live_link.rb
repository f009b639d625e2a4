require_relative "status"
require_relative "changes"
require_relative "contents"
require_relative "model_memory"
require_relative "observers/watching"
%w[root_observer content_observer definitions_watcher materials_watcher layers_watcher rendering_watcher
   shadow_watcher view_watcher model_watcher application_watcher].each { |name| require_relative "observers/#{name}" }
require_relative "model_watch"
require_relative "camera"
require_relative "scenes"
require_relative "settings"
require_relative "callbacks"

module QuellixLive
  # Keeps a renderer in step with a model: exports it, watches it, and sends what edits changed.
  #
  # All of it happens on the host's thread: in a timer of the host, in observers, and in the methods here.
  # One link at a time, since the extension has one.
  class LiveLink
    TICK_SECONDS = 0.05
    # The renderer's program below its folder.
    PROGRAM = File.join("KvApp", "KvApp.exe")

    # Seconds without an edit or a move of the view after which edits are sent.
    attr_accessor :idle
    attr_reader :model, :settings, :status
    # Whether edits are sent on their own.
    attr_reader :auto_sync
    alias auto_sync? auto_sync

    # `renderer` is the folder that holds KvApp/KvApp.exe. `handle` is the model's Integer for the
    # extension; without it the host's library is asked. `link` is a Quellix_SUInterface that is there
    # already.
    def initialize(model, renderer:, idle: 0.2, auto_sync: true, link_camera: true, handle: nil, link: nil)
      @model = model
      @renderer = renderer
      @idle = idle
      @auto_sync = auto_sync
      @camera_linked = link_camera
      @handle = handle
      @link = link
      @listeners = []
      @status = Status.new(:stopped)
    end

    def self.start(...) = new(...).start

    # Starts the renderer, sends the model, and watches it from then on. Raises Error when that cannot
    # be done; nothing is left running then.
    def start
      raise Error, "the link runs already" if running?
      begin
        begin_watching
        connect
      rescue StandardError => e
        stop
        raise e if e.is_a?(Error)
        raise Error, "the link cannot start: #{e.message}"
      end
      self
    end

    def running? = !@timer.nil?
    def alive? = running? && @link.is_alive ? true : false

    # Tells the block each new status.
    def on_status(&listener)
      @listeners << listener
      self
    end

    # Sends at once what was edited. True when the renderer is in step then; what went wrong is the
    # status.
    def sync
      return false unless running? && @watch && !@busy
      return renderer_gone unless alive?
      @sync_soon = @skip_once = false
      exporting do
        raise Error, "the model is closed" if @closed
        send_changes(@watch.settle)
      end
    end

    # Sends everything again.
    def sync_all
      @watch&.everything
      sync
    end

    # A renderer that has gone is started again, and gets everything. Raises Error when it cannot be.
    def restart
      raise Error, "the link is not running" unless running?
      raise Error, "an export is under way" if @busy
      connect
    end

    # Ends the renderer and the watching.
    def stop
      return if @stopping
      @stopping = true
      UI.stop_timer(@timer) if @timer
      @timer = nil
      Sketchup.remove_observer(@application) if @application
      @application = nil
      @watch&.detach
      @watch = nil
      @link&.quit
      tell(:stopped) unless @status == :stopped
      nil
    ensure
      @stopping = false
    end

    def auto_sync=(flag)
      @skip_once = false
      @auto_sync = flag ? true : false
    end

    # Whether the renderer follows the host's view and its own user moves that.
    def link_camera? = @camera_linked

    def link_camera=(flag)
      @camera_linked = flag ? true : false
      return unless alive?
      @link.set_camera_link(@camera_linked)
      # The one that the extension holds back, if it still does.
      @link.do_rendering_without_progress(*Camera.arguments(@model)) if @camera_linked && @held_back
      @held_back = false
      @view_due = @background_due = @camera_linked
    end

    # Says that an entity, a definition, a material or a layer was edited in a way that the host has no
    # observer for; nil stands for all of the model.
    def changed(entity)
      return unless @watch
      case entity
      when nil then @watch.everything
      when Sketchup::Material then @watch.material(entity)
      when Sketchup::Layer then @watch.layers
      when Sketchup::ComponentDefinition then @watch.edit(entity.persistent_id)
      else changed_content(entity)
      end
    end

    def use_pbr? = @settings.use_pbr?

    def use_pbr=(flag)
      return if flag == use_pbr?
      @settings.use_pbr = flag
      @watch&.everything
    end

    # An edit that is not sent yet.
    def pending? = @watch ? @watch.pending? : false

    # Below: for the observers and for Callbacks.

    def view_changed = @view_due = true
    def options_changed = @background_due = true
    def saved = @name_due = true
    def sync_soon = @sync_soon = true
    # The next export that would come on its own is left to the edit after it.
    def skip_once = @skip_once = true

    # The extension holds the next camera back, since the renderer has it: one is handed to it in any case,
    # and where none goes out now, when cameras are linked again.
    def camera_from_renderer
      @view_due = true
      @held_back = !@camera_linked
      yield @model
    end

    def renderer_quit = renderer_gone

    # An observer failed: everything is sent again, which the watch sees to. Told once, until an export
    # was in order again.
    def observer_failed(error)
      return if @observer_failed
      @observer_failed = true
      tell(:error, message: "an edit could not be followed, so everything is sent again: #{error.message}")
    end

    # The host has another document, which is sent in place of the one before. It may be the same object.
    def opened(model)
      @handle = nil
      watch(model)
      @watch.everything
      @another = @view_due = @background_due = true
    end

    # Where the host has several documents.
    def activated(model)
      opened(model) if @closed || model != @model
    end

    # The model is being closed; what the host shows then is told by `opened`.
    def closed
      @closed = true
      @watch&.detach
    end

    def quit = stop

    # For an observer of the application, which has no watch of one model.
    def notice
      yield
    rescue StandardError => e
      tell(:error, message: "another model could not be followed: #{e.message}")
    end

    private

    def begin_watching
      Extension.load
      @link ||= Quellix_SUInterface.new
      watch(@model)
      @application = ApplicationWatcher.new(self)
      Sketchup.add_observer(@application)
      @timer = UI.start_timer(TICK_SECONDS, true) { tick }
    end

    def watch(model)
      raise Error, "there is no model" if model.nil?
      raise Error, "the model is closed" unless model.valid?
      @watch&.detach
      @watch = nil
      @model = model
      @settings = Settings.new(model)
      @watch = ModelWatch.new(model, self, per_paint: Extension.mesh_per_paint?)
      @closed = false
    end

    def connect
      program = File.join(@renderer, PROGRAM)
      raise Error, "there is no renderer: #{program} is missing" unless File.file?(program)
      raise Error, "the renderer does not start: #{program}" unless @link.init_renderer(Callbacks.new(self), @renderer)
      @view_due = @background_due = @name_due = false
      sent = exporting do
        @watch.settle
        import(false)
        @link.set_camera_link(@camera_linked)
        @link.do_rendering_with_background_settings(*Camera.arguments(@model), Camera.background(@model))
        true
      end
      raise Error, @status.message unless sent
      true
    end

    # What the timer does.
    def tick
      return if @busy || @status == :renderer_gone
      return renderer_gone unless alive?
      @link.poll_to_plugin
      return unless alive? && !@closed
      send_view
      sync if @sync_soon || sync_due?
      tell(:waiting) if pending? && @status == :in_step
    rescue StandardError => e
      @watch&.relearn
      tell(:error, message: e.message) unless @status == :error
    end

    def sync_due?
      return false unless pending? && @auto_sync && !@watch.operation
      return false if @held_at && @watch.active_at <= @held_at
      return false if now - @watch.active_at < @idle
      @skip_once ? skip : true
    end

    # Nothing is sent on its own until the user goes on.
    def skip
      @skip_once = false
      @held_at = @watch.active_at
      false
    end

    def send_view
      name, background, view = @name_due, @background_due, @view_due
      @name_due = @background_due = @view_due = false
      @link.set_model_name(@model.path) if name
      @link.set_background_settings(Camera.background(@model)) if background
      @link.do_rendering_without_progress(*Camera.arguments(@model)) if view
    end

    # Moves alone need no export.
    def send_changes(changes)
      changes.report(@link)
      import(!@another) if changes.export?
      @another = false
      true
    end

    def import(reload)
      model = @model
      handle = @handle || Host.model_handle(model)
      tell(:exporting, progress: 0.0)
      @link.init_reload if reload
      @link.prepare_renderer(reload)
      @link.do_import(handle, model.path, reload, use_pbr?)
      raise Error, "the model was closed while it was sent" if @closed || model != @model || !model.valid?
      @link.update_cache_info if alive?
      tell(:exporting, progress: 1.0)
    end

    # One export at a time. One that fails leaves nothing that the next could rely on.
    def exporting
      @busy = true
      done = yield
      @held_at = nil
      @observer_failed = false
      return renderer_gone unless alive?
      tell(pending? ? :waiting : :in_step)
      done
    rescue StandardError => e
      @link.clear_reload_cache
      @watch&.everything
      @held_at = now
      tell(:error, message: e.message)
      false
    ensure
      @busy = false
    end

    def changed_content(entity)
      parent = entity.parent
      return @watch.edit(parent.persistent_id, entity) if parent.is_a?(Sketchup::ComponentDefinition)
      @watch.touch(entity)
      @watch.export
    end

    def renderer_gone
      tell(:renderer_gone, message: "the renderer has ended") unless @status == :renderer_gone
      false
    end

    def now = Process.clock_gettime(Process::CLOCK_MONOTONIC)

    # A listener that fails stops nobody.
    def tell(state, progress: nil, message: nil)
      @status = Status.new(state, progress, message)
      @listeners.each do |listener|
        listener.call(@status)
      rescue StandardError => e
        warn "quellix_live: a status could not be told: #{e.message}"
      end
    end
  end
end
