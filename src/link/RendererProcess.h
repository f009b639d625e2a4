#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace quellix {

// The renderer's process, started and watched by us. It is neither killed nor waited for: it ends
// itself.
class RendererProcess {
 public:
  RendererProcess() = default;
  ~RendererProcess() { LetGo(); }
  RendererProcess(const RendererProcess&) = delete;
  RendererProcess& operator=(const RendererProcess&) = delete;

  // Starts "KvApp/KvApp.exe" below the directory, with that folder as its working directory and
  // this process's id on its command line. The directory's bytes are in the locale's encoding.
  // False when the system cannot run such a file. Host thread.
  bool Start(const std::string& directory);

  // True while the process that was started exists. An exited process is not alive although the
  // system may still list it, nor is another that was given its id. Any thread.
  bool Alive() const;

  // The process's id; 0 or less when there is none.
  std::int32_t Id() const { return processId; }

 private:
  static constexpr char kFolder[] = "KvApp";
  static constexpr char kProgram[] = "KvApp.exe";

  void LetGo();

  std::atomic<std::int32_t> processId{0};
  // The system's own hold of the process; -1 when it gave none.
  std::intptr_t handle = -1;
  // Whether its end has been seen.
  mutable std::mutex endMutex;
  mutable bool over = false;
};

}  // namespace quellix
