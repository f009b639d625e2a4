# What a page of the renderer asks, as the plug-in's receiver sees it, and what the page is answered.

require "socket"
require "securerandom"
require_relative "helper"

# The little of a WebSocket that a page of text messages needs.
class TextSocket
  def initialize(address)
    port, token = address.values_at("port", "token")
    @socket = TCPSocket.new("127.0.0.1", port)
    @socket.write("GET /#{token}/socket HTTP/1.1\r\nHost: 127.0.0.1:#{port}\r\n" \
                  "Origin: http://127.0.0.1:#{port}\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n" \
                  "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: #{SecureRandom.base64(16)}\r\n\r\n")
    raise "no socket: #{@socket.gets}" unless @socket.gets.include?("101")
    nil until @socket.gets == "\r\n"
  end

  def send_text(text)
    size = text.bytesize
    head = size < 126 ? [0x81, 0x80 | size].pack("CC") : [0x81, 0xFE, size].pack("CCn")
    @socket.write(head, "\0\0\0\0", text)
  end

  # The next answer; other messages are passed over.
  def answer
    loop do
      opcode = @socket.readbyte & 0x0F
      size = @socket.readbyte
      size = @socket.read(2).unpack1("n") if size == 126
      size = @socket.read(8).unpack1("Q>") if size == 127
      content = @socket.read(size)
      next unless opcode == 1
      message = JSON.parse(content)
      return message if message["type"] == "answer"
    end
  end

  # Waits until the renderer has closed it.
  def close
    @socket.read
    @socket.close
  end
end

class ViewTest < LinkTest
  CAMERA = { eye: [1, 2, 3], target: [4, 5, 6], up: [0, 0, 1], fieldOfView: 35 }.freeze
  SCENE = ["Iso", 1, 2, 3, 4, 5, 6, 0, 0, 1, 35, 1, 2027, 6, 21, 14, 30, 0, 0.5, -0.5, 0.75].freeze
  SAVED = [6, 1, 770].freeze

  # What the page sends, what the callback gives, what it is called with, what the page is answered.
  ASKED = [
    [102, {}, nil, [:on_reload], {}],
    [103, CAMERA, nil, [:on_camera_changed_by_gui, [1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 0.0, 0.0, 1.0, 35.0]], {}],
    [105, { date: [2027, 6, 21, 14, 30, 5] }, nil,
     [:on_datetime_updated, [2027.0, 6.0, 21.0, 14.0, 30.0, 5.0]], {}],
    [106, {}, SCENE, [:on_get_scenes],
     { scenes: [{ name: "Iso", camera: CAMERA, shadows: true, date: [2027, 6, 21, 14, 30, 0],
                  towardsSun: [0.5, -0.5, 0.75] }] }],
    [107, {}, [1, 2, 3, 4, 5, 6, 0, 0, 1, 35, 0.5, -0.5, 0.75], [:on_request_camera_info],
     { camera: { **CAMERA, towardsSun: [0.5, -0.5, 0.75] } }],
    [108, {}, [0.5, -0.5, 0.75, 2027, 6, 21, 14, 30, 0, 1], [:on_request_shadow_info],
     { towardsSun: [0.5, -0.5, 0.75], date: [2027, 6, 21, 14, 30, 0], shadows: true }],
    [109, {}, true, [:model_out_of_sync?], { value: true }],
    [110, { name: "view ä", data: "010000000203" }, nil, [:save_parameters, "view ä", SAVED], {}],
    [111, { name: "view ä" }, SAVED, [:load_parameters, "view ä"], { data: "010000000203" }],
    [111, { name: "none" }, nil, [:load_parameters, "none"], { data: nil }],
    [112, { name: "view ä" }, nil, [:remove_attribute, "view ä"], {}],
    [113, { value: true }, nil, [:set_use_pbr, true], {}],
    [114, {}, false, [:get_use_pbr], { value: false }],
    [115, {}, 2027, [:get_su_version], { version: 2027 }],
    [116, {}, nil, [:suppress_autosync_once], {}],
    [104, {}, nil, [:on_renderer_quit], {}]
  ].freeze

  def setup
    super
    ENV["KVAPP_VIEW"] = "0"
  end

  def teardown
    ENV.delete("KVAPP_VIEW")
    super
  end

  def test_each_control_of_the_page_reaches_its_method_and_its_answer_the_page
    given = ASKED.map { |row| row[2] }
    receiver = Receiver.new(Hash.new(->(*) { given.shift }))
    start(receiver: receiver)
    file = File.join(out, "view.json")
    poll_until { File.exist?(file) }
    page = TextSocket.new(JSON.parse(File.read(file)))
    ASKED.each_with_index do |(code, data, _, call, answer), id|
      page.send_text(JSON.generate({ type: "request", id: id, code: code, **data }))
      poll_until { receiver.calls.size > id }
      assert_equal call, receiver.calls.last
      wanted = JSON.parse(JSON.generate({ type: "answer", id: id, code: code, **answer }))
      assert_equal wanted, page.answer
    end
    page.close
    refute link.is_alive, "the page has closed the renderer"
  end
end

require "minitest/autorun"
