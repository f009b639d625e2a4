# See a model live: the stand-in host with a model, the live library, and the renderer with its page.
#
#   ruby live.rb [MODEL]
#
# In a terminal this is a Ruby console on `model`: what is edited shows at once. Without one it walks once
# through the ready edits. Ctrl-D and the page's quit button end everything. `make live` sets the folders
# below and runs this.

EXTENSION_DIR, MODELHOST_DIR, KVAPP_DIR, PLUGIN_DIR = %w[EXTENSION_DIR MODELHOST_DIR KVAPP_DIR PLUGIN_DIR].map do |name|
  ENV.fetch(name) { abort "live: #{name} is not set; `make env` prints it" }
end
$LOAD_PATH.unshift(EXTENSION_DIR, MODELHOST_DIR, PLUGIN_DIR)
ENV["KVAPP_PICTURE"] ||= "0"

begin
  require_relative "live_session"
rescue LoadError => e
  abort "live: #{e.message.lines.first.chomp}; is the project built?"
end

session = nil
begin
  session = LiveSession.new(File.expand_path(ARGV.first || File.join(__dir__, "house.json")), KVAPP_DIR)
  puts "page        #{session.address}"
  $stdout.flush
  if $stdin.tty?
    puts "console     `model` is the model; #{LiveEdits::TOUR.first(4).join(", ")} ... are edits, `tour` makes them all;",
         "            `live` is the link; Ctrl-D ends"
    require_relative "live_console"
    LiveConsole.run(session)
  else
    session.tour(ENV.fetch("TOUR_PAUSE", "2").to_f)
  end
rescue QuellixLive::Error => e
  abort "live: #{e.message}"
ensure
  session&.stop
end
