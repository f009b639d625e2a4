module QuellixLive
  # What the user sees of the live link: a menu, a toolbar, the status line and, when something cannot
  # be done, one sentence in a message box.
  class Plugin
    NAME = "Quellix Live"
    SETTINGS = "QuellixLive"

    # A command's method, its text in the menu, and what the status line says about it.
    COMMANDS = [
      [:start, "Start", "Starts the renderer and sends it the model"],
      [:stop, "Stop", "Closes the renderer"],
      nil,
      [:sync, "Sync", "Sends what has changed, now"],
      [:toggle_auto_sync, "Auto-sync", "Sends changes on its own, a moment after the last edit"],
      [:sync_all, "Send everything", "Sends the whole model again"],
      nil,
      [:toggle_link_camera, "Link camera", "Moves the renderer's camera with the view, and the view with it"]
    ].freeze

    def initialize
      menu = UI.menu("Extensions").add_submenu(NAME)
      toolbar = UI::Toolbar.new(NAME)
      COMMANDS.each do |method, text, tip|
        next [menu, toolbar].each(&:add_separator) unless method
        command = command(method, text, tip)
        menu.add_item(command)
        toolbar.add_item(command)
      end
      toolbar.get_last_state == TB_NEVER_SHOWN ? toolbar.show : toolbar.restore
    end

    private

    def command(method, text, tip)
      command = UI::Command.new(text) { attempt(text) { send(method) } }
      command.tooltip = text
      command.status_bar_text = tip
      command.small_icon = command.large_icon = File.join(__dir__, "icons", "#{method.to_s.delete_prefix("toggle_")}.svg")
      command.set_validation_proc { state(method) }
      command
    end

    def running? = !@live.nil? && @live.running?

    def state(method)
      case method
      when :start then running? && @live.alive? ? MF_GRAYED : MF_ENABLED
      when :toggle_auto_sync then checked(running? ? @live.auto_sync? : auto_sync_setting)
      when :toggle_link_camera then running? ? checked(@live.link_camera?) : MF_GRAYED
      else running? ? MF_ENABLED : MF_GRAYED
      end
    end

    def checked(flag) = flag ? MF_CHECKED : MF_UNCHECKED

    # A renderer that has gone is started again and gets everything.
    def start
      return @live.restart if running?
      folder = renderer_folder or return
      @live = LiveLink.new(Sketchup.active_model, renderer: folder, auto_sync: auto_sync_setting)
      @live.on_status { |status| show(status) }
      @live.start
    end

    def stop = @live.stop
    def sync = @live.sync
    def sync_all = @live.sync_all

    def toggle_auto_sync
      flag = !(running? ? @live.auto_sync? : auto_sync_setting)
      Sketchup.write_default(SETTINGS, "AutoSync", flag)
      @live.auto_sync = flag if running?
    end

    def toggle_link_camera = @live.link_camera = !@live.link_camera?

    def auto_sync_setting = Sketchup.read_default(SETTINGS, "AutoSync", true)

    # The folder that holds KvApp/KvApp.exe: the one that the user has chosen once, or beside the
    # plug-in, or the one that is asked for here; nil when the user chooses none.
    def renderer_folder
      known = [Sketchup.read_default(SETTINGS, "Renderer"), File.join(__dir__, "renderer"), __dir__]
      found = known.compact.find { |folder| renderer?(folder) }
      return found if found
      chosen = UI.select_directory(title: "The folder that holds KvApp") or return
      folder = [chosen, File.dirname(chosen)].find { |each| renderer?(each) }
      raise Error, "#{chosen} holds no KvApp/KvApp.exe" unless folder
      Sketchup.write_default(SETTINGS, "Renderer", folder)
      folder
    end

    def renderer?(folder) = File.file?(File.join(folder, "KvApp", "KvApp.exe"))

    def show(status)
      Sketchup.status_text = "#{NAME}: #{status}"
      @said = nil if status == :in_step
      return if @attempting || status != :error || status.message == @said
      @said = status.message # what goes wrong again and again is said once
      # A status may come in the middle of an export, where no dialog may run the host's loop.
      UI.start_timer(0) { tell(status.message) }
    end

    # Runs a command; an error ends in one sentence for the user.
    def attempt(what)
      @attempting = true
      before = @live&.status
      yield
      status = @live&.status
      failure = status.message if status == :error && !status.equal?(before)
    rescue Error => e
      failure = e.message
    rescue StandardError => e
      warn e.full_message(highlight: false)
      failure = "#{what} failed: #{e.message.lines.first.to_s.chomp}"
    ensure
      @attempting = false
      tell(failure) if failure
    end

    def tell(sentence) = UI.messagebox("#{NAME}: #{sentence}")
  end
end
