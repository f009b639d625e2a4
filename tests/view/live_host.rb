# A live session that a test drives: each line of the standard input is `{"id", "ruby"}`, evaluated in the
# session, whose host goes on in between; each line of the standard output is `{"id", "value" or "error"}`.
# The first one gives the page's address.

require "json"
$LOAD_PATH.unshift(*%w[EXTENSION_DIR MODELHOST_DIR PLUGIN_DIR].map { |name| ENV.fetch(name) })
require_relative "../../examples/live_session"

# Notes what the renderer asks, with its values.
module Heard
  LIST = []

  QuellixLive::Callbacks.instance_methods(false).each do |name|
    define_method(name) do |*values|
      LIST << [name, *values]
      super(*values)
    end
  end
end
QuellixLive::Callbacks.prepend(Heard)

# Answers go where nothing else that prints does.
answers = $stdout.dup
$stdout.reopen($stderr)
tell = lambda do |message|
  answers.puts(JSON.generate(message))
  answers.flush
end

session = LiveSession.new(ARGV.first, ENV.fetch("KVAPP_DIR"))
begin
  tell.call("address" => session.address)
  until session.ended?
    next session.wait(0.02) unless $stdin.wait_readable(0)
    line = $stdin.gets or break
    asked = JSON.parse(line)
    begin
      tell.call("id" => asked["id"], "value" => session.instance_eval(asked["ruby"]))
    rescue StandardError, ScriptError => e
      tell.call("id" => asked["id"], "error" => "#{e.class}: #{e.message}")
    end
  end
ensure
  session.stop
end
