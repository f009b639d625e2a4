#pragma once

#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "cw/Edge.h"
#include "cw/Face.h"

namespace CW {

class Loop;

// Geometry gathered for one `Entities::fill`; released with the wrapper.
class GeometryInput {
 public:
  GeometryInput();
  GeometryInput(const GeometryInput&) = delete;
  GeometryInput(GeometryInput&& other) noexcept;
  GeometryInput& operator=(const GeometryInput&) = delete;
  GeometryInput& operator=(GeometryInput&& other) noexcept;
  ~GeometryInput();

  bool is_null() const { return SUIsInvalid(su_input_); }
  SUGeometryInputRef ref() const { return su_input_; }

  // Add copies: outlines and holes, edge flags, materials, layer, visibility. A null argument
  // throws std::invalid_argument. The result is the index in the input.
  size_t add_face(const Face& face);
  size_t add_edge(const Edge& edge);
  void add_faces(const std::vector<Face>& faces);
  void add_edges(const std::vector<Edge>& edges);
  bool empty() const;

 private:
  // Adds the loop's vertices; the result is the index of the first of them.
  size_t add_vertices(const std::vector<SUPoint3D>& points);

  SUGeometryInputRef su_input_ = SU_INVALID;
};

}  // namespace CW
