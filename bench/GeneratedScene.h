#pragma once

#include <cstddef>
#include <cstdint>

#include <SketchUpAPI/sketchup.h>

namespace bench {

// A model of any size that is always the same for the same values.
struct SceneSize {
  std::size_t faces = 1000;      // in all definitions together
  std::size_t definitions = 1;   // each with the same share of the faces
  std::size_t placements = 1;    // at the root, of the definitions in turn
  bool textured = false;         // else all materials are plain colours
  std::size_t firstCorners = 0;  // of one more face, the first one of the first definition
  std::uint32_t seed = 1;
  std::size_t materials = 5;
  std::size_t texturedMaterials = 3;  // the first ones, of a textured model
};

// Faces mixed as in buildings: 70 % quads, 20 % polygons of 5 to 12 corners, half of them concave,
// 10 % quads with one to four holes. They share corners and edges, half of the edges are smooth,
// and most faces are painted. The caller releases the model. Throws std::runtime_error when the
// host refuses a step.
SUModelRef BuildScene(const SceneSize& size);

// One face with a zigzag outline of that many corners and as many square holes.
SUModelRef BuildLargeFace(std::size_t corners, std::size_t holes);

// That many squares in a row, of which every third is too large for single precision.
SUModelRef BuildRow(std::size_t squares);

// A cone of that many faces, all smooth, that meet at its apex.
SUModelRef BuildCone(std::size_t faces);

}  // namespace bench
