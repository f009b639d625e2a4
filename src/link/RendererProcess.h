#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace quellix {

// The renderer's process, started and watched by us. It is neither killed nor waited for: it ends
// itself.
class RendererProcess {
 public:
  RendererProcess() = default;
  ~RendererProcess();
  RendererProcess(const RendererProcess&) = delete;
  RendererProcess& operator=(const RendererProcess&) = delete;

  // Starts "KvApp/KvApp.exe" below the directory, with that folder as its working directory and
  // this process's id on its command line. The directory's bytes are in the locale's encoding.
  // False when no process came of it. Host thread.
  bool Start(const std::string& directory);

  // True while the process that was started exists. An exited process is not alive although the
  // system may still list it, nor is another that was given its id. Any thread.
  bool Alive() const;

  // Counts as gone from now on, whatever the process does.
  void Forget() { processId = 0; }

  // The process's id; 0 or less when there is none.
  std::int32_t Id() const { return processId; }

 private:
  // Takes hold of the process that was just started, so that its id cannot come to mean another.
  void Hold();
  void LetGo();

  std::atomic<std::int32_t> processId{0};
  std::intptr_t handle = -1;
};

// True for a file that this process could start as a program. `path` is UTF-8.
bool IsStartable(const std::string& path);

// Keeps a started child from taking over what the interpreter set up for the ends of its own
// children, for as long as it lives.
class ChildSignalKeeper {
 public:
  ChildSignalKeeper();
  ~ChildSignalKeeper();
  ChildSignalKeeper(const ChildSignalKeeper&) = delete;
  ChildSignalKeeper& operator=(const ChildSignalKeeper&) = delete;

 private:
  void* former = nullptr;
};

}  // namespace quellix
