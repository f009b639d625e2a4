module UI
  # A row of buttons; each is a command, a separator is nil.
  class Toolbar
    include Enumerable

    attr_reader :name

    def initialize(name)
      @name = name
      @commands = []
      @state = TB_NEVER_SHOWN
      ModelHost.toolbars << self
    end

    def add_item(command)
      raise TypeError, "a toolbar holds commands" unless command.is_a?(Command)
      @commands << command
      self
    end

    def add_separator(*)
      @commands << nil
      self
    end

    def each(&) = @commands.each(&)
    def length = @commands.length
    alias size length

    def show = change(TB_VISIBLE)
    def hide = change(TB_HIDDEN)

    # Shows it where it was visible when the host was last closed; no state is kept here.
    def restore = @state == TB_HIDDEN ? nil : show

    def get_last_state = @state
    def visible? = @state == TB_VISIBLE

    private

    def change(state)
      @state = state
      nil
    end
  end
end
