#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "app/CommandLog.h"
#include "app/Findings.h"
#include "app/Scene.h"
#include "app/Settings.h"

namespace kvapp {

struct RequestCounts {
  std::uint64_t posted = 0;
  std::uint64_t acknowledged = 0;
};

struct RunResult {
  const Settings& settings;
  Scene& scene;
  const CommandLog& log;
  Findings& findings;
  RequestCounts requests;
  std::string exitReason;
  std::vector<std::string>& troubles;  // what could not be written
};

// Writes scene.glb, scene.json and report.json as the settings ask. What cannot be written is said
// in one sentence on standard error and in the report; nothing throws.
void WriteOutputs(const RunResult& result);

// Draws the scene.glb that was written, if a picture is wanted: seconds. The picture gets its name
// when it is complete. A picture that cannot be drawn is told as above.
void DrawPicture(const RunResult& result);

// scene-<number>.json.
void WriteSceneJson(Scene& scene, const std::filesystem::path& folder, std::uint64_t number);

}  // namespace kvapp
