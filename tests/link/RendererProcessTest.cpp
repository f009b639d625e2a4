// Starting and watching the renderer's process, with programs of the test's own in its place.

#include "link/RendererProcess.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "TestSystem.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

class RendererProcessTest : public testing::Test {
 protected:
  void SetUp() override { fs::create_directories(folder); }
  void TearDown() override {
    AwaitEndOf(process);
    fs::remove_all(folder);
  }

  // A directory whose renderer is a file with that content; the file's permissions are those given.
  std::string Directory(const std::string& name, const std::string& content, unsigned mode = 0755) {
    const fs::path program = folder / name / "KvApp/KvApp.exe";
    fs::create_directories(program.parent_path());
    std::ofstream(program) << content;
    fs::permissions(program, fs::perms(mode));
    return folder / name;
  }

  // CTest's time limit is that of this wait.
  static void AwaitEndOf(const RendererProcess& process) {
    while (process.Alive()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  const fs::path folder = fs::temp_directory_path() / ("process-" + std::to_string(OwnProcessId()));
  RendererProcess process;
};

TEST_F(RendererProcessTest, WhatTheSystemCannotRunDoesNotStart) {
  fs::create_directories(folder / "directory/KvApp/KvApp.exe");
  const std::pair<const char*, std::string> cases[] = {
      {"missing", folder / "missing"},
      {"a directory", folder / "directory"},
      {"not executable", Directory("not executable", "#!/bin/sh\n", 0644)},
      {"empty", Directory("empty", "")},
      {"a text that a shell could read", Directory("text", "exec sleep 60\n")},
      {"an interpreter that is missing", Directory("interpreter", "#!/no/such/shell\n")},
      {"a damaged program", Directory("damaged",
                                      "\x7f"
                                      "ELF and nothing more")},
      {"a program of another system", Directory("other", std::string("MZ\x90\0", 4))}};
  for (const auto& [what, directory] : cases) {
    EXPECT_FALSE(process.Start(directory)) << what;
    EXPECT_FALSE(process.Alive()) << what;
  }
}

// What the renderer sees of its start, whatever its path looks like.
TEST_F(RendererProcessTest, TheProgramGetsItsFullPathAndThisProcessInItsOwnFolder) {
  const std::string script = "#!/bin/sh\nprintf '%s\\n' \"$0\" \"$@\" \"$PWD\" >\"$0.told\"\n";
  for (const char* name :
       {"plain", "it's a dir", "quo\"te", "back\\slash", "end\\", "家", "\xe9t\xe9"}) {
    const std::string directory = Directory(name, script);
    ASSERT_TRUE(process.Start(directory)) << name;
    AwaitEndOf(process);
    const std::string program = directory + "/KvApp/KvApp.exe";
    std::ifstream told(program + ".told");
    std::vector<std::string> lines;
    for (std::string line; std::getline(told, line);) lines.push_back(line);
    EXPECT_EQ(lines, (std::vector<std::string>{program, "--host-pid", std::to_string(getpid()),
                                               directory + "/KvApp"}));
  }
}

// What a host may do with the ends of its children.
void ReapAnyChild(int) {
  const int error = errno;
  while (::waitpid(-1, nullptr, WNOHANG) > 0) {
  }
  errno = error;
}

TEST_F(RendererProcessTest, AProcessThatEndsAtOnceIsSeenToEnd) {
  const std::string ending = Directory("ending", "#!/bin/sh\nexit 255\n");
  const std::string staying = Directory("staying", "#!/bin/sh\nexec sleep 600\n");
  for (void (*handler)(int) : {SIG_DFL, SIG_IGN, &ReapAnyChild}) {
    const auto former = ::signal(SIGCHLD, handler);
    for (int i = 0; i < 100; ++i) {
      ASSERT_TRUE(process.Start(i % 2 == 0 ? ending : staying));
      if (i % 2 == 1) {
        EXPECT_TRUE(process.Alive());
        std::this_thread::sleep_for(std::chrono::microseconds(i * 40));
        ::kill(process.Id(), SIGKILL);
      }
      AwaitEndOf(process);
    }
    EXPECT_EQ(::signal(SIGCHLD, former), handler) << "the host's handler was replaced";
  }
}

// Once its entry is gone, a process's id may be given to another child, whose end is not ours.
TEST_F(RendererProcessTest, AnotherChildWithTheSameIdIsLeftAlone) {
  const std::string ending = Directory("ending", "#!/bin/sh\nexit 0\n");
  for (const bool foreign : {true, false}) {
    ASSERT_TRUE(process.Start(ending));
    const pid_t id = process.Id();
    if (foreign) {
      ::waitpid(id, nullptr, 0);
    } else {
      AwaitEndOf(process);
    }
    std::ofstream("/proc/sys/kernel/ns_last_pid") << id - 1;
    const pid_t other = ::fork();
    if (other == 0) ::_exit(7);
    siginfo_t ended{};
    ::waitid(P_PID, static_cast<id_t>(other), &ended, WEXITED | WNOWAIT);
    EXPECT_FALSE(process.Alive());
    EXPECT_FALSE(process.Alive());
    ASSERT_TRUE(process.Start(ending));
    int status = 0;
    EXPECT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    if (other != id) GTEST_SKIP() << "the system does not let ids be chosen here";
  }
}

}  // namespace
}  // namespace quellix
