// What the link leaves out by itself, and says so in the timing log; what that log and the digest
// say of commands that were held.

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "LinkFixture.h"
#include "link/IpcDigest.h"
#include "link/IpcStats.h"

namespace quellix {
namespace {

class LeftOut : public LinkTest {
 protected:
  void SetUp() override {
    LinkTest::SetUp();
    // Read with the first line, so one test has the program to itself.
    setenv("QUELLIX_PERF_LOG_FILE", (folder / "log.txt").c_str(), 1);
    setenv("QUELLIX_IPC_DIGEST", (folder / "digest.txt").c_str(), 1);
  }

  // The lines of a file that have those words in them.
  std::vector<std::string> Lines(const char* file, const std::string& words) const {
    std::vector<std::string> lines;
    std::ifstream log(folder / file);
    for (std::string line; std::getline(log, line);) {
      if (line.find(words) != std::string::npos) lines.push_back(line);
    }
    return lines;
  }
};

TEST_F(LeftOut, AMeshBeyondOneCommandAndWhatHasNoPlace) {
  Start();
  const float place[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  float nowhere[16] = {};
  nowhere[15] = std::numeric_limits<float>::quiet_NaN();
  // A record of 112 bytes and 40 a vertex: just above 2 GiB. Nothing of it is read.
  link.AppendMesh(7, place, 53'687'089, nullptr, 0, nullptr, 0, false, 1);
  link.AppendMesh(8, nowhere, 3, nullptr, 1, nullptr, 0, false, 1);
  link.InstanciateMesh(8, nowhere, 9);
  link.SetMessage("the link goes on");
  const std::vector<nlohmann::json> received = Received();
  ASSERT_EQ(received.size(), 2u);
  EXPECT_EQ(received[0].at("name"), "SetMessage");
  std::vector<std::string> lines = Lines("log.txt", "left out");
  ASSERT_EQ(lines.size(), 3u);
  // Behind the time of day.
  for (std::string& line : lines) line.erase(0, 20);
  EXPECT_EQ(lines[0].rfind("AppendMesh: mesh 7 left out, its 21474836", 0), 0u) << lines[0];
  EXPECT_EQ(lines[1], "AppendMesh: 8 left out, its place is no number");
  EXPECT_EQ(lines[2], "InstanciateMesh: 9 left out, its place is no number");
}

// Interrupts a command with commands that the log and the digest know.
class HoldingReceiver : public SilentReceiver {
 public:
  explicit HoldingReceiver(IpcInterface& linkToUse) : link(linkToUse) {}
  void OnReload() override {
    const float color[3] = {1, 1, 1};
    for (int i = 0; i < 5; ++i) {
      const float position[4] = {static_cast<float>(i), 0, 0, 1};
      link.AppendOmniLight(color, position);
    }
    // Larger than the segment, and gone when this returns.
    const std::vector<unsigned char> pixels(4096 * 5120 * 4, 7);
    ClassicMaterialRecord material;
    material.index = 0;
    material.key = 0xFFFFFFFF;
    material.hasTexture = true;
    material.textureName = material.name = material.materialType = "held";
    material.texture = {4096, 5120, pixels.size(), pixels.data()};
    link.AppendMaterial(material);
    link.PrepareRendering(true);
    held = link.WouldHold();
  }
  IpcInterface& link;
  bool held = false;
};

TEST_F(LeftOut, HeldCommandsKeepTheirDigestTheirBytesAndTheirLine) {
  HoldingReceiver holding(link);
  Start(R"([{"command": "GetLinkCamera", "request": 102}])", &holding);
  DigestReset();
  StatsReset();
  link.GetLinkCamera();
  EXPECT_TRUE(holding.held);
  link.SetMessage("behind them");
  DigestDump(false);
  StatsDump();
  EXPECT_EQ(Received().size(), 11u);  // with MemoryDestroyed and CloseApp
  const nlohmann::json digests = Report().at("digests");
  for (const char* name : {"AppendOmniLight", "AppendMaterial"}) {
    const std::vector<std::string> lines = Lines("digest.txt", name);
    ASSERT_EQ(lines.size(), 1u) << name;
    EXPECT_NE(lines[0].find("xor=" + digests.at(name).at("xor").get<std::string>()),
              std::string::npos)
        << lines[0] << " and " << digests.at(name);
  }
  EXPECT_EQ(Lines("log.txt", "ipc PrepareRendering(reload=1)").size(), 1u);
  ASSERT_EQ(Lines("log.txt", "ipc AppendMaterial ").size(), 1u);
  EXPECT_NE(Lines("log.txt", "ipc AppendMaterial ")[0].find("bytes=80.00MB"), std::string::npos);
  link.PrepareRendering(false);
  EXPECT_EQ(Lines("log.txt", "ipc PrepareRendering(reload=0)").size(), 0u) << "it was not sent";
}

}  // namespace
}  // namespace quellix
