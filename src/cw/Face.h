#pragma once

#include "cw/DrawingElement.h"

namespace CW {

class Loop;
class LoopInput;

class Face : public DrawingElement {
 public:
  // Makes a face that is in no entities yet, with the outline `points` in their order.
  explicit Face(const std::vector<SUPoint3D>& points);
  // The outline as `outer_loop` indexes `points`; the loop is taken over.
  Face(const std::vector<SUPoint3D>& points, LoopInput& outer_loop);
  Face(SUFaceRef su_face);
  Face(const Face& other);
  Face(Face&&) noexcept = default;
  Face& operator=(Face other) noexcept;

  SUFaceRef ref() const { return SUFaceFromEntity(entity_ref()); }

  Loop outer_loop() const;
  std::vector<Loop> inner_loops() const;
  // Null when that side has none.
  Material back_material() const;
  void back_material(const Material& material);
};

}  // namespace CW
