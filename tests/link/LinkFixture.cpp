#include "LinkFixture.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace quellix {

void LinkTest::SetUp() {
  folder = std::filesystem::temp_directory_path() / ("link-test-" + std::to_string(getpid()));
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  setenv("KVAPP_OUT", folder.c_str(), 1);
  setenv("KVAPP_BYTES", "4096", 1);
  setenv("KVAPP_PICTURE", "0", 1);
}

void LinkTest::TearDown() {
  link.CloseApp();
  link.ReleaseChannel();
  std::filesystem::remove_all(folder);
  unsetenv("KVAPP_SCRIPT");
}

void LinkTest::Start(const std::string& script, RequestReceiver* requestReceiver) {
  if (!script.empty()) {
    const std::filesystem::path file = folder / "script.json";
    std::ofstream(file) << script;
    setenv("KVAPP_SCRIPT", file.c_str(), 1);
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

std::vector<std::string> LinkObjects() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
    const std::string name = entry.path().filename().string();
    if (name.rfind("Qlx_", 0) == 0 && name.rfind("Qlx_Test", 0) != 0) names.push_back(name);
  }
  return names;
}

}  // namespace quellix
