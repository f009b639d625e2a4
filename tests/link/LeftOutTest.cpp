// What the link leaves out by itself, and says so in the timing log.

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "LinkFixture.h"

namespace quellix {
namespace {

class LeftOut : public LinkTest {
 protected:
  void SetUp() override {
    LinkTest::SetUp();
    // Read with the first line, so one test has the program to itself.
    setenv("QUELLIX_PERF_LOG_FILE", (folder / "log.txt").c_str(), 1);
  }

  // What stands behind the time of day in the lines that tell of something left out.
  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    std::ifstream log(folder / "log.txt");
    for (std::string line; std::getline(log, line);) {
      if (line.find("left out") != std::string::npos) lines.push_back(line.substr(20));
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
  const std::vector<std::string> lines = Lines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].rfind("AppendMesh: mesh 7 left out, its 21474836", 0), 0u) << lines[0];
  EXPECT_EQ(lines[1], "AppendMesh: 8 left out, its place is no number");
  EXPECT_EQ(lines[2], "InstanciateMesh: 9 left out, its place is no number");
}

}  // namespace
}  // namespace quellix
