#include "cw/DrawingElement.h"

#include "cw/Layer.h"
#include "cw/Material.h"

namespace CW {

DrawingElement::DrawingElement(SUDrawingElementRef su_element)
    : Entity(SUDrawingElementToEntity(su_element)) {}

SUDrawingElementRef DrawingElement::drawing_element_ref() const {
  return SUDrawingElementFromEntity(entity_ref());
}

bool DrawingElement::hidden() const {
  require_valid(is_null(), "DrawingElement", "hidden");
  bool hidden = false;
  SUDrawingElementGetHidden(drawing_element_ref(), &hidden);
  return hidden;
}

void DrawingElement::hidden(bool hidden) {
  require_valid(is_null(), "DrawingElement", "hidden");
  SUDrawingElementSetHidden(drawing_element_ref(), hidden);
}

SUBoundingBox3D DrawingElement::bounds() const {
  require_valid(is_null(), "DrawingElement", "bounds");
  SUBoundingBox3D box = {};
  SUDrawingElementGetBoundingBox(drawing_element_ref(), &box);
  return box;
}

bool DrawingElement::casts_shadows() const {
  require_valid(is_null(), "DrawingElement", "casts_shadows");
  bool casts = false;
  SUDrawingElementGetCastsShadows(drawing_element_ref(), &casts);
  return casts;
}

void DrawingElement::casts_shadows(bool casts) {
  require_valid(is_null(), "DrawingElement", "casts_shadows");
  SUDrawingElementSetCastsShadows(drawing_element_ref(), casts);
}

bool DrawingElement::receive_shadows() const {
  require_valid(is_null(), "DrawingElement", "receive_shadows");
  bool receive = false;
  SUDrawingElementGetReceivesShadows(drawing_element_ref(), &receive);
  return receive;
}

void DrawingElement::receive_shadows(bool receive) {
  require_valid(is_null(), "DrawingElement", "receive_shadows");
  SUDrawingElementSetReceivesShadows(drawing_element_ref(), receive);
}

Layer DrawingElement::layer() const {
  require_valid(is_null(), "DrawingElement", "layer");
  SULayerRef su_layer = SU_INVALID;
  SUDrawingElementGetLayer(drawing_element_ref(), &su_layer);
  return Layer(su_layer);
}

void DrawingElement::layer(const Layer& layer) {
  require_valid(is_null(), "DrawingElement", "layer");
  SUDrawingElementSetLayer(drawing_element_ref(), layer.ref());
}

Material DrawingElement::material() const {
  require_valid(is_null(), "DrawingElement", "material");
  SUMaterialRef su_material = SU_INVALID;
  SUDrawingElementGetMaterial(drawing_element_ref(), &su_material);
  return Material(su_material);
}

void DrawingElement::material(const Material& material) {
  require_valid(is_null(), "DrawingElement", "material");
  SUDrawingElementSetMaterial(drawing_element_ref(), material.ref());
}

void DrawingElement::copy_look_from(const DrawingElement& source) {
  if (is_null() || source.is_null()) return;
  const Material material_of_source = source.material();
  if (!material_of_source.is_null()) material(material_of_source);
  const Layer layer_of_source = source.layer();
  if (!layer_of_source.is_null()) layer(layer_of_source);
  hidden(source.hidden());
  casts_shadows(source.casts_shadows());
  receive_shadows(source.receive_shadows());
  copy_attributes_from(source);
}

}  // namespace CW
