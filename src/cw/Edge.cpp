#include "cw/Edge.h"

#include "cw/Vertex.h"

namespace CW {

Edge::Edge(const SUPoint3D& start, const SUPoint3D& end)
    : DrawingElement(SUEdgeToEntity(create_edge(&start, &end)), false) {}

Edge::Edge(SUEdgeRef su_edge, bool attached) : DrawingElement(SUEdgeToEntity(su_edge), attached) {}

Edge::Edge(const Edge& other) : DrawingElement(other) {
  if (!other.owns()) return;
  const SUPoint3D start_point = other.start().position();
  const SUPoint3D end_point = other.end().position();
  reset(SUEdgeToEntity(create_edge(&start_point, &end_point)), false);
  if (is_null()) return;
  color(other.color());
  soft(other.soft());
  smooth(other.smooth());
  copy_look_from(other);
}

Edge& Edge::operator=(Edge other) noexcept {
  swap(other);
  return *this;
}

SUEdgeRef Edge::create_edge(const SUPoint3D* start, const SUPoint3D* end) {
  if (start == nullptr || end == nullptr) {
    throw std::invalid_argument("CW::Edge::create_edge(): given Point3D is null");
  }
  if (start->x == end->x && start->y == end->y && start->z == end->z) {
    throw std::invalid_argument(
        "CW::Edge::create_edge(): start and end points are equal - cannot create edge of zero "
        "length");
  }
  SUEdgeRef su_edge = SU_INVALID;
  SUEdgeCreate(&su_edge, start, end);
  return su_edge;
}

Vertex Edge::start() const {
  require_valid(is_null(), "Edge", "start");
  SUVertexRef su_vertex = SU_INVALID;
  SUEdgeGetStartVertex(ref(), &su_vertex);
  return Vertex(su_vertex);
}

Vertex Edge::end() const {
  require_valid(is_null(), "Edge", "end");
  SUVertexRef su_vertex = SU_INVALID;
  SUEdgeGetEndVertex(ref(), &su_vertex);
  return Vertex(su_vertex);
}

SUColor Edge::color() const {
  require_valid(is_null(), "Edge", "color");
  SUColor color = {};
  SUEdgeGetColor(ref(), &color);
  return color;
}

void Edge::color(SUColor color) {
  require_valid(is_null(), "Edge", "color");
  SUEdgeSetColor(ref(), &color);
}

bool Edge::soft() const {
  require_valid(is_null(), "Edge", "soft");
  bool soft = false;
  SUEdgeGetSoft(ref(), &soft);
  return soft;
}

void Edge::soft(bool soft) {
  require_valid(is_null(), "Edge", "soft");
  SUEdgeSetSoft(ref(), soft);
}

bool Edge::smooth() const {
  require_valid(is_null(), "Edge", "smooth");
  bool smooth = false;
  SUEdgeGetSmooth(ref(), &smooth);
  return smooth;
}

void Edge::smooth(bool smooth) {
  require_valid(is_null(), "Edge", "smooth");
  SUEdgeSetSmooth(ref(), smooth);
}

}  // namespace CW
