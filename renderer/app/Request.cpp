#include "app/Request.h"

#include "app/Fnv.h"

// Request data by fields. Offsets count from the start of the segment, data begins at 24.

namespace kvapp {

using json = nlohmann::ordered_json;

namespace {

template <class Value>
void Append(std::string& data, Value value) {
  data.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// Offsets and counts that lie are part of what a script can say.
std::uint64_t Given(const json& value, const char* field, std::uint64_t honest) {
  return value.contains(field) ? value[field].get<std::uint64_t>() : honest;
}

std::string SaveData(const json& value) {
  constexpr std::uint64_t kName = 48;
  const std::string name = value.value("name", "");
  const std::string bytes = BytesFromHex(value.value("bytes", ""));
  std::string data;
  Append<std::uint64_t>(data, Given(value, "name_offset", kName));
  Append<std::uint64_t>(data, Given(value, "data_offset", kName + name.size() + 1));
  Append<std::uint32_t>(data, static_cast<std::uint32_t>(Given(value, "byte_count", bytes.size())));
  Append<std::uint32_t>(data, 0);
  return data + name + '\0' + bytes;
}

std::string NameData(const json& value) {
  std::string data;
  Append<std::uint64_t>(data, Given(value, "name_offset", 32));
  return data + value["name"].get<std::string>() + '\0';
}

}  // namespace

Request ParseRequest(const json& value) {
  Request request;
  request.code = value.at("code").get<std::uint32_t>();
  if (value.contains("capacity")) request.capacity = value["capacity"].get<std::uint64_t>();
  if (value.contains("fill")) request.fill = value["fill"].get<std::uint8_t>();
  if (value.contains("data")) {
    request.data = BytesFromHex(value["data"].get<std::string>());
  } else if (value.contains("floats")) {
    for (const json& number : value["floats"]) Append(request.data, number.get<float>());
  } else if (value.contains("ints")) {
    for (const json& number : value["ints"]) Append(request.data, number.get<std::int32_t>());
  } else if (value.contains("flag")) {
    Append(request.data, value["flag"].get<std::uint8_t>());
  } else if (value.contains("bytes")) {
    request.data = SaveData(value);
  } else if (value.contains("name")) {
    request.data = NameData(value);
  }
  return request;
}

}  // namespace kvapp
