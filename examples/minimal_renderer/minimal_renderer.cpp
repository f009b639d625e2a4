// A renderer that shows nothing: it follows the channel from its start to its end and prints what
// arrives. docs/protocol.md is all that it was made from, and Boost all that it needs.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <boost/interprocess/managed_shared_memory.hpp>
#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>
#include <boost/interprocess/sync/interprocess_condition.hpp>
#include <boost/interprocess/sync/interprocess_mutex.hpp>

namespace {

namespace bip = boost::interprocess;
using std::chrono::milliseconds;
using U32 = std::uint32_t;
using U64 = unsigned long long;
using Counts = std::map<std::string, U64>;
using Kind = std::pair<std::string, U64>;  // of a command: its name, the bytes of its record

std::atomic<const char*> over{nullptr};  // why the session is over, once it is

// What a name stands for at this moment; 0 for nothing.
U64 IdentityOf(const std::string& name) {
  try {
    const bip::shared_memory_object object(bip::open_only, name.c_str(), bip::read_only);
    struct stat status {};
    return fstat(object.get_mapping_handle().handle, &status) == 0 ? status.st_ino : 0;
  } catch (const bip::interprocess_exception&) {
    return 0;
  }
}

struct EventState {
  bip::interprocess_mutex mutex;
  bip::interprocess_condition condition;
  U32 signaled;
};

struct Event {
  using Segment = bip::managed_shared_memory;
  Event(const std::string& name, bool ours)
      : segment(ours ? Segment(bip::create_only, (name + "_seg").c_str(), 65536)
                     : Segment(bip::open_only, (name + "_seg").c_str())) {
    if (ours) segment.construct<EventState>("state")()->signaled = 0;
    state = segment.find<EventState>("state").first;
    if (state == nullptr) throw bip::interprocess_exception("the event is not finished");
  }

  void Set() { Change(1); }
  // Waits until it is set, and resets it.
  bool Take(milliseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    for (int looks = 0; std::atomic_ref(state->signaled).load() == 0; ++looks) {
      if (over || std::chrono::steady_clock::now() >= end) return false;
      if (looks > 500) std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return Change(0) == 1;
  }

  // Returns what it was.
  U32 Change(U32 signaled) {
    for (; !over; std::this_thread::sleep_for(milliseconds(1))) {
      try {
        if (!state->mutex.try_lock()) continue;
        const U32 before = std::exchange(state->signaled, signaled);
        if (signaled == 1) state->condition.notify_all();
        state->mutex.unlock();
        return before;
      } catch (const bip::interprocess_exception&) {  // who held the lock was killed
      }
    }
    return 0;
  }

  Segment segment;
  EventState* state;
};

// What is read from a segment, none of it from outside of it.
struct Bytes {
  explicit Bytes(const bip::mapped_region& region)
      : first(static_cast<char*>(region.get_address())), size(region.get_size()) {}
  char* Need(U64 offset, U64 count) {
    if (offset > size || count > size - offset) throw std::out_of_range("an offset is too large");
    end = std::max(end, offset + count);
    return first + offset;
  }
  template <class Value>
  Value At(U64 offset) {
    Value value;
    std::memcpy(&value, Need(offset, sizeof value), sizeof value);
    return value;
  }
  std::string Text(U64 offset) {
    const U64 length = strnlen(Need(offset, 1), size - offset);
    return std::string(Need(offset, length + 1), length);
  }

  char* const first;
  const U64 size;
  U64 end = 0;  // behind all that was looked at
};

// The renderer's own side. It asks for the host's version, and does not wait for the answer.
struct Requests {
  Requests() {
    for (const auto& [name, identity] : own) bip::shared_memory_object::remove(name.c_str());
    bip::shared_memory_object memory(bip::create_only, "Qlx_Mem_ToPlugin", bip::read_write);
    memory.truncate(64);
    region = bip::mapped_region(memory, bip::read_write);
    ready.emplace("Qlx_Lock_ToPlugin1", true);
    done.emplace("Qlx_Lock_ToPlugin2", true);
    for (auto& [name, identity] : own) identity = IdentityOf(name);
  }

  void Ask() {
    if (std::exchange(asked, true)) return;
    const U64 header[] = {115, 64, 0};  // the code, the capacity, what is required
    std::memcpy(region.get_address(), header, sizeof header);
    ready->Set();
  }

  void Poll() {
    if (!asked || !done->Take(milliseconds(0))) return;
    asked = false;
    std::printf("version: %llu\n", Bytes(region).At<U64>(24));
  }

  ~Requests() {
    for (const auto& [name, identity] : own) {
      if (IdentityOf(name) == identity) bip::shared_memory_object::remove(name.c_str());
    }
  }

  Counts own = {
      {"Qlx_Mem_ToPlugin", 0}, {"Qlx_Lock_ToPlugin1_seg", 0}, {"Qlx_Lock_ToPlugin2_seg", 0}};
  bip::mapped_region region;
  std::optional<Event> ready, done;
  bool asked = false;
};

// Takes commands, prints them, and counts what an export sends and references.
struct Reader {
  Reader() {
    std::istringstream table(
        "None 4 PrepareRendering 8 CloseApp 4 SetCamera 60 AppendMaterial 144 AppendPBRMaterial "
        "256 AppendOmniLight 28 AppendSpotLight 48 - 4 - 4 AppendMesh 112 - 4 - 4 InstanciateMesh "
        "88 SetModelName 8 SetBackgroundSettings 44 SetMessage 8 SetProgress 8 GetLinkCamera 4 "
        "ReloadFromPlugin 4 ClearModelDataForReload 4 MemoryDestroyed 4 InstanciateMeshBatch 12 "
        "AppendCachedMaterials 12 UpdateInstanceTransform 80 SetCameraAndBackgroundSettings 104 "
        "SetLinkCamera 8");
    for (Kind kind; table >> kind.first >> kind.second;) kinds.push_back(kind);
  }

  // True when the command completes an export.
  bool Take(U32 id, Bytes& message) {
    if (id >= kinds.size()) throw std::out_of_range("unknown id " + std::to_string(id));
    const auto& [name, recordBytes] = kinds[id];
    message.Need(0, recordBytes);
    std::printf("%s", name.c_str());
    const bool complete = Read(id, message);
    std::printf(", %llu bytes\n", message.end);
    ++commands[name];
    bytes[name] += message.end;
    if (complete) Print("export", counts);
    return complete;
  }

  static void Print(const char* what, const Counts& counts) {
    std::printf("%s:", what);
    for (const auto& [name, count] : counts) std::printf(" %s=%llu", name.c_str(), count);
    std::puts("");
  }

  bool Read(U32 id, Bytes& message) {
    // An export ends with a text after its last mesh and material, no text, and no progress.
    if (id == 17) return message.At<float>(4) == 0 && std::exchange(ending, 0) == 2;
    const std::string text = id == 14 || id == 16 ? message.Text(message.At<U32>(4)) : "";
    if (id == 16) ending = !text.empty() ? 1 : ending == 1 ? 2 : 0;
    if (id == 4 || id == 5 || id == 10 || id == 13 || id == 22 || id == 23) ending = 0;
    if (id == 14) counts.clear();
    if (!text.empty()) std::printf(" \"%s\"", text.c_str());
    if (id == 4) Material(message, {76, 124, 128}, {96});
    if (id == 5) Material(message, {240, 244}, {40, 96, 152, 208});
    if (id == 6 || id == 7) ++counts["lightsSent"];
    if (id == 10) Mesh(message);
    if (id == 10 || id == 13) ++counts["placementsSent"];
    if (id == 22) counts["ownersReferenced"] += List(message, 8);
    if (id == 23) counts["materialsReferenced"] += List(message, 16);
    if (id == 26) linked = message.At<char>(4);
    return false;
  }

  void Material(Bytes& message, const std::vector<U64>& texts, const std::vector<U64>& blocks) {
    for (U64 at : texts) std::printf(" \"%s\"", message.Text(message.At<U32>(at)).c_str());
    for (U64 at : blocks) {
      if (const U64 size = message.At<U64>(at)) message.Need(message.At<U64>(at + 8), size);
    }
    ++counts["materialsSent"];
  }

  U64 List(Bytes& message, U64 elementBytes) {
    message.Need(message.At<U32>(8), message.At<U32>(4) * elementBytes);
    return message.At<U32>(4);
  }

  void Mesh(Bytes& message) {
    const U64 vertices = message.At<U32>(80), triangles = message.At<U32>(88);
    message.Need(message.At<U32>(84), vertices * 40);
    message.Need(message.At<U32>(92), triangles * 20);
    std::printf(" %llu: %llu vertices, %llu triangles", message.At<U64>(8), vertices, triangles);
    ++counts["meshesSent"];
    counts["verticesSent"] += vertices;
    counts["trianglesSent"] += triangles;
  }

  std::vector<Kind> kinds;
  Counts counts, commands, bytes;
  int ending = 0;
  char linked = 0;
};

std::atomic<U64> channel{0};  // what the channel's name stood for when it was opened

// Finds out when the session is over, and two seconds later ends what is still stuck in a wait.
void Watch(pid_t host) {
  for (; !over; std::this_thread::sleep_for(milliseconds(20))) {
    if (getppid() != host) over = "the host is gone";
    if (channel != 0 && IdentityOf("Qlx_Lock_ToApp1_seg") != channel) over = "the link is gone";
  }
  std::this_thread::sleep_for(std::chrono::seconds(2));
  std::_Exit(4);
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 3 || std::strcmp(arguments[1], "--host-pid") != 0) return 2;
  std::signal(SIGINT, SIG_IGN);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  std::thread(Watch, std::atoi(arguments[2])).detach();
  std::optional<Event> ready, done, replaced;
  while (!over && !replaced) {
    try {
      ready.emplace("Qlx_Lock_ToApp1", false);
      done.emplace("Qlx_Lock_ToApp2", false);
      replaced.emplace("Qlx_Lock_ToApp3", false);
      channel = IdentityOf("Qlx_Lock_ToApp1_seg");
    } catch (const bip::interprocess_exception&) {
      std::this_thread::sleep_for(milliseconds(5));
    }
  }
  if (over) return 0;
  std::optional<Requests> requests(std::in_place);
  Reader reader;
  bip::mapped_region segment;
  bool closed = false;
  while (!over && !closed) {
    requests->Poll();
    if (segment.get_size() == 0) {
      if (!replaced->Take(milliseconds(20))) continue;
      bip::shared_memory_object memory(bip::open_only, "Qlx_Mem_ToApp", bip::read_write);
      segment = bip::mapped_region(memory, bip::read_write);
    }
    if (!ready->Take(milliseconds(20))) continue;
    Bytes message(segment);
    const U32 id = message.At<U32>(0);
    if (reader.Take(id, message)) requests->Ask();
    if (id == 18) *message.first = reader.linked;
    if (id == 21) segment = bip::mapped_region();
    closed = id == 2;
    if (!closed) done->Set();
  }
  Reader::Print("commands", reader.commands);
  Reader::Print("bytes", reader.bytes);
  std::printf("end: %s\n", closed ? "closed" : over.load());
  requests.reset();  // before the host may start another
  if (closed) done->Set();
} catch (const std::exception& error) {
  std::printf("fault: %s\n", error.what());
  return 3;
}
