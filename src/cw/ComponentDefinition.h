#pragma once

#include "cw/DrawingElement.h"

namespace CW {

class ComponentInstance;
class Entities;

// What component instances, groups and images place.
class ComponentDefinition : public DrawingElement {
 public:
  // Makes an empty definition that no model has yet.
  ComponentDefinition();
  ComponentDefinition(SUComponentDefinitionRef su_definition);
  ComponentDefinition(const ComponentDefinition& other);
  ComponentDefinition(ComponentDefinition&&) noexcept = default;
  ComponentDefinition& operator=(ComponentDefinition other) noexcept;

  SUComponentDefinitionRef ref() const { return SUComponentDefinitionFromEntity(entity_ref()); }

  std::string name() const;
  void name(const std::string& name);
  Entities entities() const;
  SUComponentBehavior behavior() const;
  // An instance that is in no entities yet.
  ComponentInstance create_instance() const;
};

}  // namespace CW
