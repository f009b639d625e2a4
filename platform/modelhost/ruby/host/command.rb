module UI
  # What a menu item and a tool button do.
  class Command
    attr_accessor :menu_text, :tooltip, :status_bar_text, :small_icon, :large_icon, :extension
    attr_reader :proc

    def initialize(menu_text, &block)
      raise ArgumentError, "a command needs a block" unless block
      @menu_text = menu_text
      @proc = block
    end

    def set_validation_proc(&block)
      @validation = block
      true
    end

    def get_validation_proc = @validation
  end
end
