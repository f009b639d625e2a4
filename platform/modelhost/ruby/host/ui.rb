# The host's user interface without a screen: what a plug-in makes is recorded, and what a user would
# answer is taken from a list.

MB_OK = 0
MB_OKCANCEL = 1
MB_ABORTRETRYIGNORE = 2
MB_YESNOCANCEL = 3
MB_YESNO = 4
MB_RETRYCANCEL = 5
MB_MULTILINE = 16

IDOK = 1
IDCANCEL = 2
IDABORT = 3
IDRETRY = 4
IDIGNORE = 5
IDYES = 6
IDNO = 7

MF_ENABLED = 0
MF_UNCHECKED = 0
MF_GRAYED = 1
MF_DISABLED = 2
MF_CHECKED = 8

TB_NEVER_SHOWN = -1
TB_HIDDEN = 0
TB_VISIBLE = 1

require_relative "timers"
require_relative "command"
require_relative "menu"
require_relative "toolbar"

module ModelHost
  @menus = {}
  @toolbars = []
  @messages = []
  @answers = []

  class << self
    # Menus by their names, toolbars, and the texts of all message boxes so far.
    attr_reader :menus, :toolbars, :messages

    # What the user answers to the next dialogs, first one first: a path, or the number of a button.
    # A dialog that finds no answer is cancelled; a box with one button needs none.
    attr_reader :answers

    # The menu or item that these texts lead to, as ("Extensions", "Quellix Live", "Start").
    def menu_item(name, *texts)
      texts.inject(UI.menu(name)) do |menu, text|
        found = menu.items.compact.find { |item| item.text == text }
        next found if found
        raise ArgumentError, "the menu #{menu.text} has no #{text}, but #{menu.items.compact.map(&:text).join(", ")}"
      end
    end

    def choose(...) = menu_item(...).choose
  end
end

module UI
  MENUS = %w[Camera Draw Edit Extensions File Help Page Tools View Window].freeze
  private_constant :MENUS

  module_function

  # The block runs on the thread that runs the timers, after so many seconds or each time they are
  # over. An error in it is printed and stops nothing.
  def start_timer(seconds, repeat = false, &block) = ModelHost.timers.start(seconds, repeat, block)

  def stop_timer(id)
    ModelHost.timers.stop(id)
    nil
  end

  # "Plugins" is the older name of "Extensions".
  def menu(name = "Plugins")
    name = "Extensions" if name == "Plugins"
    raise ArgumentError, "the host has no menu #{name}" unless MENUS.include?(name)
    ModelHost.menus[name] ||= Sketchup::Menu.new(name)
  end

  def messagebox(text, type = MB_OK)
    ModelHost.messages << text.to_s
    return IDOK if (type & 7) == MB_OK
    ModelHost.answers.shift || IDCANCEL
  end

  def openpanel(*) = ModelHost.answers.shift
  def savepanel(*) = ModelHost.answers.shift
  def select_directory(**) = ModelHost.answers.shift
end
