#include "link/IpcDigest.h"

#include <array>
#include <cstdio>
#include <cstring>

#include "link/WireRecords.h"
#include "support/Files.h"
#include "support/Switches.h"

namespace quellix {

namespace {

constexpr std::uint32_t kEntries = 64;

struct DigestTable {
  std::array<std::uint64_t, kEntries> accumulator{};
  std::array<std::uint64_t, kEntries> count{};
};

DigestTable& Table() {
  static DigestTable table;
  return table;
}

void WriteLine(std::FILE* file, const char* name, std::uint64_t count, std::uint64_t value) {
  std::fprintf(file, "%-24s n=%-6lld xor=%016llx\n", name, static_cast<long long>(count),
               static_cast<unsigned long long>(value));
}

}  // namespace

void Fnv1a::Add(const void* bytes, std::size_t count) {
  const auto* byte = static_cast<const unsigned char*>(bytes);
  std::uint64_t h = hash;
  for (std::size_t i = 0; i < count; ++i) h = (h ^ byte[i]) * 0x100000001b3ull;
  hash = h;
}

void Fnv1a::AddSized(const void* bytes, std::uint64_t count) {
  AddValue(count);
  if (bytes != nullptr) Add(bytes, count);
}

void Fnv1a::AddText(const char* text) {
  AddSized(text, text == nullptr ? 0 : std::strlen(text));
}

bool DigestEnabled() {
  static const bool enabled = !IpcDigestPath().empty();
  return enabled;
}

void DigestReset() {
  Table() = DigestTable();
}

void DigestAdd(std::uint32_t command, std::uint64_t hash) {
  if (command >= kEntries) return;
  Table().accumulator[command] ^= hash;
  Table().count[command] += 1;
}

void DigestDump(bool reload) {
  if (!DigestEnabled()) return;
  std::FILE* file = OpenSharedForAppendPatiently(IpcDigestPath());
  if (file == nullptr) return;
  std::fprintf(file, "=== ipc digest (reload=%d) ===\n", reload ? 1 : 0);
  std::uint64_t totalCount = 0;
  std::uint64_t totalXor = 0;
  for (std::uint32_t id = 0; id < kEntries; ++id) {
    const std::uint64_t count = Table().count[id];
    if (count == 0) continue;
    WriteLine(file, wire::CommandName(id), count, Table().accumulator[id]);
    totalCount += count;
    totalXor ^= Table().accumulator[id];
  }
  WriteLine(file, "total", totalCount, totalXor);
  std::fclose(file);
}

}  // namespace quellix
