#include "app/Output.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <vector>

#include "app/GlbWriter.h"
#include "app/Paths.h"
#include "app/Platform.h"
#include "app/Report.h"
#include "app/SceneJson.h"

namespace kvapp {

namespace {

constexpr std::chrono::seconds kPictureLimit{240};

void WriteText(const std::filesystem::path& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << text << '\n';
  stream.close();
  if (!stream) throw std::runtime_error(Utf8(file) + " cannot be written");
}

std::string Dump(const nlohmann::json& value) {
  return value.dump(1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void DrawPicture(const std::filesystem::path& folder) {
#ifdef _WIN32
  const char* program = "kvpicture.exe";
#else
  const char* program = "kvpicture";
#endif
  const std::string trouble = RunProgram(
      {Utf8(ProgramFolder() / program), Utf8(folder / "scene.glb"), Utf8(folder / "picture.png")},
      kPictureLimit);
  if (!trouble.empty()) throw std::runtime_error(trouble);
}

}  // namespace

void WriteSceneJson(Scene& scene, const std::filesystem::path& folder, std::uint64_t number) {
  if (folder.empty()) return;
  try {
    WriteText(folder / ("scene-" + std::to_string(number) + ".json"), Dump(SceneToJson(scene)));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "KvApp: %s\n", error.what());
  }
}

void WriteOutputs(const RunResult& result) {
  const std::filesystem::path& folder = result.settings.outputFolder;
  if (folder.empty()) return;
  result.scene.Settle();
  std::vector<std::string> troubles;
  const auto attempt = [&](const std::function<void()>& write) {
    try {
      write();
      return true;
    } catch (const std::exception& error) {
      std::fprintf(stderr, "KvApp: %s\n", error.what());
      troubles.emplace_back(error.what());
      return false;
    }
  };
  if (!result.settings.discard) {
    const bool written = attempt([&] { WriteGlb(result.scene, folder / "scene.glb"); });
    if (written && result.settings.drawPicture) attempt([&] { DrawPicture(folder); });
    if (result.settings.writeSceneJson) {
      attempt([&] { WriteText(folder / "scene.json", Dump(SceneToJson(result.scene))); });
    }
  }
  attempt([&] { WriteText(folder / "report.json", Dump(MakeReport(result, troubles))); });
}

}  // namespace kvapp
