#include "cw/Face.h"

#include "cw/Loop.h"
#include "cw/LoopInput.h"
#include "cw/Material.h"

namespace CW {

namespace {

SUEntityRef create(const std::vector<SUPoint3D>& points, LoopInput& outer_loop) {
  SUFaceRef su_face = SU_INVALID;
  SUFaceCreate(&su_face, points.data(), outer_loop.out());
  return SUFaceToEntity(su_face);
}

SUEntityRef create_simple(const std::vector<SUPoint3D>& points) {
  SUFaceRef su_face = SU_INVALID;
  SUFaceCreateSimple(&su_face, points.data(), points.size());
  return SUFaceToEntity(su_face);
}

}  // namespace

Face::Face(const std::vector<SUPoint3D>& points) : DrawingElement(create_simple(points), false) {}

Face::Face(const std::vector<SUPoint3D>& points, LoopInput& outer_loop)
    : DrawingElement(create(points, outer_loop), false) {}

Face::Face(SUFaceRef su_face)
    : DrawingElement(SUDrawingElementToEntity(SUFaceToDrawingElement(su_face)), true) {}

Face::Face(const Face& other) : DrawingElement(other) {
  if (!other.owns()) return;
  const Loop outer = other.outer_loop();
  LoopInput outer_input = outer.loop_input();
  reset(create(outer.points(), outer_input), false);
  if (is_null()) return;
  for (const Loop& inner : other.inner_loops()) {
    LoopInput inner_input = inner.loop_input();
    SUFaceAddInnerLoop(ref(), inner.points().data(), inner_input.out());
  }
  copy_look_from(other);
  const Material back = other.back_material();
  if (!back.is_null()) back_material(back);
}

Face& Face::operator=(Face other) noexcept {
  swap(other);
  return *this;
}

Loop Face::outer_loop() const {
  require_valid(is_null(), "Face", "outer_loop");
  SULoopRef su_loop = SU_INVALID;
  SUFaceGetOuterLoop(ref(), &su_loop);
  return Loop(su_loop);
}

std::vector<Loop> Face::inner_loops() const {
  require_valid(is_null(), "Face", "inner_loops");
  return fetch_wrapped<Loop, SULoopRef>(
      [this](size_t* count) { return SUFaceGetNumInnerLoops(ref(), count); },
      [this](size_t len, SULoopRef* su_loops, size_t* count) {
        return SUFaceGetInnerLoops(ref(), len, su_loops, count);
      });
}

Material Face::back_material() const {
  require_valid(is_null(), "Face", "back_material");
  SUMaterialRef su_material = SU_INVALID;
  SUFaceGetBackMaterial(ref(), &su_material);
  return Material(su_material);
}

void Face::back_material(const Material& material) {
  require_valid(is_null(), "Face", "back_material");
  SUFaceSetBackMaterial(ref(), material.ref());
}

}  // namespace CW
