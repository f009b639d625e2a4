#include "LinkFixture.h"

#include <chrono>
#include <fstream>
#include <thread>

#include "TestSystem.h"

namespace quellix {

void LinkTest::SetUp() {
  folder = std::filesystem::temp_directory_path() / ("link-test-" + std::to_string(OwnProcessId()));
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  SetVariable("KVAPP_OUT", folder.string());
  SetVariable("KVAPP_BYTES", "4096");
  SetVariable("KVAPP_PICTURE", "0");
}

void LinkTest::TearDown() {
  link.CloseApp();
  link.ReleaseChannel();
  // The renderer may still be ending, and a file that it has open may be kept by the system.
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  UnsetVariable("KVAPP_SCRIPT");
}

void LinkTest::Start(const std::string& script, RequestReceiver* requestReceiver) {
  if (!script.empty()) {
    const std::filesystem::path file = folder / "script.json";
    std::ofstream(file) << script;
    SetVariable("KVAPP_SCRIPT", file.string());
  }
  ASSERT_TRUE(link.OpenChannel(requestReceiver == nullptr ? &receiver : requestReceiver));
  ASSERT_TRUE(link.LaunchApp(KVAPP_DIR));
}

void LinkTest::Close() {
  link.CloseApp();
  while (link.IsAlive()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

std::vector<nlohmann::json> LinkTest::Received() {
  Close();
  std::vector<nlohmann::json> commands;
  std::ifstream log(folder / "commands.jsonl");
  for (std::string line; std::getline(log, line);) commands.push_back(nlohmann::json::parse(line));
  return commands;
}

nlohmann::json LinkTest::Report() const {
  std::ifstream file(folder / "report.json");
  return nlohmann::json::parse(file);
}

}  // namespace quellix
