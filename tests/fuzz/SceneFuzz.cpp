// What the importer of scene files makes of any text, and of scenes with any values in them.

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <nlohmann/json.hpp>

#include "ModelHost.h"
#include "Target.h"

namespace fuzz {

namespace {

using json = nlohmann::ordered_json;

// A little of everything that a scene can say, small enough to be read thousands of times a minute.
const std::string kSample = R"({
  "name": "Small", "rendering": {"FaceFrontColor": "#ffffff"},
  "camera": {"eye": [4, -6, 3], "target": [1, 1, 0], "fov": 35},
  "layers": ["Walls", {"name": "Draft", "visible": false, "pid": 77}],
  "folders": [{"name": "Site", "layers": ["Trees"], "folders": [{"name": "Far", "visible": false}]}],
  "materials": {
    "Plain": "#e8e2d4",
    "Glass": {"color": "#a0c8e0", "opacity": 0.3, "attributes": {"corvane_II": {"diffuse": 0.8, "hidden": false}}},
    "Brick": {"texture": {"pattern": "brick", "colors": ["#8c3b2a", "#cfc8bd"], "pixels": [8, 4], "size": [32, 16], "cells": 2}, "colorize": [20, 0.1, -0.1]},
    "Rows": {"texture": {"rows": ["ab", "ba"], "palette": {"a": "#000000", "b": "#ffffff80"}, "bits": 32}},
    "Metal": {"metallic": {"factor": 0.5, "texture": {"pattern": "noise", "pixels": [4, 4]}}, "roughness": 0.25, "normal": 1}
  },
  "components": {
    "Door": {"entities": [{"box": [[0, 0, 0], [36, 2, 80]], "front": "Plain"}], "cuts_opening": true},
    "Lamp": {"faces_camera": true, "entities": [{"sphere": [0, 0, 0], "radius": 2, "sides": 5}],
             "attributes": {"corvane_II": {"light-type": "point", "light-power": 40.0}}}
  },
  "entities": [
    {"face": [[0, 0, 0], [20, 0, 0], [20, 0, 10], [0, 0, 10]], "holes": [[[2, 0, 3], [6, 0, 3], [6, 0, 7], [2, 0, 7]]],
     "front": "Brick", "back": "Rows", "layer": "Walls", "uv": [[0, 0, 0, 0, 0], [20, 0, 0, 1, 0], [0, 0, 10, 0, 1], [20, 0, 10, 1, 1.5]]},
    {"mesh": {"points": [[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1]], "faces": [[0, 1, 2], {"face": [0, 1, 3]}]}, "smooth": 35},
    {"mesh": "soft", "points": [[0, 0, 5], [1, 0, 5], [0, 1, 6], [1, 1, 5]], "faces": [[0, 1, 3, 2]], "uvs": [[0, 0], [1, 0], [0, 1], [1, 1]]},
    {"extrude": [[0, 0, 0], [9, 0, 0], [5, 0, 6]], "by": [0, 2, 0]},
    {"cylinder": [0, 0, 9], "radius": 2, "height": 4, "top_radius": 0, "sides": 6},
    {"edge": [[0, 0, 0], [5, 5, 5]], "soft": true},
    {"instance": "Door", "at": [10, -1, 0], "rotate": [[0, 0, 1, 90], 45], "scale": [1, -2, 1], "name": "front"},
    {"instance": "Lamp", "matrix": [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 3, 4, 5, 1], "hidden": true},
    {"group": "roof", "at": [0, 0, 10], "material": "Glass", "entities": [{"group": "in", "entities": [{"box": [[0, 0, 0], [1, 1, 1]]}]}]},
    {"image": {"pattern": "checker", "pixels": [2, 2]}, "size": [4, 4], "as": "picture"},
    {"image": {"pattern": "checker", "pixels": [2, 2]}, "size": [4, 4], "as": "picture", "at": [0, 0, 3]}
  ],
  "attributes": {"d": {"i": 1, "f": {"float": 0.5}, "t": {"time": 5}, "c": {"color": "#010203"}, "v": {"vector": [1, 2, 3]}, "l": [1, "a"]}}
})";

std::string FilePath() {
  static const std::string path = [] {
    const auto folder = std::filesystem::temp_directory_path();
    return (folder / ("fuzz-scene-" + std::to_string(getpid()) + ".json")).string();
  }();
  return path;
}

void Collect(json& value, std::vector<json*>& nodes) {
  nodes.push_back(&value);
  if (value.is_structured()) {
    for (json& child : value) Collect(child, nodes);
  }
}

// A value of the kind that the edit asks for; numbers stay where a test can afford their size.
json Replacement(std::uint8_t kind, std::uint8_t amount, const json& other) {
  switch (kind % 12) {
    case 0:
      return nullptr;
    case 1:
      return amount % 2 == 0;
    case 2:
      return amount - 128;
    case 3:
      return (amount - 128.0) * 1e300;
    case 4:
      return amount * 1e-320;
    case 5:
      return std::string(amount, 'x');
    case 6:
      return json::array();
    case 7:
      return json::object();
    case 8:
      return json::array({amount, -1, 1e20});
    case 9:
      return "#12345678";
    case 10:
      return 4294967296.0 * amount;
    default:
      return other;
  }
}

// The sample with values replaced and exchanged, four bytes an edit.
std::string Edited(const std::uint8_t* data, std::size_t size) {
  static const json sample = json::parse(kSample);
  json scene = sample;
  for (std::size_t i = 0; i + 4 <= size && i < 32; i += 4) {
    std::vector<json*> nodes;
    Collect(scene, nodes);
    std::uint16_t at = 0;
    std::memcpy(&at, data + i, sizeof at);
    const json other = *nodes[(at * 7u + data[i + 3]) % nodes.size()];
    *nodes[at % nodes.size()] = Replacement(data[i + 2], data[i + 3], other);
  }
  return scene.dump();
}

}  // namespace

void Run(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return;
  const std::string text = data[0] % 2 == 0
                               ? std::string(reinterpret_cast<const char*>(data + 1), size - 1)
                               : Edited(data + 1, size - 1);
  std::ofstream(FilePath(), std::ios::binary | std::ios::trunc) << text;
  SUModelRef model = SU_INVALID;
  SUStringRef message = SU_INVALID;
  SUStringCreate(&message);
  const SUResult result = modelhost_load(FilePath().c_str(), &model, &message);
  std::size_t length = 0;
  SUStringGetUTF8Length(message, &length);
  SUStringRelease(&message);
  Require(result == SU_ERROR_NONE || length > 0, "a refused scene is told why");
  if (SUIsValid(model)) SUModelRelease(&model);
  Require(modelhost_owned_objects() == 0, "an import keeps nothing");
  std::filesystem::remove(FilePath());
}

std::vector<Bytes> Seeds() {
  std::vector<Bytes> seeds;
  for (std::uint8_t i = 0; i < 60; ++i) {
    seeds.push_back({1, static_cast<std::uint8_t>(i * 37), static_cast<std::uint8_t>(i % 4), i, i,
                     static_cast<std::uint8_t>(i * 11), static_cast<std::uint8_t>(i % 3), 11, i});
  }
  for (
      const std::string& text :
      {kSample, std::string("{}"),
       std::string(R"({"entities": [{"face": [[0,0,0],[1,0,0],[0,1,0]], "uv": [[0,0,0,0,0]]}]})"),
       std::string(
           R"({"components": {"A": {"entities": [{"box": [[0,0,0],[1,1,1]]}]}}, "entities": [{"instance": "A", "at": [0,0,0]}]})"),
       std::string(400, '['),
       std::string(R"({"entities": [{"sphere": [0,0,0], "radius": 1, "sides": 5}]})")}) {
    seeds.emplace_back(1, 0);
    seeds.back().insert(seeds.back().end(), text.begin(), text.end());
  }
  return seeds;
}

}  // namespace fuzz
