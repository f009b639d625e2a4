// What a link's objects and its start are like where objects are files and errors are boxes.

#include <aclapi.h>
#include <windows.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "LinkFixture.h"
#include "MessageBoxWindows.h"
#include "TestSystem.h"

namespace quellix {
namespace {

class HandshakeWindows : public LinkTest {};

TEST_F(HandshakeWindows, AProgramThatIsMissingOrNoProgramDoesNotStart) {
  ASSERT_TRUE(link.OpenChannel(&receiver));
  std::filesystem::create_directories(folder / "plain/KvApp");
  std::ofstream(folder / "plain/KvApp/KvApp.exe") << "not executable";
  for (const std::string& directory :
       {(folder / "nothing").string(), (folder / "plain").string()}) {
    auto answered =
        std::async(std::launch::async, [] { return AnswerMessageBox(std::chrono::minutes(1)); });
    EXPECT_FALSE(link.LaunchApp(directory)) << directory;
    EXPECT_EQ(answered.get(), "Error: Failed to start the app");
    EXPECT_FALSE(link.IsAlive());
    link.SetMessage("dropped");
  }
}

TEST_F(HandshakeWindows, TheRendererGetsItsQuotedFullPathAndThisProcessInItsOwnFolder) {
  ASSERT_TRUE(link.OpenChannel(&receiver));
  for (const char* name : {"plain", "with blanks"}) {
    const std::filesystem::path program = folder / name / "KvApp" / "KvApp.exe";
    std::filesystem::create_directories(program.parent_path());
    std::filesystem::copy_file(PRINT_COMMAND_LINE, program);
    ASSERT_TRUE(link.LaunchApp((folder / name).string()));
    while (link.IsAlive()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::ifstream file(program.parent_path() / "command-line", std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    std::wstring line(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(line.data(), bytes.data(), line.size() * sizeof(wchar_t));
    EXPECT_EQ(line, L"\"" + std::filesystem::path(program).make_preferred().wstring() +
                        L"\" --host-pid " + std::to_wstring(OwnProcessId()));
  }
}

std::vector<unsigned char> TokenOfThisUser() {
  HANDLE process = nullptr;
  OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &process);
  std::vector<unsigned char> token(1024);
  DWORD bytes = 0;
  EXPECT_TRUE(GetTokenInformation(process, TokenUser, token.data(),
                                  static_cast<DWORD>(token.size()), &bytes));
  CloseHandle(process);
  return token;
}

// The model is in there. Nobody else may read it but the system itself.
TEST_F(HandshakeWindows, TheSegmentBelongsToTheUserAlone) {
  Start();
  std::vector<unsigned char> token = TokenOfThisUser();
  PSID user = reinterpret_cast<TOKEN_USER*>(token.data())->User.Sid;
  const std::wstring file = (SharedMemoryFolder() / "Qlx_Mem_ToApp").wstring();
  PACL list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_EQ(GetNamedSecurityInfoW(file.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                  nullptr, &list, nullptr, &descriptor),
            DWORD{ERROR_SUCCESS});
  const std::unique_ptr<void, decltype(&LocalFree)> release(descriptor, &LocalFree);
  ASSERT_NE(list, nullptr) << "no list at all lets everybody in";
  bool userReads = false;
  for (DWORD i = 0; i < list->AceCount; ++i) {
    void* entry = nullptr;
    ASSERT_TRUE(GetAce(list, i, &entry));
    auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    if (allowed->Header.AceType != ACCESS_ALLOWED_ACE_TYPE) continue;
    if (IsWellKnownSid(&allowed->SidStart, WinLocalSystemSid)) continue;
    const bool reads = (allowed->Mask & (FILE_READ_DATA | GENERIC_READ | GENERIC_ALL)) != 0;
    const bool isUser = EqualSid(user, &allowed->SidStart) != 0;
    if (isUser && reads) userReads = true;
    EXPECT_TRUE(isUser || !reads) << "entry " << i << " with the rights " << allowed->Mask;
  }
  EXPECT_TRUE(userReads);
}

}  // namespace
}  // namespace quellix
