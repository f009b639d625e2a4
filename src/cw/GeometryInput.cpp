#include "cw/GeometryInput.h"

#include <utility>

#include "cw/Layer.h"
#include "cw/Loop.h"
#include "cw/LoopInput.h"
#include "cw/Material.h"
#include "cw/Vertex.h"

namespace CW {

GeometryInput::GeometryInput() {
  SUGeometryInputCreate(&su_input_);
}

GeometryInput::GeometryInput(GeometryInput&& other) noexcept {
  *this = std::move(other);
}

GeometryInput& GeometryInput::operator=(GeometryInput&& other) noexcept {
  std::swap(su_input_, other.su_input_);
  return *this;
}

GeometryInput::~GeometryInput() {
  if (!is_null()) SUGeometryInputRelease(&su_input_);
}

size_t GeometryInput::add_vertices(const std::vector<SUPoint3D>& points) {
  size_t first = 0;
  size_t faces = 0, edges = 0, curves = 0, arcs = 0;
  SUGeometryInputGetCounts(su_input_, &first, &faces, &edges, &curves, &arcs);
  for (const SUPoint3D& point : points) SUGeometryInputAddVertex(su_input_, &point);
  return first;
}

size_t GeometryInput::add_face(const Face& face) {
  require_valid(is_null(), "GeometryInput", "add_face");
  if (face.is_null()) {
    throw std::invalid_argument("CW::GeometryInput::add_face(): Face argument is null");
  }
  const Loop outer = face.outer_loop();
  LoopInput outer_input = outer.loop_input(add_vertices(outer.points()));
  size_t face_index = 0;
  SUGeometryInputAddFace(su_input_, outer_input.out(), &face_index);
  for (const Loop& inner : face.inner_loops()) {
    LoopInput inner_input = inner.loop_input(add_vertices(inner.points()));
    SUGeometryInputFaceAddInnerLoop(su_input_, face_index, inner_input.out());
  }
  SUMaterialInput material = {};
  material.material = face.material().ref();
  if (SUIsValid(material.material)) {
    SUGeometryInputFaceSetFrontMaterial(su_input_, face_index, &material);
  }
  material.material = face.back_material().ref();
  if (SUIsValid(material.material)) {
    SUGeometryInputFaceSetBackMaterial(su_input_, face_index, &material);
  }
  const Layer layer = face.layer();
  if (!layer.is_null()) SUGeometryInputFaceSetLayer(su_input_, face_index, layer.ref());
  SUGeometryInputFaceSetHidden(su_input_, face_index, face.hidden());
  return face_index;
}

size_t GeometryInput::add_edge(const Edge& edge) {
  require_valid(is_null(), "GeometryInput", "add_edge");
  if (edge.is_null()) {
    throw std::invalid_argument("CW::GeometryInput::add_edge(): Edge argument is null");
  }
  const size_t first = add_vertices({edge.start().position(), edge.end().position()});
  size_t edge_index = 0;
  SUGeometryInputAddEdge(su_input_, first, first + 1, &edge_index);
  SUGeometryInputEdgeSetHidden(su_input_, edge_index, edge.hidden());
  SUGeometryInputEdgeSetSoft(su_input_, edge_index, edge.soft());
  SUGeometryInputEdgeSetSmooth(su_input_, edge_index, edge.smooth());
  const Material material = edge.material();
  if (!material.is_null()) {
    SUGeometryInputEdgeSetMaterial(su_input_, edge_index, material.ref());
  }
  const Layer layer = edge.layer();
  if (!layer.is_null()) SUGeometryInputEdgeSetLayer(su_input_, edge_index, layer.ref());
  return edge_index;
}

void GeometryInput::add_faces(const std::vector<Face>& faces) {
  require_valid(is_null(), "GeometryInput", "add_faces");
  for (const Face& face : faces) add_face(face);
}

void GeometryInput::add_edges(const std::vector<Edge>& edges) {
  require_valid(is_null(), "GeometryInput", "add_edges");
  for (const Edge& edge : edges) add_edge(edge);
}

bool GeometryInput::empty() const {
  require_valid(is_null(), "GeometryInput", "empty");
  size_t vertices = 0, faces = 0, edges = 0, curves = 0, arcs = 0;
  SUGeometryInputGetCounts(su_input_, &vertices, &faces, &edges, &curves, &arcs);
  return vertices + faces + edges + curves + arcs == 0;
}

}  // namespace CW
