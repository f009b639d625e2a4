#pragma once

#include "cw/Entity.h"

namespace CW {

// A vertex of the model; the wrapper never owns one.
class Vertex : public Entity {
 public:
  Vertex() = default;
  Vertex(SUVertexRef su_vertex);

  SUVertexRef ref() const { return SUVertexFromEntity(entity_ref()); }

  SUPoint3D position() const;
};

}  // namespace CW
