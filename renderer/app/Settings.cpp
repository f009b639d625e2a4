#include "app/Settings.h"

#include <charconv>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "app/Paths.h"
#include "app/Platform.h"

namespace kvapp {

namespace {

constexpr char kUsage[] =
    "usage: KvApp.exe --host-pid <process id>; it is started by the plug-in's host";

template <class Number>
std::optional<Number> ParseNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::size_t NumberFromEnvironment(const char* name, std::size_t missing) {
  const std::string text = EnvironmentText(name);
  if (text.empty()) return missing;
  const auto number = ParseNumber<std::size_t>(text);
  if (!number) {
    throw std::runtime_error(std::string(name) + " is \"" + text + "\", which is not a number");
  }
  return *number;
}

bool Switch(const char* name, bool missing) {
  const std::string text = EnvironmentText(name);
  return text.empty() ? missing : text != "0";
}

void ReadViewSettings(Settings& settings) {
  const std::string port = EnvironmentText("KVAPP_VIEW");
  if (port.empty()) return;
  settings.viewPort = ParseNumber<std::uint16_t>(port);
  if (!settings.viewPort) {
    throw std::runtime_error("KVAPP_VIEW is \"" + port + "\", which is not a port");
  }
  settings.viewToken = EnvironmentText("KVAPP_VIEW_TOKEN");
  const std::string& token = settings.viewToken;
  constexpr char kAllowed[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-_";
  if (!token.empty() && (token.size() < 16 || token.size() > 64 ||
                         token.find_first_not_of(kAllowed) != std::string::npos)) {
    throw std::runtime_error("KVAPP_VIEW_TOKEN has not 16 to 64 letters, digits, - or _");
  }
}

}  // namespace

Settings ReadSettings(int argumentCount, const char* const* arguments) {
  if (argumentCount != 3 || std::string_view(arguments[1]) != "--host-pid") {
    throw std::runtime_error(kUsage);
  }
  Settings settings;
  const auto process = ParseNumber<std::int32_t>(arguments[2]);
  if (!process || *process <= 0) {
    throw std::runtime_error("\"" + std::string(arguments[2]) + "\" is not a process id; " +
                             kUsage);
  }
  settings.hostProcess = *process;
  settings.outputFolder = FilePath(EnvironmentText("KVAPP_OUT"));
  settings.scriptFile = FilePath(EnvironmentText("KVAPP_SCRIPT"));
  settings.bytesLogged = NumberFromEnvironment("KVAPP_BYTES", 0);
  settings.writeSceneJson = Switch("KVAPP_SCENE_JSON", false);
  settings.drawPicture = Switch("KVAPP_PICTURE", true);
  settings.discard = Switch("KVAPP_DISCARD", false);
  settings.workPerCommand = std::chrono::microseconds(NumberFromEnvironment("KVAPP_WORK_US", 0));
  settings.requestSegmentBytes =
      NumberFromEnvironment("KVAPP_SEGMENT", settings.requestSegmentBytes);
  if (settings.requestSegmentBytes < 24) {
    throw std::runtime_error("KVAPP_SEGMENT is below 24, the size of a request's header");
  }
  ReadViewSettings(settings);
  return settings;
}

}  // namespace kvapp
