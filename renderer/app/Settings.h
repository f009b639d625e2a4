#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <optional>
#include <string>

namespace kvapp {

// What the command line and the environment ask for.
struct Settings {
  std::int64_t hostProcess = 0;
  std::filesystem::path outputFolder;           // KVAPP_OUT; empty: nothing is written
  std::filesystem::path scriptFile;             // KVAPP_SCRIPT; empty: none
  std::size_t bytesLogged = 0;                  // KVAPP_BYTES: of each message, in commands.jsonl
  bool writeSceneJson = false;                  // KVAPP_SCENE_JSON
  bool drawPicture = true;                      // KVAPP_PICTURE, unless 0
  bool discard = false;                         // KVAPP_DISCARD: check headers only, keep nothing
  std::chrono::microseconds workPerCommand{0};  // KVAPP_WORK_US
  std::size_t requestSegmentBytes = 1 << 20;    // KVAPP_SEGMENT
  std::optional<std::uint16_t> viewPort;        // KVAPP_VIEW; empty: no page is served
  std::string viewToken;                        // KVAPP_VIEW_TOKEN; empty: a random one
};

// Throws std::runtime_error with one sentence for the user.
Settings ReadSettings(int argumentCount, const char* const* arguments);

}  // namespace kvapp
