#include "cw/ComponentDefinition.h"

#include "cw/ComponentInstance.h"
#include "cw/Entities.h"
#include "cw/String.h"

namespace CW {

namespace {

SUEntityRef create() {
  SUComponentDefinitionRef su_definition = SU_INVALID;
  SUComponentDefinitionCreate(&su_definition);
  return SUComponentDefinitionToEntity(su_definition);
}

}  // namespace

ComponentDefinition::ComponentDefinition() : DrawingElement(create(), false) {}

ComponentDefinition::ComponentDefinition(SUComponentDefinitionRef su_definition)
    : DrawingElement(SUComponentDefinitionToEntity(su_definition), true) {}

ComponentDefinition::ComponentDefinition(const ComponentDefinition& other) : DrawingElement(other) {
  if (!other.owns()) return;
  reset(create(), false);
  if (is_null()) return;
  name(other.name());
  copy_look_from(other);
}

ComponentDefinition& ComponentDefinition::operator=(ComponentDefinition other) noexcept {
  swap(other);
  return *this;
}

std::string ComponentDefinition::name() const {
  require_valid(is_null(), "ComponentDefinition", "name");
  return fetch_text(
      [this](SUStringRef* su_name) { return SUComponentDefinitionGetName(ref(), su_name); });
}

void ComponentDefinition::name(const std::string& name) {
  require_valid(is_null(), "ComponentDefinition", "name");
  SUComponentDefinitionSetName(ref(), name.c_str());
}

Entities ComponentDefinition::entities() const {
  require_valid(is_null(), "ComponentDefinition", "entities");
  SUEntitiesRef su_entities = SU_INVALID;
  SUComponentDefinitionGetEntities(ref(), &su_entities);
  return Entities(su_entities, entity_ref());
}

SUComponentBehavior ComponentDefinition::behavior() const {
  require_valid(is_null(), "ComponentDefinition", "behavior");
  SUComponentBehavior behavior = {};
  SUComponentDefinitionGetBehavior(ref(), &behavior);
  return behavior;
}

ComponentInstance ComponentDefinition::create_instance() const {
  require_valid(is_null(), "ComponentDefinition", "create_instance");
  SUComponentInstanceRef su_instance = SU_INVALID;
  SUComponentDefinitionCreateInstance(ref(), &su_instance);
  return ComponentInstance(su_instance, false);
}

}  // namespace CW
