// What the renderer makes of whatever a page sends, and of whatever a plug-in answers to that.

#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "Target.h"
#include "view/PageMessage.h"

namespace fuzz {

namespace {

constexpr std::size_t kLargest = 1 << 18;
// A name and the most data, with their offsets.
constexpr std::size_t kMostData = (64 << 10) + 400;

bool IsObject(const std::string& text) {
  return nlohmann::json::parse(text, nullptr, false).is_object();
}

}  // namespace

void Run(const std::uint8_t* data, std::size_t size) {
  static GuardedPages pages(kLargest);
  size = std::min(size, kLargest);
  const std::uint8_t* start = pages.Place(data, size);
  const auto message = kvapp::view::ParsePageMessage({reinterpret_cast<const char*>(start), size});
  if (const auto* fault = std::get_if<kvapp::view::PageFault>(&message)) {
    Require(!fault->text.empty() && IsObject(kvapp::view::FaultText(*fault)),
            "what is wrong with a message is told in JSON");
  }
  if (const auto* request = std::get_if<kvapp::view::PageRequest>(&message)) {
    Require(request->request.code >= 102 && request->request.code <= 116,
            "a request has a code that the plug-in knows");
    Require(request->request.data.size() <= kMostData, "a request is no larger than allowed");
    Require(!request->request.capacity, "a page does not choose the segment's capacity");
  }
  for (std::uint32_t code = 102; code <= 116; ++code) {
    const std::span<const std::byte> answer(reinterpret_cast<const std::byte*>(start), size);
    Require(IsObject(kvapp::view::AnswerText(1, code, {true, code, 24 + size, answer})),
            "whatever was answered is told in JSON");
  }
}

std::vector<Bytes> Seeds() {
  std::vector<Bytes> seeds;
  const auto add = [&](std::string_view text) { seeds.emplace_back(text.begin(), text.end()); };
  add(R"({"type":"ack","sequence":12})");
  for (const char* code : {"102", "104", "106", "107", "108", "109", "114", "115", "116"}) {
    add(std::string(R"({"type":"request","id":1,"code":)") + code + "}");
  }
  add(R"({"type":"request","id":2,"code":103,"eye":[1,2,3],"target":[0,0,0],"up":[0,0,1],"fieldOfView":35})");
  add(R"({"type":"request","id":3,"code":105,"date":[2027,6,21,14,30,0]})");
  add(R"({"type":"request","id":4,"code":110,"name":"view","data":"010203"})");
  add(R"({"type":"request","id":5,"code":111,"name":"view"})");
  add(R"({"type":"request","id":6,"code":112,"name":"view"})");
  add(R"({"type":"request","id":7,"code":113,"value":true})");
  // Answers: a table of one scene, and stored bytes.
  Bytes scenes(16 + 112);
  scenes[0] = 40;
  scenes[8] = 1;
  seeds.push_back(scenes);
  seeds.push_back({40, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 1, 2});
  return seeds;
}

}  // namespace fuzz
