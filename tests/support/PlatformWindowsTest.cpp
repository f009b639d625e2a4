// What the extension asks of Windows: texts beyond ASCII in both directions, shared files.

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "MessageBoxWindows.h"
#include "TestSystem.h"
#include "support/Files.h"
#include "support/Platform.h"

namespace quellix {
namespace {

constexpr char kText[] = "木造 بيت 🏠";

std::string Utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

TEST(EnvironmentVariable, IsUtf8AndTellsUnset) {
  SetVariable("QUELLIX_PLATFORM_TEST", kText);
  EXPECT_EQ(EnvironmentVariable("QUELLIX_PLATFORM_TEST"), kText);
  const std::string longText(5000, 'x');
  SetVariable("QUELLIX_PLATFORM_TEST", longText);
  EXPECT_EQ(EnvironmentVariable("QUELLIX_PLATFORM_TEST"), longText);
  UnsetVariable("QUELLIX_PLATFORM_TEST");
  EXPECT_FALSE(EnvironmentVariable("QUELLIX_PLATFORM_TEST").has_value());
}

TEST(SharedFiles, TakeAnyNameAndSeveralWritersAndEndLinesAsTheSystemDoes) {
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() /
      std::filesystem::path(u8"ログ 🏠 " +
                            std::u8string(1, static_cast<char8_t>(u8'0' + OwnProcessId() % 10)));
  std::filesystem::remove(path);
  std::FILE* first = OpenSharedForAppend(Utf8(path));
  std::FILE* second = OpenSharedForAppend(Utf8(path));
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr) << "the first writer keeps others out";
  std::fputs("one\n", first);
  std::fclose(first);
  std::fputs("two\n", second);
  std::fclose(second);
  std::ifstream file(path, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "one\r\ntwo\r\n");
  file.close();
  std::filesystem::remove(path);
}

TEST(MessageBox, ShowsTextsOfEveryScriptAndWaits) {
  auto answered =
      std::async(std::launch::async, [] { return AnswerMessageBox(std::chrono::minutes(1)); });
  ShowMessageBox(kText, "家");
  EXPECT_EQ(answered.get(), std::string("家: ") + kText);
}

}  // namespace
}  // namespace quellix
