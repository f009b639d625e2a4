#pragma once

#include "cw/Entity.h"

namespace CW {

class Layer;
class Material;

// Anything that is drawn: faces, edges, placements, definitions.
class DrawingElement : public Entity {
 public:
  DrawingElement() = default;
  DrawingElement(SUDrawingElementRef su_element);

  SUDrawingElementRef drawing_element_ref() const;

  bool hidden() const;
  void hidden(bool hidden);
  // In the coordinates of the entities that hold the element; all zeros when it cannot be read.
  SUBoundingBox3D bounds() const;
  bool casts_shadows() const;
  void casts_shadows(bool casts);
  bool receive_shadows() const;
  void receive_shadows(bool receive);
  Layer layer() const;
  void layer(const Layer& layer);
  // Null when the element has none; of a face, the front material.
  Material material() const;
  void material(const Material& material);

 protected:
  DrawingElement(SUEntityRef su_entity, bool attached) : Entity(su_entity, attached) {}

  // Makes this element look as `source` does: material, layer, flags and attributes.
  void copy_look_from(const DrawingElement& source);
};

}  // namespace CW
