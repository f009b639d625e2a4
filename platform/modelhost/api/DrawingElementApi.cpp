#include <SketchUpAPI/model/drawing_element.h>

#include "core/Args.h"
#include "model/Measure.h"
#include "model/Model.h"

using namespace modelhost;

SUEntityRef SUDrawingElementToEntity(SUDrawingElementRef element) {
  MODELHOST_CALL_INFALLIBLE(SUDrawingElementToEntity);
  return convert<SUEntityRef>(element);
}

SUDrawingElementRef SUDrawingElementFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUDrawingElementFromEntity);
  return convert<SUDrawingElementRef>(entity);
}

SUResult SUDrawingElementGetBoundingBox(SUDrawingElementRef element, SUBoundingBox3D* box) {
  MODELHOST_CALL(SUDrawingElementGetBoundingBox);
  return give(element, box, [](const DrawingElement& e) { return boxOf(e).get(); });
}

SUResult SUDrawingElementGetMaterial(SUDrawingElementRef element, SUMaterialRef* material) {
  MODELHOST_CALL(SUDrawingElementGetMaterial);
  return giveRef(element, material, [](const DrawingElement& e) { return e.material.get(); });
}

SUResult SUDrawingElementSetMaterial(SUDrawingElementRef element, SUMaterialRef material) {
  MODELHOST_CALL(SUDrawingElementSetMaterial);
  Material* m = find(material);
  // A null handle takes the material away.
  if (material.ptr != nullptr && m == nullptr) return SU_ERROR_INVALID_INPUT;
  return change(element, [&](DrawingElement& e) {
    if (e.kind() == Kind::Face) {
      static_cast<Face&>(e).paint(true, m);
    } else {
      e.material = m;
    }
  });
}

SUResult SUDrawingElementGetLayer(SUDrawingElementRef element, SULayerRef* layer) {
  MODELHOST_CALL(SUDrawingElementGetLayer);
  return giveRef(element, layer, [](const DrawingElement& e) { return e.shownLayer(); });
}

SUResult SUDrawingElementSetLayer(SUDrawingElementRef element, SULayerRef layer) {
  MODELHOST_CALL(SUDrawingElementSetLayer);
  Layer* l = find(layer);
  if (l == nullptr) return SU_ERROR_INVALID_INPUT;
  return change(element, [&](DrawingElement& e) { e.layer = l; });
}

SUResult SUDrawingElementGetHidden(SUDrawingElementRef element, bool* hidden) {
  MODELHOST_CALL(SUDrawingElementGetHidden);
  return give(element, hidden, [](const DrawingElement& e) { return e.hidden; });
}

SUResult SUDrawingElementSetHidden(SUDrawingElementRef element, bool hidden) {
  MODELHOST_CALL(SUDrawingElementSetHidden);
  return change(element, [&](DrawingElement& e) { e.hidden = hidden; });
}

SUResult SUDrawingElementGetCastsShadows(SUDrawingElementRef element, bool* casts) {
  MODELHOST_CALL(SUDrawingElementGetCastsShadows);
  return give(element, casts, [](const DrawingElement& e) { return e.castsShadows; });
}

SUResult SUDrawingElementSetCastsShadows(SUDrawingElementRef element, bool casts) {
  MODELHOST_CALL(SUDrawingElementSetCastsShadows);
  return change(element, [&](DrawingElement& e) { e.castsShadows = casts; });
}

SUResult SUDrawingElementGetReceivesShadows(SUDrawingElementRef element, bool* receives) {
  MODELHOST_CALL(SUDrawingElementGetReceivesShadows);
  return give(element, receives, [](const DrawingElement& e) { return e.receivesShadows; });
}

SUResult SUDrawingElementSetReceivesShadows(SUDrawingElementRef element, bool receives) {
  MODELHOST_CALL(SUDrawingElementSetReceivesShadows);
  return change(element, [&](DrawingElement& e) { e.receivesShadows = receives; });
}
