#pragma once

#include "cw/DrawingElement.h"

namespace CW {

class Vertex;

class Edge : public DrawingElement {
 public:
  // Makes an edge that is in no entities yet, checked as `create_edge` does.
  Edge(const SUPoint3D& start, const SUPoint3D& end);
  Edge(SUEdgeRef su_edge, bool attached = true);
  Edge(const Edge& other);
  Edge(Edge&&) noexcept = default;
  Edge& operator=(Edge other) noexcept;

  // The caller owns the edge. Throws std::invalid_argument for a null point and for two equal
  // ones.
  static SUEdgeRef create_edge(const SUPoint3D* start, const SUPoint3D* end);

  SUEdgeRef ref() const { return SUEdgeFromEntity(entity_ref()); }

  Vertex start() const;
  Vertex end() const;
  SUColor color() const;
  void color(SUColor color);
  bool soft() const;
  void soft(bool soft);
  bool smooth() const;
  void smooth(bool smooth);
};

}  // namespace CW
