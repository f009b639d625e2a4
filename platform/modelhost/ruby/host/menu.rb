module Sketchup
  # A menu of the host; it holds items, separators (nil) and further menus.
  class Menu
    # What can be chosen. Its number, as `set_validation_proc` takes it, is given out by the host.
    class Item
      attr_reader :id
      attr_writer :validation

      @last_id = 0
      def self.next_id = @last_id += 1

      def initialize(text, block)
        @id = Item.next_id
        @command = text if text.is_a?(UI::Command)
        @text = text
        @block = block
      end

      def text = @command ? @command.menu_text : @text

      # The MF_ flags that the plug-in gives at this moment.
      def state
        check = @validation || @command&.get_validation_proc
        check ? check.call : MF_ENABLED
      end

      def enabled? = (state & (MF_GRAYED | MF_DISABLED)).zero?
      def checked? = (state & MF_CHECKED) != 0

      # As a click does; a grayed item cannot be clicked.
      def choose
        raise ArgumentError, "the menu item #{text} is grayed" unless enabled?
        (@command ? @command.proc : @block).call
      end
    end

    attr_reader :text, :items

    def initialize(text)
      @text = text
      @items = []
    end

    def add_item(text, &block)
      raise ArgumentError, "a menu item needs a block or a command" unless block || text.is_a?(UI::Command)
      @items << Item.new(text, block)
      @items.last.id
    end

    def add_submenu(text)
      @items << Menu.new(text)
      @items.last
    end

    def add_separator
      @items << nil
      nil
    end

    def set_validation_proc(id, &block)
      item = @items.find { |each| each.is_a?(Item) && each.id == id }
      raise ArgumentError, "this menu has no item #{id}" unless item
      item.validation = block
      id
    end
  end
end
