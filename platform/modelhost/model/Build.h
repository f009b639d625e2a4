// Descriptions of geometry, collected call by call, and how entities are built from them.
#pragma once

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/model/geometry_input.h>

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "model/Entities.h"

namespace modelhost {

class LoopInput : public Object {
 public:
  LoopInput() : Object(Kind::LoopInput) {}
  // As many as indices when the loop is used; edge i follows vertex i.
  LoopSpec::EdgeFlags* edge(std::size_t index);

  std::vector<std::size_t> indices;
  std::vector<LoopSpec::EdgeFlags> edges;
  // A geometry input has taken it over.
  bool taken = false;
};

class GeometryInput : public Object {
 public:
  struct EdgeInput {
    std::size_t start;
    std::size_t end;
    LoopSpec::EdgeFlags flags;
  };
  struct FaceInput {
    std::unique_ptr<LoopInput> outer;
    std::vector<std::unique_ptr<LoopInput>> inner;
    std::optional<SUMaterialInput> front;
    std::optional<SUMaterialInput> back;
    Link<SULayerRef> layer;
    bool hidden = false;
    bool reversed = false;
  };

  GeometryInput() : Object(Kind::GeometryInput) {}

  std::vector<SUPoint3D> points;
  std::vector<EdgeInput> edges;
  std::vector<FaceInput> faces;
};

// The tile size by which a material's texture lies on faces by default.
TileSize tileOf(const Material* material);

// Builds all of `input`, or nothing and says what is wrong: an index that has no point, an outline
// of fewer than three different points, one that is not flat or has no area.
SUResult fill(Entities& entities, const GeometryInput& input, bool weld);

// A face that belongs to its maker; null when the points make none.
std::unique_ptr<Face> buildLoneFace(std::span<const SUPoint3D> points, const LoopInput& outer);
// Cuts a hole into a face, whoever it belongs to.
SUResult addHole(Face& face, std::span<const SUPoint3D> points, const LoopInput& loop);

}  // namespace modelhost
