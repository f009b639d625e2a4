// What the extension makes of whatever a renderer writes into its segment, and of what changes
// there while it is read. The renderer's side is made in this process; the extension's end is the
// real one.

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>

#include "IdleProgram.h"
#include "Target.h"
#include "link/IpcInterface.h"
#include "support/Platform.h"

namespace fuzz {

namespace {

namespace bi = boost::interprocess;
namespace wire = quellix::wire;

constexpr std::size_t kSegment = 8192;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kHeader = sizeof(wire::RequestHeader);

// Answers as much or as little as the input says.
class Answers : public quellix::RequestReceiver {
 public:
  std::uint8_t kind = 0;
  std::size_t heard = 0;

  void OnReload() override {}
  void OnCameraChangedByGui(const std::array<float, 10>& camera) override {
    Hear(&camera, sizeof camera);
  }
  void OnRendererQuit() override {}
  void OnDatetimeUpdated(const std::array<std::int32_t, 6>& time) override {
    Hear(&time, sizeof time);
  }
  std::vector<quellix::SceneInfo> OnGetScenes(const Room& forScenes) override {
    if (kind % 3 != 0 && !forScenes(kind)) return {};
    std::vector<quellix::SceneInfo> scenes(kind);
    for (quellix::SceneInfo& scene : scenes) scene.name = std::string(kind % 40, '\xe5');
    return scenes;
  }
  std::optional<std::array<float, 13>> OnRequestCameraInfo() override {
    if (kind % 4 == 0) return std::nullopt;
    return std::array<float, 13>{};
  }
  std::optional<quellix::ShadowInfo> OnRequestShadowInfo() override {
    if (kind % 4 == 0) return std::nullopt;
    return quellix::ShadowInfo{};
  }
  std::optional<bool> ModelOutOfSync() override { return kind % 2 == 0; }
  void SaveParameters(const std::string& name, const std::vector<std::int64_t>& words) override {
    Hear(name.data(), name.size());
    Require(words.size() == 1 + (static_cast<std::uint64_t>(words[0]) + 3) / 4,
            "parameters are as many words as their byte count says");
    Hear(words.data(), words.size() * sizeof words[0]);
  }
  std::optional<std::vector<std::uint32_t>> LoadParameters(const std::string& name,
                                                           const Room& forBytes) override {
    Hear(name.data(), name.size());
    static const std::uint32_t counts[] = {0, 1, 3, 4, 5, 100, 8152, 8153, 0x7fffffff, 0xffffffff};
    const std::uint64_t count = counts[kind % std::size(counts)];
    if (kind % 7 == 0 || !forBytes(count)) return std::nullopt;
    std::vector<std::uint32_t> words(1 + (count + 3) / 4 + kind % 2);
    words[0] = static_cast<std::uint32_t>(count);
    return words;
  }
  void RemoveAttribute(const std::string& name) override { Hear(name.data(), name.size()); }
  void SetUsePbr(bool) override {}
  std::optional<bool> GetUsePbr() override { return std::nullopt; }
  std::optional<std::uint64_t> GetSuVersion() override { return kind; }
  void SuppressAutosyncOnce() override {}

 private:
  // Touches every byte.
  void Hear(const void* bytes, std::size_t size) {
    const auto* at = static_cast<const std::uint8_t*>(bytes);
    for (std::size_t i = 0; i < size; ++i) heard += at[i];
  }
};

// The renderer's segment with a page around each mapping of it that nobody may touch.
class Peer {
 public:
  Peer() {
    folder_ = std::filesystem::temp_directory_path() /
              ("toplugin-fuzz-" + std::to_string(quellix::CurrentProcessId()));
    quellix::MakeIdleProgram(folder_);
    Require(link_.OpenChannel(&answers) && link_.LaunchApp(folder_.string()), "the channel opens");
    bi::shared_memory_object::remove(wire::kToPluginSegment);
    bi::shared_memory_object memory(bi::create_only, wire::kToPluginSegment, bi::read_write);
    memory.truncate(kSegment);
    region_ = bi::mapped_region(memory, bi::read_write);
    const auto alive = [] { return true; };
    ready_ = quellix::ManualEvent::Create(wire::kRequestReady, alive);
    done_ = quellix::ManualEvent::Create(wire::kRequestDone, alive);
    // A first request, of no known code, has the segment mapped.
    ready_->Set();
    link_.PollToPlugin();
    Require(done_->Wait(0) && done_->Reset(), "the first request is acknowledged");
    GuardMappings();
    changer_ = std::thread([this] { Change(); });
  }

  ~Peer() {
    ending_ = true;
    changer_.join();
    link_.ReleaseChannel();
    bi::shared_memory_object::remove(wire::kToPluginSegment);
    quellix::ManualEvent::Remove(wire::kRequestReady);
    quellix::ManualEvent::Remove(wire::kRequestDone);
    std::filesystem::remove_all(folder_);
  }

  void Ask(const std::uint8_t* data, std::size_t size, std::uint8_t fill, bool changing) {
    auto* segment = static_cast<std::uint8_t*>(region_.get_address());
    std::memset(segment, fill, kSegment);
    std::memcpy(segment, data, std::min(size, kSegment));
    const auto quit = static_cast<std::uint32_t>(wire::RequestCode::RendererQuit);
    std::uint32_t code = 0;
    std::memcpy(&code, segment, sizeof code);
    if (code == quit) return;  // it ends the link, which stays for the next input
    std::uint64_t capacity = 0;
    std::memcpy(&capacity, segment + 8, sizeof capacity);
    const Bytes before(segment, segment + kSegment);

    changing_ = changing;
    ready_->Set();
    link_.PollToPlugin();
    {
      const std::lock_guard<std::mutex> lock(writing_);
      changing_ = false;
    }
    Require(!ready_->Wait(0), "a request is taken");
    if (link_.Ended()) std::_Exit(0);  // only a changing code can have done that
    Require(done_->Wait(0), "a request is acknowledged");
    done_->Reset();
    if (changing) return;
    const std::size_t end = std::clamp<std::uint64_t>(capacity, kHeader, kSegment);
    Require(
        std::equal(before.begin() + static_cast<std::ptrdiff_t>(end), before.end(), segment + end),
        "nothing is written behind the capacity");
  }

  Answers answers;

 private:
  static void GuardMappings() {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
      if (line.find(wire::kToPluginSegment) == std::string::npos) continue;
      unsigned long long start = 0;
      unsigned long long end = 0;
      std::sscanf(line.c_str(), "%llx-%llx", &start, &end);
      for (const unsigned long long page : {start - kPage, end}) {
        mmap(reinterpret_cast<void*>(page), kPage, PROT_NONE,
             MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
      }
    }
  }

  // Rewrites what the extension is reading, all of it but the code.
  void Change() {
    static const std::uint64_t values[] = {0, 24, 40, kSegment - 1, kSegment, 0xffffffff, ~0ull};
    auto* words = static_cast<std::uint64_t*>(region_.get_address());
    for (std::size_t i = 0; !ending_; ++i) {
      if (!changing_) {
        std::this_thread::yield();
        continue;
      }
      const std::lock_guard<std::mutex> lock(writing_);
      if (!changing_) continue;
      std::atomic_ref<std::uint64_t>(words[1 + i % 7]).store(values[i % std::size(values)]);
      std::atomic_ref<std::uint64_t>(words[i * 31 % (kSegment / 8 - 8) + 8]).store(i);
    }
  }

  std::filesystem::path folder_;
  quellix::IpcInterface link_;
  bi::mapped_region region_;
  std::unique_ptr<quellix::ManualEvent> ready_;
  std::unique_ptr<quellix::ManualEvent> done_;
  std::atomic<bool> changing_{false};
  std::atomic<bool> ending_{false};
  std::mutex writing_;  // a write under way is not the next input's
  std::thread changer_;
};

Bytes Request(std::uint32_t code, const std::vector<std::uint64_t>& fields,
              const std::string& tail = {}) {
  Bytes seed = {3, 0, 0, 0, 0, 0, 0, 0};
  const auto put = [&seed](const void* bytes, std::size_t size) {
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    seed.insert(seed.end(), from, from + size);
  };
  const std::uint64_t header[] = {code, kSegment, 0};
  put(header, sizeof header);
  put(fields.data(), fields.size() * sizeof fields[0]);
  put(tail.data(), tail.size());
  return seed;
}

}  // namespace

// Eight bytes say how the receiver answers and what the peer does, the rest is the segment.
void Run(const std::uint8_t* data, std::size_t size) {
  static Peer peer;
  if (size < 8) return;
  peer.answers.kind = data[0];
  peer.Ask(data + 8, size - 8, data[1], data[2] % 4 == 3);
}

std::vector<Bytes> Seeds() {
  std::vector<Bytes> seeds;
  for (std::uint32_t code = 100; code < 118; ++code)
    seeds.push_back(Request(code, {0, 0, 0, 0, 0}));
  seeds.push_back(Request(110, {48, 56, 6}, std::string("name\0\0\0\0\1\0\0\0\2\3", 14)));
  seeds.push_back(Request(111, {32}, std::string("name\0", 5)));
  seeds.push_back(Request(112, {32}, std::string(4000, 'x')));
  for (std::size_t i = seeds.size(); i-- > 0;) {
    seeds.push_back(seeds[i]);
    seeds.back()[2] = 3;
    seeds.back()[0] = static_cast<std::uint8_t>(41 * i);
  }
  return seeds;
}

}  // namespace fuzz
