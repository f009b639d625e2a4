#pragma once

#include <filesystem>
#include <fstream>

namespace quellix {

// Puts a program into the place of the renderer below the folder that does nothing and ends with
// its host, so that a test can be the renderer itself. POSIX systems.
inline void MakeIdleProgram(const std::filesystem::path& folder) {
  const std::filesystem::path program = folder / "KvApp/KvApp.exe";
  std::filesystem::create_directories(program.parent_path());
  std::ofstream(program) << "#!/bin/sh\nexec tail --pid=\"$2\" -f /dev/null\n";
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
}

}  // namespace quellix
