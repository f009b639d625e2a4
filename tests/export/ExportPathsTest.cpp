// The same scene must leave by every path. Each run is a process of its own (see ExportRun.cpp)
// with a stand-in renderer as its peer; what is compared is the digest that the sender kept of
// every export, and the digest that the renderer worked out from what arrived.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace quellix {
namespace {

namespace fs = std::filesystem;

struct Outcome {
  int status = -1;
  std::string digest;  // of all exports, as it stands in the file
  nlohmann::json report;
  std::string log;  // the timing log
  // Calls for face data while another thread was in one.
  std::size_t overlaps = 0;
  // What arrived of the geometry, in order: a command's name and its digest.
  std::vector<std::string> arrived;
};

class ExportPaths : public testing::Test {
 protected:
  void SetUp() override {
    folder = fs::temp_directory_path() / ("export-paths-" + std::to_string(getpid()));
    fs::remove_all(folder);
    fs::create_directories(folder);
  }
  void TearDown() override { fs::remove_all(folder); }

  static std::string Text(const fs::path& file) {
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }

  // `environment`: "A=1 B=2".
  Outcome Export(const std::string& model, const std::string& environment, unsigned threads = 2) {
    const fs::path out = folder / std::to_string(runs++);
    fs::create_directories(out);
    const std::string command = "env KVAPP_PICTURE=0 KVAPP_OUT=" + out.string() +
                                " QUELLIX_IPC_DIGEST=" + (out / "digest.txt").string() +
                                " QUELLIX_PERF_LOG_FILE=" + (out / "log.txt").string() + " " +
                                environment + " " EXPORT_RUN " " KVAPP_DIR " " +
                                std::to_string(threads) + " '" + model + "' >" +
                                (out / "printed.txt").string();
    Outcome run;
    run.status = std::system(command.c_str());
    run.digest = Text(out / "digest.txt");
    run.log = Text(out / "log.txt");
    long before = 0;
    long after = 0;
    std::ifstream(out / "printed.txt") >> before >> after >> run.overlaps;
    const std::string report = Text(out / "report.json");
    if (!report.empty()) run.report = nlohmann::json::parse(report);
    run.arrived = Geometry(out / "commands.jsonl");
    return run;
  }

  static std::vector<std::string> Geometry(const fs::path& file) {
    std::vector<std::string> commands;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
      const nlohmann::json command = nlohmann::json::parse(line);
      const std::string name = command.at("name");
      if (name != "AppendMesh" && name.find("InstanciateMesh") == std::string::npos) continue;
      commands.push_back(name + " " + command.value("digest", "faulty"));
    }
    return commands;
  }

  fs::path folder;
  int runs = 0;
};

struct Sum {
  std::uint64_t count = 0;
  std::uint64_t value = 0;
  bool operator==(const Sum&) const = default;
};

// Over all exports, by command, totals left out.
std::map<std::string, Sum> SumOfDigests(const std::string& text) {
  std::map<std::string, Sum> sums;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    char name[64];
    long long count = 0;
    unsigned long long value = 0;
    if (std::sscanf(line.c_str(), "%63s n=%lld xor=%llx", name, &count, &value) != 3) continue;
    if (std::string(name) == "total") continue;
    Sum& sum = sums[name];
    sum.count += static_cast<std::uint64_t>(count);
    sum.value ^= value;
  }
  return sums;
}

std::map<std::string, Sum> SumOfDigests(const nlohmann::json& report) {
  std::map<std::string, Sum> sums;
  for (const auto& [name, digest] : report.at("digests").items()) {
    sums[name] = {digest.at("n").get<std::uint64_t>(),
                  std::stoull(digest.at("xor").get<std::string>(), nullptr, 16)};
  }
  return sums;
}

struct Way {
  const char* environment;
  unsigned threads;
  bool sends;  // by the sender thread
};

constexpr Way kWays[] = {
    {"QUELLIX_GEO_PARALLEL=0 QUELLIX_GEO_PIPELINE=0", 1, false},
    {"QUELLIX_GEO_PARALLEL=0 QUELLIX_GEO_PIPELINE=0 QUELLIX_IPC_PIPELINE=0", 1, false},
    {"QUELLIX_GEO_PIPELINE=0", 1, false},
    {"QUELLIX_GEO_PIPELINE=0 QUELLIX_IPC_PIPELINE=0", 4, false},
    {"QUELLIX_GEO_PIPELINE=0", 8, false},
    {"QUELLIX_GEO_PARALLEL=0", 1, true},
    {"QUELLIX_UNIFIED_SCAN=1", 2, true},
    {"QUELLIX_IPC_PIPELINE=0", 3, true},
    {"QUELLIX_MAT_PIPELINE=0", 5, true},
    {"QUELLIX_SU_GATES=all:mutex", 8, true},
    {"QUELLIX_SU_GATES=facedata:parallel", 8, true},
};

struct Model {
  const char* name;
  bool images;  // which keep the sender thread out
};

constexpr Model kModels[] = {
    {"generated:3000:7:20:1", false},
    {"generated:130:1:2:0", false},
    {"slow:2000:4:12:0", false},
    {"cone:300", false},
    {"face:400:20", false},
    {"row:200", false},
    {SAMPLE, true},
    {MODELS "/OBJ/spider.obj", false},
    {MODELS "/glTF/CesiumMilkTruck/CesiumMilkTruck.gltf", false},
    {MODELS "/Collada/duck.dae", false},
    {MODELS "/OFF/Wuson.off", false},
};

TEST_F(ExportPaths, SendTheSameInEveryWay) {
  for (const auto& [model, images] : kModels) {
    SCOPED_TRACE(model);
    const Outcome first = Export(model, kWays[0].environment, kWays[0].threads);
    ASSERT_EQ(first.status, 0);
    EXPECT_EQ(first.report.at("faultCount"), 0) << first.report.at("faults");
    EXPECT_EQ(SumOfDigests(first.digest), SumOfDigests(first.report));
    EXPECT_FALSE(first.arrived.empty());
    for (const Way& way : kWays) {
      if (&way == kWays) continue;
      SCOPED_TRACE(way.environment);
      const Outcome run = Export(model, way.environment, way.threads);
      ASSERT_EQ(run.status, 0);
      EXPECT_EQ(run.arrived, first.arrived) << "another order";
      EXPECT_EQ(run.digest, first.digest) << way.threads << " pool threads";
      EXPECT_EQ(run.report.at("faultCount"), 0) << run.report.at("faults");
      EXPECT_EQ(SumOfDigests(run.digest), SumOfDigests(run.report));
      EXPECT_EQ(run.log.find("thGeoSend (pipeline sender): ") != std::string::npos,
                way.sends && !images);
    }
  }
}

// However many threads share the work, on a machine of any size.
TEST_F(ExportPaths, SendTheSameWithAnyNumberOfPoolThreads) {
  const char* const model = "generated:3000:7:20:1";
  const Outcome serial = Export(model, kWays[0].environment, 1);
  ASSERT_EQ(serial.status, 0);
  for (const char* environment : {"QUELLIX_GEO_PIPELINE=0", "QUELLIX_GEO_PIPELINE=1"}) {
    for (unsigned threads = 1; threads <= 8; ++threads) {
      SCOPED_TRACE(std::string(environment) + ", " + std::to_string(threads) + " pool threads");
      const Outcome run = Export(model, environment, threads);
      ASSERT_EQ(run.status, 0);
      EXPECT_EQ(run.digest, serial.digest);
      EXPECT_EQ(run.arrived, serial.arrived);
      EXPECT_EQ(run.report.at("faultCount"), 0) << run.report.at("faults");
    }
  }
}

// The host may not bear two threads in its calls for faces, loops, edges and openings.
TEST_F(ExportPaths, OneThreadAtATimeReadsFacesUnlessTheUserSaysThatSeveralMay) {
  struct Case {
    const char* gates;
    bool shared;
  };
  for (const Case& c : {Case{"", false}, Case{"uvhelper:parallel", false},
                        Case{"facedata:mutex", false}, Case{"facedata:parallel,all:mutex", false},
                        Case{"facedata:parallel", true}, Case{"all:parallel", true}}) {
    const Outcome run =
        Export("generated:20000:20:20:0", "QUELLIX_SU_GATES=" + std::string(c.gates), 4);
    ASSERT_EQ(run.status, 0);
    EXPECT_EQ(run.overlaps > 0, c.shared) << c.gates << ": " << run.overlaps << " overlaps";
  }
}

int Occurrences(const std::string& text, const std::string& what) {
  int count = 0;
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

// Every line that an export may write, behind the time of day.
const char* const kLogLines[] = {
    R"(=== ExportModel begin \(reload=[01]\) ===)",
    R"(CollectSceneInfo: \d+\.\d ms \(materials=\d+, images=\d+, lights=\d+, definitions=\d+\))",
    R"(PreExportMaterials: \d+\.\d ms \(entries=\d+\))",
    R"(PreExportMaterials: non-affine \(distorted\) textures=\d+)",
    R"(CountPolygons: \d+\.\d ms \(faces=\d+\))",
    R"(thMat ExportMaterials: \d+\.\d ms)",
    R"(thGeo ExportGeometry: \d+\.\d ms)",
    R"(thGeoSend \(pipeline sender\): \d+\.\d ms)",
    R"(ExportLights \(send only\): \d+\.\d ms)",
    R"(CollectFace: n=\d+ total=\d+\.\dms \(SUMeshHelperCreate=\d+\.\dms, UVHelper=\d+\.\dms\))",
    R"(  ipc \S+ +n=\d+ +wait= *\d+\.\dms bytes=\d+\.\d\dMB)",
    R"(  sugate \w+ +mode=mutex +n=\d+ +lockwait= *\d+\.\dms)",
    R"(=== ExportModel end \(reload=[01]\): total \d+\.\d ms ===)",
    R"(ExpandSharedMemory: \d+\.\dMB -> \d+\.\dMB \(\d+\.\d ms\))",
    R"(UpdateCacheInfo: materials \d+->\d+, instances \d+->\d+)",
    R"(ClearGeometryCache \(cached=\d+\))",
    R"(geo cache miss \(re-export\): pid=\d+)",
};
// Those that each of the three exports of a run writes.
constexpr const char* kInEveryExport[] = {"ExportModel begin",    "thMat ExportMaterials",
                                          "thGeo ExportGeometry", "thGeoSend",
                                          "CollectFace",          "ExportModel end"};

TEST_F(ExportPaths, WriteEveryLogLineInItsFormat) {
  const Outcome run = Export("generated:3000:7:20:1", "");
  ASSERT_EQ(run.status, 0);
  std::vector<std::regex> patterns;
  for (const char* line : kLogLines) {
    patterns.emplace_back(R"(\[\d\d:\d\d:\d\d\.\d\d\d\]\[DLL\] )" + std::string(line));
  }
  std::istringstream lines(run.log);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_TRUE(std::any_of(patterns.begin(), patterns.end(), [&](const std::regex& pattern) {
      return std::regex_match(line, pattern);
    })) << line;
  }
  for (const char* what : kInEveryExport) {
    EXPECT_EQ(Occurrences(run.log, what), 3) << what;
  }
}

std::string Members(const nlohmann::ordered_json& object) {
  std::string members;
  for (const auto& [name, value] : object.items()) members += name + " ";
  return members;
}

// Both dumps see every face, so nothing may be made anywhere but on the walk's thread.
TEST_F(ExportPaths, DumpsKeepTheExportSerial) {
  const fs::path validation = folder / "validation.txt";
  const Outcome plain = Export("generated:300:2:4:0", "");
  const Outcome run = Export("generated:300:2:4:0", "QUELLIX_TESS_VALIDATE=" + validation.string());
  ASSERT_EQ(run.status, 0);
  EXPECT_EQ(run.digest, plain.digest);
  EXPECT_EQ(run.log.find("thGeoSend"), std::string::npos);
  const std::string text = Text(validation);
  EXPECT_EQ(Occurrences(text, "=== tess validate"), 3) << text;
  EXPECT_NE(text.find("=== tess validate (reload=0): faces=300 "), std::string::npos) << text;
  EXPECT_NE(text.find("=== tess validate (reload=1): faces=0 "), std::string::npos)
      << "a reload of what the renderer holds looks at no face\n"
      << text;

  const fs::path probe = folder / "probe.txt";
  const Outcome probed =
      Export("generated:300:2:4:0", "QUELLIX_OWN_TESS=0 QUELLIX_TESS_PROBE=" + probe.string());
  ASSERT_EQ(probed.status, 0);
  EXPECT_EQ(probed.log.find("thGeoSend"), std::string::npos);
  std::ifstream lines(probe);
  int faces = 0;
  for (std::string line; std::getline(lines, line); ++faces) {
    const auto object = nlohmann::ordered_json::parse(line);
    EXPECT_EQ(Members(object), "face plane openings outer inner mh ");
    EXPECT_EQ(Members(object["mh"]), "verts normals tris ");
    for (const auto& loop : object["inner"]) EXPECT_EQ(Members(loop), "winding verts edges ");
    EXPECT_EQ(Members(object["outer"]), "winding verts edges ");
    EXPECT_EQ(object["outer"]["edges"].size(), object["outer"]["verts"].size());
    EXPECT_EQ(Members(object["outer"]["edges"].at(0)), "smooth soft v0 v1 ");
  }
  EXPECT_EQ(faces, 600) << "two of the three exports look at each face";
}

// Every face of a model as people make them: the own triangulation covers what the host's does,
// with the same corners and normals.
TEST_F(ExportPaths, TheSampleHouseIsAsTheHostTriangulatesIt) {
  const fs::path validation = folder / "validation.txt";
  const Outcome run = Export(SAMPLE, "QUELLIX_TESS_VALIDATE=" + validation.string());
  ASSERT_EQ(run.status, 0);
  const std::regex wanted(
      R"(=== tess validate \(reload=0\): faces=5\d\d triMismatch=\d+ vertMismatch=0 )"
      R"(areaMismatch=0 \(maxRel=\S+\) normalUnmatched=0 maxNormalDeg=0\.0000 ===)");
  EXPECT_TRUE(std::regex_search(Text(validation), wanted)) << Text(validation);
}

}  // namespace
}  // namespace quellix
