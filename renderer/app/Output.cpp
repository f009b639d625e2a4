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

// Whoever looks for the file finds it whole.
void WriteReport(const RunResult& result) {
  const std::filesystem::path file = result.settings.outputFolder / "report.json";
  std::filesystem::path part = file;
  part += ".part";
  WriteText(part, Dump(MakeReport(result)));
  std::filesystem::rename(part, file);
}

bool Attempt(const RunResult& result, const std::function<void()>& write) {
  try {
    write();
    return true;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "KvApp: %s\n", error.what());
    result.troubles.emplace_back(error.what());
    return false;
  }
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
  if (!result.settings.discard) {
    Attempt(result, [&] { WriteGlb(result.scene, folder / "scene.glb"); });
    if (result.settings.writeSceneJson) {
      Attempt(result, [&] { WriteText(folder / "scene.json", Dump(SceneToJson(result.scene))); });
    }
  }
  Attempt(result, [&] { WriteReport(result); });
}

void DrawPicture(const RunResult& result) {
#ifdef _WIN32
  const char* program = "kvpicture.exe";
#else
  const char* program = "kvpicture";
#endif
  const Settings& settings = result.settings;
  const std::filesystem::path& folder = settings.outputFolder;
  if (folder.empty() || settings.discard || !settings.drawPicture || !result.troubles.empty())
    return;
  const bool drawn = Attempt(result, [&] {
    const std::filesystem::path part = folder / "picture.part.png";
    const std::string trouble = RunProgram(
        {Utf8(ProgramFolder() / program), Utf8(folder / "scene.glb"), Utf8(part)}, kPictureLimit);
    if (!trouble.empty()) throw std::runtime_error(trouble);
    std::filesystem::rename(part, folder / "picture.png");
  });
  if (!drawn) Attempt(result, [&] { WriteReport(result); });
}

}  // namespace kvapp
