// What every thing behind a handle has in common.
#pragma once

#include <cstdint>

namespace modelhost {

enum class Kind : std::uint8_t {
  None,
  Model,
  Entities,
  Vertex,
  Edge,
  Loop,
  Face,
  Definition,
  Instance,
  Group,
  Image,
  Layer,
  LayerFolder,
  Material,
  Texture,
  Dictionary,
  // What a caller makes, uses and releases.
  String,
  TypedValue,
  RenderingOptions,
  ImageRep,
  TextureWriter,
  UvHelper,
  MeshHelper,
  Opening,
  GeometryInput,
  LoopInput,
  Count
};

constexpr std::uint32_t bitOf(Kind kind) {
  return 1u << static_cast<unsigned>(kind);
}

// Has a handle from construction to destruction. Objects are neither copied nor moved.
class Object {
 public:
  virtual ~Object();
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  void* handle() const { return handle_; }
  Kind kind() const { return kind_; }
  // Whether its handle stands for it, as at first.
  void setShown(bool shown) const;

 protected:
  explicit Object(Kind kind);

 private:
  void* handle_;
  Kind kind_;
};

}  // namespace modelhost
