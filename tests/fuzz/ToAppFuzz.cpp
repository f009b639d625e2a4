// What the renderer makes of whatever stands in the segment that it is sent.

#include <cstring>
#include <memory>
#include <span>

#include "Bytes.h"
#include "Target.h"
#include "app/Decoder.h"
#include "app/Findings.h"
#include "app/Scene.h"

namespace fuzz {

namespace {

constexpr std::size_t kLargest = 1 << 16;

// A scene that is fed for a while, so that commands meet what earlier ones left.
struct World {
  kvapp::Findings findings;
  kvapp::Scene scene{findings};
  std::uint64_t commands = 0;
};

Bytes Of(const kvapp::test::Bytes& message) {
  const std::span<const std::byte> bytes = message;
  Bytes seed(bytes.size());
  std::memcpy(seed.data(), bytes.data(), bytes.size());
  return seed;
}

}  // namespace

void Run(const std::uint8_t* data, std::size_t size) {
  static GuardedPages pages(kLargest);
  static std::unique_ptr<World> world;
  // The segment is aligned as a mapping is, in words.
  size = std::min(size, kLargest) / 8 * 8;
  const auto* start = reinterpret_cast<const std::byte*>(pages.Place(data, size));
  const std::span<const std::byte> segment(start, size);
  kvapp::Decode(segment, {.headersOnly = true});
  kvapp::Decoded decoded = kvapp::Decode(segment);
  Require(decoded.messageBytes <= size || !decoded.problems.empty(),
          "a message that is read ends inside its segment");
  if (!decoded.problems.empty()) return;
  if (!world || world->commands > 200) world = std::make_unique<World>();
  world->scene.Apply(std::move(decoded.command), ++world->commands, decoded.messageBytes);
}

std::vector<Bytes> Seeds() {
  using namespace kvapp::test;
  std::vector<Bytes> seeds;
  for (const std::uint32_t id : {2u, 18u, 19u, 20u, 21u}) seeds.push_back(Of(BareCommand(id)));
  for (const std::uint32_t id : {14u, 16u}) {
    for (const char* text : {"House", "", "Exporting lights..."})
      seeds.push_back(Of(TextCommand(id, text)));
  }
  seeds.push_back(Of(ProgressCommand(0)));
  seeds.push_back(Of(ClassicMaterial(2, 7)));
  seeds.push_back(Of(PlainMaterial(0, 0xffffffff, "Front", {1, 1, 1})));
  seeds.push_back(Of(PbrMaterial(3, 8)));
  seeds.push_back(Of(TriangleMesh(5, 5, 2, 3)));
  seeds.push_back(Of(Instance(5, 6)));
  seeds.push_back(Of(OwnerBatch({5, 6, 7})));
  seeds.push_back(Of(CachedMaterials({{2, 0.5f, 7}, {3, 0, 8}})));
  seeds.push_back(Of(MoveOwner(5, 2)));
  seeds.push_back(Of(OmniLight(1, 2)));
  seeds.push_back(Of(SpotLight()));
  seeds.push_back(Of(Camera(4)));
  seeds.push_back(Of(Background(0.5f)));
  return seeds;
}

}  // namespace fuzz
