#pragma once

#include "cw/Entity.h"

namespace CW {

class Edge;
class LoopInput;
class Vertex;

// One closed outline of a face; the face owns it.
class Loop : public Entity {
 public:
  Loop() = default;
  Loop(SULoopRef su_loop);

  SULoopRef ref() const { return SULoopFromEntity(entity_ref()); }

  std::vector<Vertex> vertices() const;
  // Edge i leaves vertex i.
  std::vector<Edge> edges() const;
  std::vector<SUPoint3D> points() const;
  // The loop for a builder in which its vertices have the indexes from `first_index` on, with the
  // flags of its edges.
  LoopInput loop_input(size_t first_index = 0) const;
};

}  // namespace CW
