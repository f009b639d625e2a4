#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "ScriptedHost.h"
#include "geometry/TessValidation.h"

namespace quellix {
namespace {

struct Outcome {
  std::string printed;
  int status;
};

// Runs the program with `environment` ("A=1 B=2") and no other switch.
Outcome RunSerialChoice(const std::string& environment) {
  std::FILE* pipe = popen(("env " + environment + " " SERIAL_CHOICE).c_str(), "r");
  Outcome outcome{{}, -1};
  char piece[256];
  while (pipe != nullptr && std::fgets(piece, sizeof piece, pipe) != nullptr) {
    outcome.printed += piece;
  }
  if (pipe != nullptr) outcome.status = pclose(pipe);
  return outcome;
}

struct TemporaryFile {
  std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("qlx_dump_test_" + std::to_string(getpid()));
  TemporaryFile() { std::filesystem::remove(path); }
  ~TemporaryFile() { std::filesystem::remove(path); }
  std::string Text() const {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }
};

// The dump "@" stands for a file.
TEST(SerialPath, ChoosesTheTriangulationBySwitches) {
  struct Case {
    const char* environment;
    const char* printed;
  };
  const Case cases[] = {
      {"-u QUELLIX_OWN_TESS", "4 3 helpers=1 compared=0\n"},
      {"QUELLIX_OWN_TESS=", "4 3 helpers=1 compared=0\n"},
      {"QUELLIX_OWN_TESS=00", "4 3 helpers=1 compared=0\n"},
      {"QUELLIX_OWN_TESS=false", "4 3 helpers=1 compared=0\n"},
      {"QUELLIX_OWN_TESS=0", "3 3 helpers=2 compared=0\n"},
      {"QUELLIX_TESS_VALIDATE=", "4 3 helpers=1 compared=0\n"},
      {"QUELLIX_TESS_VALIDATE=@", "4 3 helpers=2 compared=1\n"},
      {"QUELLIX_TESS_VALIDATE=@ QUELLIX_OWN_TESS=0", "3 3 helpers=2 compared=1\n"},
      {"QUELLIX_TESS_VALIDATE=/nowhere/at/all", "4 3 helpers=2 compared=1\n"},
      {"QUELLIX_TESS_PROBE=@", "4 3 helpers=1 compared=0\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.environment);
    TemporaryFile file;
    std::string environment = c.environment;
    if (const auto at = environment.find('@'); at != std::string::npos) {
      environment.replace(at, 1, file.path.string());
    }
    const Outcome outcome = RunSerialChoice(environment);
    EXPECT_EQ(outcome.printed, c.printed);
    EXPECT_EQ(outcome.status, 0);
  }
}

TEST(ValidationDump, WritesDifferencesAndASummaryAndAppends) {
  TemporaryFile file;
  const std::string once =
      "face=1 tri=2/1 vert=4/3 area=4.000000/2.000000 (rel=1.000e+00) maxNormalDeg=0.0000 "
      "unmatched=0\n"
      "=== tess validate (reload=1): faces=1 triMismatch=1 vertMismatch=1 areaMismatch=1 "
      "(maxRel=1.000e+00) normalUnmatched=0 maxNormalDeg=0.0000 ===\n";
  RunSerialChoice("QUELLIX_TESS_VALIDATE=" + file.path.string());
  EXPECT_EQ(file.Text(), once);
  RunSerialChoice("QUELLIX_TESS_VALIDATE=" + file.path.string());
  EXPECT_EQ(file.Text(), once + once);
}

TEST(ProbeDump, DescribesEachFaceThatWentThroughTheHelper) {
  const std::string edges =
      "[{\"smooth\":true,\"soft\":false,\"v0\":[0,0,0],\"v1\":[2,0,0]},"
      "{\"smooth\":false,\"soft\":true,\"v0\":[2,0,0],\"v1\":[2,2,0]},"
      "{\"smooth\":false,\"soft\":false,\"v0\":[2,2,0],\"v1\":[0,2,0]},"
      "{\"smooth\":false,\"soft\":false,\"v0\":[0,2,0],\"v1\":[0,0,0]}]";
  const std::string helper =
      "\"mh\":{\"verts\":[[0,0,0],[2,0,0],[2,2,0]],\"normals\":[[0,0,1],[0,0,1],[0,0,1]],"
      "\"tris\":[0,1,2]}}\n";
  const std::string first =
      "{\"face\":1,\"plane\":[0,0,1,-0],\"openings\":0,\"outer\":{\"winding\":\"ccw\","
      "\"verts\":[[0,0,0],[2,0,0],[2,2,0],[0,2,0]],\"edges\":" +
      edges + "},\"inner\":[]," + helper;
  {
    TemporaryFile file;
    RunSerialChoice("QUELLIX_OWN_TESS=0 QUELLIX_TESS_PROBE=" + file.path.string());
    const std::string text = file.Text();
    EXPECT_EQ(text.substr(0, text.find('\n') + 1), first);
    EXPECT_NE(text.find("\n{\"face\":2,\"plane\":[0,0,0,0],"), std::string::npos) << text;
  }
  TemporaryFile file;
  RunSerialChoice("QUELLIX_TESS_PROBE=" + file.path.string());
  EXPECT_EQ(file.Text().rfind("{\"face\":2,", 0), 0u) << "only the face that needed the helper";
}

TessMesh Square(double z = 0.0) {
  return {{{0, 0, z}, {1, 0, z}, {1, 1, z}, {0, 1, z}}, {4, Point(0, 0, 1)}, {0, 1, 2, 0, 2, 3}};
}

TEST(ValidateTessellation, CountsWhatDiffers) {
  struct Case {
    const char* what;
    void (*change)(TessMesh& host);
    ValidationCounters wanted;  // after one face
  };
  const Case cases[] = {
      {"other diagonal",
       [](TessMesh& m) { m.indexes = {0, 1, 3, 1, 2, 3}; },
       {1, 0, 0, 0, 0, 0, 0}},
      {"position off by a quantum",
       [](TessMesh& m) { m.positions[2].x += 2e-6; },
       {1, 0, 0, 0, 1e-6, 1, 0}},
      {"normal off by two degrees",
       [](TessMesh& m) {
         m.normals[1] = {std::sin(M_PI / 90), 0, std::cos(M_PI / 90)};
       },
       {1, 0, 0, 0, 0, 0, 2}},
      {"normal without direction", [](TessMesh& m) { m.normals[1] = {}; }, {1, 0, 0, 0, 0, 0, 0}},
      {"fewer triangles", [](TessMesh& m) { m.indexes.resize(3); }, {1, 1, 0, 1, 1, 0, 0}},
  };
  scripted::Host host;
  scripted::Face* face = host.AddFace(Square().positions);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    ResetValidation();
    TessMesh changed = Square();
    c.change(changed);
    ValidateTessellation(face->ref(), Square(), changed);
    const ValidationCounters& got = ValidationTotals();
    EXPECT_EQ(got.faces, c.wanted.faces);
    EXPECT_EQ(got.triMismatch, c.wanted.triMismatch);
    EXPECT_EQ(got.vertMismatch, c.wanted.vertMismatch);
    EXPECT_EQ(got.areaMismatch, c.wanted.areaMismatch);
    EXPECT_NEAR(got.maxRel, c.wanted.maxRel, 1e-7);
    EXPECT_EQ(got.normalUnmatched, c.wanted.normalUnmatched);
    EXPECT_NEAR(got.maxNormalDeg, c.wanted.maxNormalDeg, 1e-5);
  }
}

}  // namespace
}  // namespace quellix
