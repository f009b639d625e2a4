#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace kvapp::view {

struct PageFile {
  std::string type;  // of its content
  std::string content;
};

// The files of a folder that a page may consist of, by name. Nothing else is ever read, so that no
// name that somebody asks for leads to a file.
std::map<std::string, PageFile> ReadPageFiles(const std::filesystem::path& folder);

}  // namespace kvapp::view
