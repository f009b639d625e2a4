#include "model/TextureWriter.h"

#include <algorithm>
#include <cmath>

namespace modelhost {

namespace {

// A distorted texture is written this large at most.
constexpr std::size_t kMaxBaked = 4096;

void surround(TextureWriter::Entry& entry, const Face& face) {
  entry.axes = axesOf(face.sideNormal(entry.front));
  bool first = true;
  for (const Vertex* vertex : face.loops.front()->vertices) {
    const double x = dot(vertex->position, entry.axes.x);
    const double y = dot(vertex->position, entry.axes.y);
    if (first) entry.low = entry.high = {x, y};
    first = false;
    entry.low = {std::min(entry.low.x, x), std::min(entry.low.y, y)};
    entry.high = {std::max(entry.high.x, x), std::max(entry.high.y, y)};
  }
}

// Pixels along one side of the rectangle, so that none of the texture's detail is lost: the most
// texture pixels that a step along it crosses anywhere on a coarse grid.
std::size_t bakedSide(const TextureWriter::Entry& entry, bool along, std::size_t limit) {
  constexpr int kSteps = 16;
  double most = 0;
  const auto seen = [&](int i, int j) {
    const double fx = static_cast<double>(i) / kSteps;
    const double fy = static_cast<double>(j) / kSteps;
    const SUVector3D p = entry.axes.x * (entry.low.x + fx * (entry.high.x - entry.low.x)) +
                         entry.axes.y * (entry.low.y + fy * (entry.high.y - entry.low.y));
    const SUUVQ uvq = entry.mapping.at({p.x, p.y, p.z});
    return SUPoint2D{uvq.u / uvq.q * static_cast<double>(entry.pixels->width),
                     uvq.v / uvq.q * static_cast<double>(entry.pixels->height)};
  };
  for (int i = 0; i < kSteps; ++i) {
    for (int j = 0; j <= kSteps; ++j) {
      const SUPoint2D a = along ? seen(i, j) : seen(j, i);
      const SUPoint2D b = along ? seen(i + 1, j) : seen(j, i + 1);
      const double step = std::hypot(b.x - a.x, b.y - a.y);
      if (std::isfinite(step)) most = std::max(most, step * kSteps);
    }
  }
  return std::clamp(static_cast<std::size_t>(std::min(most, 1e6) + 0.5), std::size_t{1}, limit);
}

Pixels bake(const TextureWriter::Entry& entry, const Pixels& source, std::size_t limit) {
  const std::size_t width = bakedSide(entry, true, limit);
  const std::size_t height = bakedSide(entry, false, limit);
  Pixels result = blankPixels(width, height, source.bitsPerPixel == 32 ? 32 : 24);
  std::uint8_t* out = result.bytes.data();
  // The mapping has no part across the plane, so that points need not be lifted onto it.
  for (std::size_t y = 0; y < height; ++y) {
    const double fy = (static_cast<double>(y) + 0.5) / static_cast<double>(height);
    for (std::size_t x = 0; x < width; ++x, out += result.bytesPerPixel()) {
      const double fx = (static_cast<double>(x) + 0.5) / static_cast<double>(width);
      const SUVector3D p = entry.axes.x * (entry.low.x + fx * (entry.high.x - entry.low.x)) +
                           entry.axes.y * (entry.low.y + fy * (entry.high.y - entry.low.y));
      const SUUVQ uvq = entry.mapping.at({p.x, p.y, p.z});
      const SUColor color = sampleRepeated(source, uvq.u / uvq.q, uvq.v / uvq.q);
      out[0] = color.blue;
      out[1] = color.green;
      out[2] = color.red;
      if (result.bitsPerPixel == 32) out[3] = color.alpha;
    }
  }
  return result;
}

}  // namespace

UvMapping mappingOf(const Face& face, bool front, const TileSize& tile) {
  const UvMapping* own = face.sideMapping(front);
  return own != nullptr ? *own : UvMapping::planar(face.sideNormal(front), tile);
}

// With the mutex held: a new entry, or null when the key has its id already.
TextureWriter::Entry* TextureWriter::entryFor(const Key& key, const Material& material, long& id) {
  const auto [at, isNew] = ids_.try_emplace(key, static_cast<long>(entries_.size() + 1));
  id = at->second;
  if (!isNew) return nullptr;
  entries_.push_back(std::make_unique<Entry>());
  Entry& entry = *entries_.back();
  const Texture& texture = *material.texture;
  entry.tile = texture.tile;
  entry.fileName = texture.fileName;
  entry.pixels = texture.pixels;
  entry.colorized = material.colorized();
  entry.colorize = material.colorize();
  return &entry;
}

long TextureWriter::loadAffine(const Material& material) {
  const std::lock_guard lock(mutex_);
  long id = 0;
  entryFor({material.texture->handle(), nullptr, false}, material, id);
  return id;
}

long TextureWriter::load(const DrawingElement& element) {
  const Material* material = element.material.get();
  return material != nullptr && material->texture ? loadAffine(*material) : 0;
}

long TextureWriter::load(const Face& face, bool front) {
  const Material* material = face.sideMaterial(front);
  if (material == nullptr || !material->texture) return 0;
  const UvMapping* mapping = face.sideMapping(front);
  if (mapping == nullptr || mapping->affine()) return loadAffine(*material);
  const std::lock_guard lock(mutex_);
  long id = 0;
  if (Entry* entry = entryFor({material->texture->handle(), face.handle(), front}, *material, id)) {
    entry->distorted = true;
    entry->front = front;
    entry->mapping = *mapping;
    surround(*entry, face);
  }
  return id;
}

std::size_t TextureWriter::size() const {
  const std::lock_guard lock(mutex_);
  return entries_.size();
}

const TextureWriter::Entry* TextureWriter::entry(long id) const {
  const std::lock_guard lock(mutex_);
  if (id < 1 || static_cast<std::size_t>(id) > entries_.size()) return nullptr;
  return entries_[static_cast<std::size_t>(id) - 1].get();
}

Pixels render(const TextureWriter::Entry& entry, std::size_t limit) {
  const Pixels shown =
      entry.colorized ? colorizedCopy(*entry.pixels, entry.colorize) : *entry.pixels;
  const std::size_t side = std::min(limit, kMaxBaked);
  if (!entry.affine()) return bake(entry, shown, side);
  const std::size_t longer = std::max(shown.width, shown.height);
  if (longer <= limit) return shown;
  const auto scaled = [&](std::size_t n) { return std::max<std::size_t>(1, n * limit / longer); };
  return resized(shown, scaled(shown.width), scaled(shown.height));
}

}  // namespace modelhost
