// Gives numbers to the textures that are seen on faces, and writes them to files.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "model/Material.h"
#include "model/Topology.h"
#include "model/UvMapping.h"
#include "pixels/Pixels.h"

namespace modelhost {

// How the mapping of a side gives texture coordinates.
UvMapping mappingOf(const Face& face, bool front, const TileSize& tile);

// Thread-safe. Keeps the pictures that it has numbered, whatever happens to the model.
class TextureWriter : public Object {
 public:
  TextureWriter() : Object(Kind::TextureWriter) {}

  struct Entry {
    // Whether the texture lies on one face side as a distorted picture.
    bool distorted = false;
    bool front = true;
    TileSize tile;
    std::string fileName;
    std::shared_ptr<const Pixels> pixels;
    // Colours are changed when the texture is written, not when it is loaded.
    Colorize colorize;
    bool colorized = false;
    // Of a distorted texture: how it lies on the face, and the rectangle around the face.
    UvMapping mapping;
    Axes axes{};
    SUPoint2D low{};
    SUPoint2D high{};

    bool affine() const { return !distorted; }
    // Over the rectangle around the face, once the distortion is in the picture.
    UvMapping flatMapping() const { return UvMapping::overRectangle(axes, low, high); }
  };

  // 0 for an entity without a texture.
  long load(const DrawingElement& element);
  long load(const Face& face, bool front);
  std::size_t size() const;
  // Null for an id that has not been given. The entry lives as long as the writer.
  const Entry* entry(long id) const;

 private:
  // The texture; for a distorted one also the face and its side. Handles, so that things which
  // are gone are not mistaken for new ones.
  using Key = std::tuple<void*, void*, bool>;
  Entry* entryFor(const Key& key, const Material& material, long& id);
  long loadAffine(const Material& material);

  mutable std::mutex mutex_;
  std::map<Key, long> ids_;
  std::vector<std::unique_ptr<Entry>> entries_;
};

// The picture of an entry as it is seen, distortion included; at most `limit` pixels a side.
Pixels render(const TextureWriter::Entry& entry, std::size_t limit);

}  // namespace modelhost
