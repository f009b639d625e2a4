#include "cw/Loop.h"

#include "cw/Edge.h"
#include "cw/LoopInput.h"
#include "cw/Vertex.h"

namespace CW {

Loop::Loop(SULoopRef su_loop) : Entity(SULoopToEntity(su_loop)) {}

std::vector<Vertex> Loop::vertices() const {
  require_valid(is_null(), "Loop", "vertices");
  return fetch_wrapped<Vertex, SUVertexRef>(
      [this](size_t* count) { return SULoopGetNumVertices(ref(), count); },
      [this](size_t len, SUVertexRef* su_vertices, size_t* count) {
        return SULoopGetVertices(ref(), len, su_vertices, count);
      });
}

std::vector<Edge> Loop::edges() const {
  require_valid(is_null(), "Loop", "edges");
  // A closed loop has as many edges as vertices.
  return fetch_wrapped<Edge, SUEdgeRef>(
      [this](size_t* count) { return SULoopGetNumVertices(ref(), count); },
      [this](size_t len, SUEdgeRef* su_edges, size_t* count) {
        return SULoopGetEdges(ref(), len, su_edges, count);
      });
}

std::vector<SUPoint3D> Loop::points() const {
  require_valid(is_null(), "Loop", "points");
  std::vector<SUPoint3D> points;
  for (const Vertex& vertex : vertices()) points.push_back(vertex.position());
  return points;
}

LoopInput Loop::loop_input(size_t first_index) const {
  require_valid(is_null(), "Loop", "loop_input");
  LoopInput input;
  const std::vector<Edge> loop_edges = edges();
  for (size_t i = 0; i < loop_edges.size(); ++i) input.add_vertex_index(first_index + i);
  for (size_t i = 0; i < loop_edges.size(); ++i) {
    input.set_edge_hidden(i, loop_edges[i].hidden());
    input.set_edge_soft(i, loop_edges[i].soft());
    input.set_edge_smooth(i, loop_edges[i].smooth());
  }
  return input;
}

}  // namespace CW
