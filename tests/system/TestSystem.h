#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// What tests ask of the system, one implementation file a system. Texts are UTF-8.

namespace quellix {

std::int64_t OwnProcessId();
std::filesystem::path OwnProgram();

// For this process and those it starts from now on.
void SetVariable(const char* name, const std::string& value);
void UnsetVariable(const char* name);

// Ends a process from outside, at once.
void KillProcess(std::int64_t id);

// Returns when a process that this one started has ended.
void AwaitEnd(std::int64_t id);

// The folder in which shared-memory objects lie as files.
std::filesystem::path SharedMemoryFolder();

// The names of shared-memory objects that belong to a link.
std::vector<std::string> LinkObjects();

}  // namespace quellix
