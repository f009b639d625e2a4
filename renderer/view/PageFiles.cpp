#include "view/PageFiles.h"

#include <fstream>
#include <iterator>

#include "app/Paths.h"

namespace kvapp::view {

namespace {

constexpr std::uintmax_t kLargestFile = 16 << 20;

const std::map<std::string, std::string> kTypes = {{".html", "text/html; charset=utf-8"},
                                                   {".js", "text/javascript; charset=utf-8"},
                                                   {".mjs", "text/javascript; charset=utf-8"},
                                                   {".css", "text/css; charset=utf-8"},
                                                   {".json", "application/json"},
                                                   {".svg", "image/svg+xml"},
                                                   {".png", "image/png"},
                                                   {".ico", "image/x-icon"},
                                                   {".txt", "text/plain; charset=utf-8"}};

}  // namespace

std::map<std::string, PageFile> ReadPageFiles(const std::filesystem::path& folder) {
  std::map<std::string, PageFile> files;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unread;
    const auto type = kTypes.find(Utf8(entry->path().extension()));
    if (type == kTypes.end() || !entry->is_regular_file(unread)) continue;
    if (const auto size = entry->file_size(unread); unread || size > kLargestFile) continue;
    std::ifstream stream(entry->path(), std::ios::binary);
    files[Utf8(entry->path().filename())] = {
        type->second, std::string(std::istreambuf_iterator<char>(stream), {})};
  }
  return files;
}

}  // namespace kvapp::view
