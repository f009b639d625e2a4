#include "cw/Vertex.h"

namespace CW {

Vertex::Vertex(SUVertexRef su_vertex) : Entity(SUVertexToEntity(su_vertex)) {}

SUPoint3D Vertex::position() const {
  require_valid(is_null(), "Vertex", "position");
  SUPoint3D position = {};
  SUVertexGetPosition(ref(), &position);
  return position;
}

}  // namespace CW
