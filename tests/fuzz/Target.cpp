#include "Target.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace fuzz {

void Require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

GuardedPages::GuardedPages(std::size_t bytes) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  room_ = (bytes + page - 1) / page * page;
  void* pages =
      mmap(nullptr, room_ + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  Require(pages != MAP_FAILED, "there is memory for the guarded pages");
  base_ = static_cast<std::uint8_t*>(pages);
  mprotect(base_ + room_, page, PROT_NONE);
}

std::uint8_t* GuardedPages::Place(const std::uint8_t* data, std::size_t size) {
  std::uint8_t* start = base_ + room_ - size;
  if (size > 0) std::memcpy(start, data, size);
  return start;
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Run(data, size);
  return 0;
}

// Writes the seeds into the folder that the environment names, for libFuzzer to read them there.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const char* folder = std::getenv("FUZZ_SEED_FOLDER");
  if (folder == nullptr) return 0;
  std::filesystem::create_directories(folder);
  int number = 0;
  for (const fuzz::Bytes& seed : fuzz::Seeds()) {
    std::ofstream file(std::string(folder) + "/seed-" + std::to_string(number++), std::ios::binary);
    file.write(reinterpret_cast<const char*>(seed.data()),
               static_cast<std::streamsize>(seed.size()));
  }
  return 0;
}
