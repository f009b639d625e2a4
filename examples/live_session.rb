require "securerandom"
require "socket"
require "sketchup.rb"
require "quellix_live"
require "quellix_live/live_link"
require_relative "live_edits"

# A model, the live link to a renderer with its page, and the edits, in one object: what the console of
# `make live` evaluates in.
class LiveSession
  include LiveEdits

  # The page's quit button is no accident, unlike a renderer that dies.
  module QuitNoted
    class << self
      attr_accessor :session
    end

    def on_renderer_quit
      super
      QuitNoted.session&.quit
    end
  end
  QuellixLive::Callbacks.prepend(QuitNoted)

  attr_reader :model, :live, :address

  # Opens a model file and shows it. Raises QuellixLive::Error when there is no link.
  def initialize(path, renderer)
    raise QuellixLive::Error, "the model cannot be read: #{path}" unless Sketchup.open_file(path)
    @model = Sketchup.active_model
    @address = serve_page
    QuitNoted.session = self
    set_view
    @live = QuellixLive.start(@model, renderer: renderer)
    @live.on_status { |status| tell(status) unless ended? }
  end

  # Ends with the next wait.
  def quit = @ended = true
  def ended? = @ended ? true : false

  # Lets the host go on, which follows edits and answers the renderer, for so many seconds.
  def wait(seconds)
    ending = now + seconds
    ModelHost.run_timers(0.02) until ended? || now >= ending
  end

  # Ends the renderer.
  def stop
    quit
    @live&.stop
  end

  def inspect = "#<#{self.class} #{model.title.inspect}>"

  private

  def tell(status)
    warn "live: #{status.message}" if status == :error
    warn "live: #{status.message}; `live.restart` starts another" if status == :renderer_gone
  end

  def now = Process.clock_gettime(Process::CLOCK_MONOTONIC)

  # The address is the same for every renderer of this session, so that a page finds the next one.
  def serve_page
    port = ENV["KVAPP_VIEW"].to_i
    port = TCPServer.open("127.0.0.1", 0) { |server| server.addr[1] } if port.zero?
    ENV["KVAPP_VIEW"] = port.to_s
    ENV["KVAPP_VIEW_TOKEN"] ||= SecureRandom.hex(16)
    "http://127.0.0.1:#{port}/#{ENV["KVAPP_VIEW_TOKEN"]}/"
  end

  # A model without a camera of its own is seen from the side, whole; the sun shines.
  def set_view
    at(15, nil)
    return if @model.camera
    view = @model.active_view
    view.camera.set([1, -1.25, 0.7], [0, 0, 0], [0, 0, 1])
    view.zoom_extents
  end
end
