# The renderer's requests: what Ruby is asked, what the renderer is answered.

require_relative "helper"

class RequestsTest < LinkTest
  SCENE = ["Iso", *(1..10).map { |i| i * 0.5 }, 1, *(11..16), 0.25, 0.5, 0.75].freeze

  def hex(format, *values) = values.pack(format).unpack1("H*")

  def scene_hex(name, length)
    [name].pack("a16").unpack1("H*") + hex("Q<2", length, 15) +
      hex("e10", *(1..10).map { |i| i * 0.5 }) + "01000000" + hex("l<6", *(11..16)) +
      hex("e3", 0.25, 0.5, 0.75)
  end

  # Puts requests to a receiver at rest and returns what the renderer saw of each.
  def ask(receiver, *asked)
    start(*asked.map { |request| { idle_ms: 5, request: request } }, receiver: receiver)
    poll_until { requests.size == asked.size }
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].inspect
    requests
  end

  # Request, what the callback gives, what the callback is called with, required, answer.
  ANSWERED = [
    [{ code: 102 }, nil, [:on_reload], 0, ""],
    [{ code: 103, floats: [1, 2.5, -3, 4, 5, 6, 7, 8, 9, 10] }, nil,
     [:on_camera_changed_by_gui, [1.0, 2.5, -3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0]], 0, ""],
    [{ code: 105, ints: [2027, -1, 3, 4, 5, 6] }, nil,
     [:on_datetime_updated, [2027.0, -1.0, 3.0, 4.0, 5.0, 6.0]], 0, ""],
    [{ code: 107 }, (1..13).to_a, [:on_request_camera_info], 80, ["e13", *(1..13), "00000000"]],
    [{ code: 108 }, [0.5, 1.5, 2.5, 1, -2, 3, 4, 5, 6, 2**40 + 7], [:on_request_shadow_info], 64,
     ["e3l<7", 0.5, 1.5, 2.5, 1, -2, 3, 4, 5, 6, 7]],
    [{ code: 109 }, 0, [:model_out_of_sync?], 32, "0100000000000000"],
    [{ code: 109 }, false, [:model_out_of_sync?], 32, "0000000000000000"],
    [{ code: 114 }, nil, [:get_use_pbr], 32, "0000000000000000"],
    [{ code: 114 }, "yes", [:get_use_pbr], 32, "0100000000000000"],
    [{ code: 110, name: "夜 🌙", bytes: "010000000203" }, nil, [:save_parameters, "夜 🌙", [6, 1, 770]], 0, ""],
    [{ code: 110, name: "", bytes: "ffffffff" }, nil, [:save_parameters, "", [4, -1]], 0, ""],
    [{ code: 110, name: "none", bytes: "" }, nil, [:save_parameters, "none", [0]], 0, ""],
    [{ code: 112, name: "sun" }, nil, [:remove_attribute, "sun"], 0, ""],
    [{ code: 113, flag: 2 }, nil, [:set_use_pbr, true], 0, ""],
    [{ code: 113, flag: 0 }, nil, [:set_use_pbr, false], 0, ""],
    [{ code: 115 }, 2027, [:get_su_version], 32, ["Q<", 2027]],
    [{ code: 115 }, 2**64 - 1, [:get_su_version], 32, ["Q<", 2**64 - 1]],
    [{ code: 116 }, nil, [:suppress_autosync_once], 0, ""],
    [{ code: 100 }, nil, nil, 0, ""],
    [{ code: 117 }, nil, nil, 0, ""]
  ].freeze

  def test_every_request_reaches_its_method_and_its_answer_the_renderer
    given = ANSWERED.filter_map { |_, value, call,| [value] if call }
    receiver = Receiver.new(Hash.new(->(*) { given.shift.first }))
    seen = ask(receiver, *ANSWERED.map(&:first))
    assert_equal ANSWERED.filter_map { |_, _, call,| call }, receiver.calls
    ANSWERED.zip(seen) do |(request, _, _, required, answer), line|
      wanted = answer.is_a?(Array) ? answer_hex(answer) : answer
      assert line["acknowledged"], request.inspect
      assert_equal [request[:code], required, wanted], line.values_at("result", "required", "answer"), request.inspect
    end
  end

  def answer_hex(answer)
    tail = answer.last.is_a?(String) ? answer.last : ""
    hex(answer[0], *answer[1..].grep(Numeric)) + tail
  end

  def test_parameters_are_loaded_as_they_were_saved
    stored = { "six" => [6, 1, 770], "none" => [0], "nil" => nil, "negative" => [4, -2], "big" => [8, 2**31, 2**32 - 1] }
    receiver = Receiver.new(load_parameters: ->(name) { stored[name] })
    seen = ask(receiver, *stored.keys.map { |name| { code: 111, name: name } })
    answers = seen.map { |line| [line["required"], line["answer"]] }
    head = ->(count) { hex("Q<2", 40, count) }
    assert_equal [46, head[6] + "010000000203"], answers[0]
    assert_equal [40, head[0]], answers[1]
    assert_equal [0, ""], answers[2], "nil was answered"
    assert_equal [44, head[4] + "feffffff"], answers[3]
    assert_equal [48, head[8] + "00000080ffffffff"], answers[4]
  end

  def test_scenes_are_a_table_of_whole_records
    long = "Ansicht über Süd" # 16 bytes would end inside a character
    tables = [[*SCENE, *SCENE], SCENE.first(20), [], [long, *SCENE.drop(1)], ["家" * 6, *SCENE.drop(1)]]
    turn = -1
    receiver = Receiver.new(on_get_scenes: -> { tables[turn += 1] })
    seen = ask(receiver, *tables.map { { code: 106 } })
    head = ->(count) { hex("Q<L<L<", 40, count, 0) }
    assert_equal [264, head[2] + scene_hex("Iso", 3) * 2], seen[0].values_at("required", "answer")
    assert_equal [0, ""], seen[1].values_at("required", "answer")
    assert_equal [0, ""], seen[2].values_at("required", "answer")
    assert_equal [152, head[1] + scene_hex("Ansicht über S", 15)], seen[3].values_at("required", "answer")
    assert_equal [152, head[1] + scene_hex("家" * 5, 15)], seen[4].values_at("required", "answer")
  end

  # Code, capacity that is one byte short, required, and whether Ruby is asked before.
  SHORT = [[106, 151, 152, true], [107, 79, 80, false], [108, 63, 64, false], [109, 24, 32, false],
           [111, 45, 46, true], [114, 31, 32, false], [115, 0, 32, false]].freeze

  def test_a_small_segment_is_told_how_much_is_needed
    receiver = Receiver.new(on_get_scenes: SCENE, load_parameters: [6, 1, 770])
    seen = ask(receiver, *SHORT.map { |code, capacity,| { code: code, capacity: capacity, **(code == 111 ? { name: "n" } : {}) } })
    SHORT.zip(seen) do |(code, _, required, _), line|
      assert_equal [101, required], line.values_at("result", "required"), "request #{code}"
    end
    assert_equal SHORT.filter_map { |code, *, asked| code if asked }.size, receiver.calls.size
    # Nothing of an answer without room is converted, and so nothing of it is told.
    receiver = Receiver.new(on_get_scenes: [nil] * 21, load_parameters: [6, nil, nil])
    text = stderr_of { ask(receiver, { code: 106, capacity: 151 }, { code: 111, capacity: 45, name: "n" }) }
    assert_equal "", text
    assert_equal [[101, 152], [101, 46]], requests.map { |line| line.values_at("result", "required") }
  end

  # A capacity beyond the mapped segment counts as the mapped one.
  def test_a_capacity_that_lies_is_not_believed
    ENV["KVAPP_SEGMENT"] = "4096"
    receiver = Receiver.new(on_get_scenes: SCENE * 100)
    start({ idle_ms: 5, request: { code: 106, capacity: 1 << 40 } }, receiver: receiver)
    poll_until { requests.size == 1 }
    assert_equal [101, 40 + 11_200], requests[0].values_at("result", "required")
  ensure
    ENV.delete("KVAPP_SEGMENT")
  end

  HOSTILE = [
    { code: 110, name: "n", bytes: "0102", byte_count: 0xFFFFFFFF },
    { code: 110, name: "n", bytes: "0102", data_offset: 0xFFFFFFFFFFFFFFFF },
    { code: 110, name: "n", bytes: "0102", data_offset: 1 << 20, byte_count: 1 },
    { code: 110, name: "n", bytes: "0102", name_offset: 1 << 20 },
    { code: 111, name: "n", name_offset: 0xFFFFFFFFFFFFFFF0 },
    { code: 112, data: "2000000000000000", fill: 0x41 },
    { code: 112, name: "n", name_offset: (1 << 20) - 1, fill: 0x41 }
  ].freeze

  def test_offsets_and_counts_outside_the_segment_are_acknowledged_without_a_call
    receiver = Receiver.new
    ask(receiver, *HOSTILE)
    assert_empty receiver.calls
  end

  # What a callback does wrong, and a piece of what is told about it.
  FAILING = {
    on_reload: [{ code: 102 }, -> { raise "no model" }, "on_reload raised RuntimeError: no model"],
    on_request_camera_info: [{ code: 107 }, [1.0] * 12, "ArgumentError: the result has 12 elements, 13 are needed"],
    on_request_shadow_info: [{ code: 108 }, nil, "on_request_shadow_info raised TypeError"],
    on_get_scenes: [{ code: 106 }, [:no_text, *SCENE.drop(1)], "on_get_scenes raised TypeError"],
    load_parameters: [{ code: 111, name: "n" }, [9, 1, 2], "ArgumentError: the result has 3 elements, 4 are needed"],
    get_su_version: [{ code: 115 }, "2027", "get_su_version raised TypeError"],
    model_out_of_sync?: [{ code: 109 }, -> { throw :nowhere }, "UncaughtThrowError"],
    remove_attribute: [{ code: 112, name: "n" }, ->(_) { exit(1) }, "SystemExit"]
  }.freeze

  def test_a_callback_that_fails_is_told_once_and_the_renderer_goes_on
    FAILING.each do |name, (request, fault, told)|
      receiver = Receiver.new(name => fault)
      seen = nil
      text = stderr_of { seen = ask(receiver, request, { code: 113, flag: 1 }) }
      assert_includes text, told
      assert_equal 1, text.scan("raised").size, text
      assert_match(/requests_test\.rb:\d+/, text) if fault.respond_to?(:call)
      assert seen.all? { |line| line["acknowledged"] }, name
      refute_includes seen[0]["answer"].to_s, "ffff"
      assert_equal 0, seen[0]["required"], name
      assert_equal [:set_use_pbr, true], receiver.calls.last
    end
  end

  def test_a_receiver_without_the_method_is_told_too
    text = stderr_of { ask(Object.new, { code: 102 }) }
    assert_includes text, "on_reload raised NoMethodError"
  end

  # The link keeps its receiver alive, whatever Ruby's collector does.
  def test_the_receiver_outlives_every_other_reference
    start({ idle_ms: 300, request: { code: 114 } }, receiver: Receiver.new(get_use_pbr: true))
    20.times { Array.new(20_000) { Object.new } }
    GC.start
    GC.compact if GC.respond_to?(:compact)
    GC.start
    poll_until { requests.size == 1 }
    assert_equal "0100000000000000", requests[0]["answer"]
  end
end

require "minitest/autorun"
