#include "cw/Group.h"

#include "cw/Entities.h"
#include "cw/String.h"

namespace CW {

namespace {

SUEntityRef create() {
  SUGroupRef su_group = SU_INVALID;
  SUGroupCreate(&su_group);
  return SUGroupToEntity(su_group);
}

}  // namespace

Group::Group() : ComponentInstance(create(), false) {}

Group::Group(SUGroupRef su_group) : ComponentInstance(SUGroupToEntity(su_group), true) {}

Group::Group(const Group& other) : ComponentInstance(other.entity_ref(), true) {
  if (!other.owns()) return;
  reset(create(), false);
  if (is_null()) return;
  name(other.name());
  transformation(other.transformation());
  copy_look_from(other);
}

Group& Group::operator=(Group other) noexcept {
  swap(other);
  return *this;
}

ComponentDefinition Group::definition() const {
  require_valid(is_null(), "Group", "definition");
  SUComponentDefinitionRef su_definition = SU_INVALID;
  SUGroupGetDefinition(ref(), &su_definition);
  return ComponentDefinition(su_definition);
}

Entities Group::entities() const {
  require_valid(is_null(), "Group", "entities");
  SUEntitiesRef su_entities = SU_INVALID;
  SUGroupGetEntities(ref(), &su_entities);
  return Entities(su_entities, entity_ref());
}

std::string Group::name() const {
  require_valid(is_null(), "Group", "name");
  return fetch_text([this](SUStringRef* su_name) { return SUGroupGetName(ref(), su_name); });
}

void Group::name(const std::string& name) {
  require_valid(is_null(), "Group", "name");
  SUGroupSetName(ref(), name.c_str());
}

SUTransformation Group::transformation() const {
  require_valid(is_null(), "Group", "transformation");
  SUTransformation transformation = {};
  SUGroupGetTransform(ref(), &transformation);
  return transformation;
}

void Group::transformation(const SUTransformation& transformation) {
  require_valid(is_null(), "Group", "transformation");
  SUGroupSetTransform(ref(), &transformation);
}

}  // namespace CW
