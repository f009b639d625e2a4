// What a caller asks for to draw a face: triangles with smoothed normals, texture coordinates.
#pragma once

#include <optional>
#include <vector>

#include "model/TextureWriter.h"
#include "model/Topology.h"
#include "model/UvMapping.h"

namespace modelhost {

// A snapshot of how textures lie on the two sides of a face.
class UvHelper : public Object {
 public:
  UvHelper() : Object(Kind::UvHelper) {}
  std::optional<UvMapping> front;
  std::optional<UvMapping> back;
};

// With the entry of a texture id (may be null): a distorted texture counts as already baked into
// its picture, and a face without a material of its own shows the entry's texture.
UvMapping shownMapping(const Face& face, bool front, const TextureWriter::Entry* entry);

class MeshHelper : public Object {
 public:
  explicit MeshHelper(const Face& face);

  // The face's outlines in order, each corner once; then points where outlines cross.
  std::vector<SUPoint3D> vertices;
  std::vector<SUVector3D> normals;
  std::vector<std::size_t> indices;
  UvMapping front;
  UvMapping back;
};

// The normal at a corner of a face: the mean of the faces around it that smooth edges join to it,
// weighed by their angles there.
SUVector3D smoothedNormal(const Face& face, const Vertex& vertex);

}  // namespace modelhost
