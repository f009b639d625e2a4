#include "cw/ComponentInstance.h"

#include "cw/String.h"

namespace CW {

ComponentInstance::ComponentInstance(SUComponentInstanceRef su_instance, bool attached)
    : DrawingElement(SUComponentInstanceToEntity(su_instance), attached) {}

ComponentInstance::ComponentInstance(const ComponentInstance& other) : DrawingElement(other) {
  if (!other.owns()) return;
  ComponentInstance copy = other.definition().create_instance();
  if (!copy.is_null()) {
    copy.name(other.name());
    copy.transformation(other.transformation());
    copy.copy_look_from(other);
  }
  swap(copy);
}

ComponentInstance& ComponentInstance::operator=(ComponentInstance other) noexcept {
  swap(other);
  return *this;
}

ComponentDefinition ComponentInstance::definition() const {
  require_valid(is_null(), "ComponentInstance", "definition");
  SUComponentDefinitionRef su_definition = SU_INVALID;
  SUComponentInstanceGetDefinition(ref(), &su_definition);
  return ComponentDefinition(su_definition);
}

std::string ComponentInstance::name() const {
  require_valid(is_null(), "ComponentInstance", "name");
  return fetch_text(
      [this](SUStringRef* su_name) { return SUComponentInstanceGetName(ref(), su_name); });
}

void ComponentInstance::name(const std::string& name) {
  require_valid(is_null(), "ComponentInstance", "name");
  SUComponentInstanceSetName(ref(), name.c_str());
}

SUTransformation ComponentInstance::transformation() const {
  require_valid(is_null(), "ComponentInstance", "transformation");
  SUTransformation transformation = {};
  SUComponentInstanceGetTransform(ref(), &transformation);
  return transformation;
}

void ComponentInstance::transformation(const SUTransformation& transformation) {
  require_valid(is_null(), "ComponentInstance", "transformation");
  SUComponentInstanceSetTransform(ref(), &transformation);
}

}  // namespace CW
