#include "view/PageMessage.h"

#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include "app/Fnv.h"
#include "link/WireRecords.h"

namespace kvapp::view {

namespace wire = quellix::wire;
using json = nlohmann::json;
using wire::RequestCode;

namespace {

constexpr std::uint64_t kLargestId = (1ull << 53) - 1;
constexpr std::size_t kLongestName = 255;
constexpr std::size_t kMostDataBytes = 64 << 10;

// The fields that each request has besides its type, id and code.
std::vector<const char*> FieldsOf(RequestCode code) {
  switch (code) {
    case RequestCode::CameraChanged:
      return {"eye", "target", "up", "fieldOfView"};
    case RequestCode::DateTimeUpdated:
      return {"date"};
    case RequestCode::SaveParameters:
      return {"name", "data"};
    case RequestCode::LoadParameters:
    case RequestCode::RemoveAttribute:
      return {"name"};
    case RequestCode::SetUsePbr:
      return {"value"};
    default:
      return {};
  }
}

[[noreturn]] void Wrong(const std::string& field, const char* wanted) {
  throw std::runtime_error(field + " is wrong, wanted " + wanted);
}

std::uint64_t Whole(const json& message, const char* field) {
  const auto value = message.find(field);
  if (value == message.end() || !value->is_number_unsigned() || *value > kLargestId) {
    Wrong(field, "a whole number of 0 to 2^53 - 1");
  }
  return *value;
}

float Float(const json& value, const char* field) {
  const double number = value.is_number() ? value.get<double>() : HUGE_VAL;
  if (!(std::abs(number) <= std::numeric_limits<float>::max())) Wrong(field, "finite numbers");
  return static_cast<float>(number);
}

json CameraFloats(const json& message) {
  json floats = json::array();
  for (const char* field : {"eye", "target", "up"}) {
    const json& vector = message[field];
    if (!vector.is_array() || vector.size() != 3) Wrong(field, "three numbers");
    for (const json& value : vector) floats.push_back(Float(value, field));
  }
  const float angle = Float(message["fieldOfView"], "fieldOfView");
  if (!(angle > 0 && angle < 180)) Wrong("fieldOfView", "degrees above 0 and below 180");
  floats.push_back(angle);
  return floats;
}

json DateInts(const json& date) {
  constexpr std::array<std::pair<int, int>, 6> kRanges = {
      {{1, 9999}, {1, 12}, {1, 31}, {0, 23}, {0, 59}, {0, 59}}};
  constexpr char kWanted[] = "[year, month, day, hour, minute, second]";
  if (!date.is_array() || date.size() != kRanges.size()) Wrong("date", kWanted);
  for (std::size_t i = 0; i < kRanges.size(); ++i) {
    const auto [low, high] = kRanges[i];
    if (!date[i].is_number_integer() || date[i] < low || date[i] > high) Wrong("date", kWanted);
  }
  return date;
}

std::string Name(const json& value) {
  const std::string name = value.is_string() ? value.get<std::string>() : std::string();
  if (name.empty() || name.size() > kLongestName || name.find('\0') != std::string::npos) {
    Wrong("name", "a text of 1 to 255 bytes");
  }
  return name;
}

std::string Hex(const json& value) {
  const std::string digits = value.is_string() ? value.get<std::string>() : "?";
  if (digits.size() % 2 != 0 || digits.size() > 2 * kMostDataBytes ||
      digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
    Wrong("data", "up to 64 KiB as hexadecimal digits");
  }
  return digits;
}

// The description that a script would give of the same request.
nlohmann::ordered_json Described(const json& message, std::uint32_t code) {
  nlohmann::ordered_json request = {{"code", code}};
  switch (static_cast<RequestCode>(code)) {
    case RequestCode::CameraChanged:
      request["floats"] = CameraFloats(message);
      break;
    case RequestCode::DateTimeUpdated:
      request["ints"] = DateInts(message["date"]);
      break;
    case RequestCode::SaveParameters:
      request["bytes"] = Hex(message["data"]);
      [[fallthrough]];
    case RequestCode::LoadParameters:
    case RequestCode::RemoveAttribute:
      request["name"] = Name(message["name"]);
      break;
    case RequestCode::SetUsePbr:
      if (!message["value"].is_boolean()) Wrong("value", "true or false");
      request["flag"] = message["value"].get<bool>() ? 1 : 0;
      break;
    default:
      break;
  }
  return request;
}

void CheckFields(const json& message, std::vector<const char*> fields) {
  for (const char* field : fields) {
    if (!message.contains(field)) throw std::runtime_error(std::string(field) + " is missing");
  }
  if (message.size() != fields.size()) throw std::runtime_error("the message has unknown fields");
}

PageRequest ReadRequest(const json& message) {
  const std::uint64_t code = Whole(message, "code");
  if (code < 102 || code > 116) Wrong("code", "102 to 116");
  const auto requestCode = static_cast<std::uint32_t>(code);
  std::vector<const char*> fields = FieldsOf(static_cast<RequestCode>(requestCode));
  fields.insert(fields.end(), {"type", "id", "code"});
  CheckFields(message, std::move(fields));
  return {Whole(message, "id"), ParseRequest(Described(message, requestCode))};
}

}  // namespace

PageMessage ParsePageMessage(std::string_view text) {
  PageFault fault;
  try {
    if (text.size() > kMostMessageBytes) throw std::runtime_error("the message is too long");
    const json message = json::parse(text, nullptr, false);
    if (!message.is_object()) throw std::runtime_error("the message is no JSON object");
    const auto id = message.find("id");
    if (id != message.end() && id->is_number_unsigned()) fault.id = id->get<std::uint64_t>();
    const auto type = message.find("type");
    if (type != message.end() && *type == "request") return ReadRequest(message);
    if (type == message.end() || *type != "ack") Wrong("type", "\"ack\" or \"request\"");
    CheckFields(message, {"type", "sequence"});
    return PageAck{Whole(message, "sequence")};
  } catch (const std::exception& error) {
    fault.text = error.what();
  }
  return fault;
}

namespace {

// Reads an answer piece by piece; what is behind its end throws.
class AnswerReader {
 public:
  explicit AnswerReader(std::span<const std::byte> answer) : answer_(answer) {}

  template <class Value>
  Value Get() {
    Value value;
    Copy(&value, sizeof value);
    return value;
  }
  template <class Value>
  json List(std::size_t count) {
    json list = json::array();
    for (std::size_t i = 0; i < count; ++i) list.push_back(Get<Value>());
    return list;
  }
  // Offsets count from the start of the segment; answers begin at 24.
  void GoTo(std::uint64_t offset) {
    if (offset < sizeof(wire::RequestHeader)) throw std::runtime_error("");
    at_ = offset - sizeof(wire::RequestHeader);
  }
  std::string Bytes(std::uint64_t count) {
    if (count > answer_.size()) throw std::runtime_error("");
    std::string bytes(static_cast<std::size_t>(count), '\0');
    Copy(bytes.data(), bytes.size());
    return bytes;
  }

 private:
  void Copy(void* to, std::size_t size) {
    if (at_ > answer_.size() || size > answer_.size() - at_) throw std::runtime_error("");
    if (size > 0) std::memcpy(to, answer_.data() + at_, size);
    at_ += size;
  }

  std::span<const std::byte> answer_;
  std::uint64_t at_ = 0;
};

json ReadCamera(AnswerReader& reader) {
  json camera;
  for (const char* field : {"eye", "target", "up"}) camera[field] = reader.List<float>(3);
  camera["fieldOfView"] = reader.Get<float>();
  return camera;
}

json ReadScenes(AnswerReader& reader) {
  const auto header = reader.Get<wire::ScenesAnswer>();
  reader.GoTo(header.tableOffset);
  json scenes = json::array();
  for (std::uint32_t i = 0; i < header.count; ++i) {
    const auto record = reader.Get<wire::SceneRecord>();
    const auto vector = [&](std::size_t from) {
      return json{record.values[from], record.values[from + 1], record.values[from + 2]};
    };
    scenes.push_back({{"name", std::string(record.name, strnlen(record.name, sizeof record.name))},
                      {"camera",
                       {{"eye", vector(0)},
                        {"target", vector(3)},
                        {"up", vector(6)},
                        {"fieldOfView", record.values[9]}}},
                      {"shadows", record.flag != 0},
                      {"date", record.integers},
                      {"towardsSun", record.lastValues}});
  }
  return scenes;
}

json ReadAnswer(RequestCode code, bool written, AnswerReader reader) {
  switch (code) {
    case RequestCode::GetScenes:
      return {{"scenes", written ? ReadScenes(reader) : json::array()}};
    case RequestCode::CameraInfo: {
      json camera = ReadCamera(reader);
      camera["towardsSun"] = reader.List<float>(3);
      return {{"camera", camera}};
    }
    case RequestCode::ShadowInfo: {
      json answer = {{"towardsSun", reader.List<float>(3)}};
      answer["date"] = reader.List<std::int32_t>(6);
      answer["shadows"] = reader.Get<std::int32_t>() != 0;
      return answer;
    }
    case RequestCode::ModelOutOfSync:
    case RequestCode::GetUsePbr:
      return {{"value", reader.Get<std::uint8_t>() != 0}};
    case RequestCode::LoadParameters: {
      if (!written) return {{"data", nullptr}};
      const auto header = reader.Get<wire::LoadParametersAnswer>();
      reader.GoTo(header.dataOffset);
      const std::string bytes = reader.Bytes(header.byteCount);
      return {{"data", HexText(std::as_bytes(std::span(bytes)))}};
    }
    case RequestCode::GetSuVersion:
      return {{"version", reader.Get<std::uint64_t>()}};
    default:
      return json::object();
  }
}

// A plug-in's text need not be UTF-8.
std::string Dump(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace

std::string AnswerText(std::uint64_t id, std::uint32_t code, const RequestResult& result) {
  if (!result.acknowledged) return RefusalText(id, code, "the session ended");
  if (result.code == static_cast<std::uint32_t>(RequestCode::ReplyTooLarge)) {
    return RefusalText(id, code,
                       "the answer has " + std::to_string(result.required) +
                           " bytes and does not fit into the renderer's segment");
  }
  try {
    json answer = ReadAnswer(static_cast<RequestCode>(code), result.required > 0,
                             AnswerReader(result.answer));
    answer.update({{"type", "answer"}, {"id", id}, {"code", code}});
    return Dump(answer);
  } catch (const std::runtime_error&) {
    return RefusalText(id, code, "the plug-in gave no answer of this kind");
  }
}

std::string RefusalText(std::uint64_t id, std::uint32_t code, const std::string& why) {
  return Dump({{"type", "answer"}, {"id", id}, {"code", code}, {"error", why}});
}

std::string FaultText(const PageFault& fault) {
  json message = {{"type", "error"}, {"text", fault.text}};
  if (fault.id) message["id"] = *fault.id;
  return Dump(message);
}

}  // namespace kvapp::view
