#pragma once

#include "cw/ComponentDefinition.h"

namespace CW {

// One placement of a definition.
class ComponentInstance : public DrawingElement {
 public:
  // `attached` is false for an instance that is in no entities yet: the wrapper releases it.
  ComponentInstance(SUComponentInstanceRef su_instance, bool attached = true);
  ComponentInstance(const ComponentInstance& other);
  ComponentInstance(ComponentInstance&&) noexcept = default;
  ComponentInstance& operator=(ComponentInstance other) noexcept;

  SUComponentInstanceRef ref() const { return SUComponentInstanceFromEntity(entity_ref()); }

  ComponentDefinition definition() const;
  std::string name() const;
  void name(const std::string& name);
  // All zeros when it cannot be read.
  SUTransformation transformation() const;
  void transformation(const SUTransformation& transformation);

 protected:
  ComponentInstance(SUEntityRef su_entity, bool attached) : DrawingElement(su_entity, attached) {}
};

}  // namespace CW
