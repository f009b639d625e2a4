// What the link leaves out of the meshes and placements that it is given.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "RendererLink.h"
#include "geometry/MeshSender.h"

namespace quellix {
namespace {

// A mesh at no place is left out by the link, as one that is too large is.
TEST(MeshSender, ALeftOutMeshHasNoPlacements) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("mesh-sender-" + std::to_string(getpid()));
  setenv("KVAPP_OUT", folder.c_str(), 1);
  std::vector<std::uint64_t> leftOut;
  {
    bench::RendererLink renderer(KVAPP_DIR);
    ExportProgress progress(renderer.link);
    MeshSender sender(renderer.link, progress);
    MeshBuffer triangle;
    triangle.vertices.resize(3);
    triangle.triangles = {0, 1, 2, 0, 0};
    const auto at = [](std::uint64_t meshId, float x, std::uint64_t cacheKey) {
      MeshPlacement placement;
      placement.meshId = meshId;
      placement.transform[3][0] = x;
      placement.cacheKey = cacheKey;
      return placement;
    };
    constexpr float kNowhere = std::numeric_limits<float>::quiet_NaN();
    sender.SendMesh(triangle, at(7, kNowhere, 70), 0);
    sender.SendPlacement(at(7, 0, 71));
    sender.SendMesh(triangle, at(8, 0, 80), 0);
    sender.SendPlacement(at(8, kNowhere, 81));
    sender.SendPlacement(at(8, 0, 82));
    sender.SendMesh(triangle, at(7, 0, 72), 0);
    sender.SendPlacement(at(7, 0, 73));
    leftOut = sender.leftOut;
  }
  EXPECT_EQ(leftOut, (std::vector<std::uint64_t>{70, 71, 81}));
  std::vector<std::uint64_t> arrived;
  std::ifstream lines(folder / "commands.jsonl");
  for (std::string line; std::getline(lines, line);) {
    const nlohmann::json command = nlohmann::json::parse(line);
    if (command.at("fields").contains("cacheKey")) {
      arrived.push_back(command.at("fields").at("cacheKey"));
    }
  }
  EXPECT_EQ(arrived, (std::vector<std::uint64_t>{80, 82, 72, 73}));
  std::filesystem::remove_all(folder);
  unsetenv("KVAPP_OUT");
}

}  // namespace
}  // namespace quellix
