#pragma once

#include "cw/ComponentInstance.h"

namespace CW {

// A placement with a definition of its own.
class Group : public ComponentInstance {
 public:
  // Makes an empty group that is in no entities yet.
  Group();
  Group(SUGroupRef su_group);
  Group(const Group& other);
  Group(Group&&) noexcept = default;
  Group& operator=(Group other) noexcept;

  SUGroupRef ref() const { return SUGroupFromEntity(entity_ref()); }

  ComponentDefinition definition() const;
  Entities entities() const;
  std::string name() const;
  void name(const std::string& name);
  // All zeros when it cannot be read.
  SUTransformation transformation() const;
  void transformation(const SUTransformation& transformation);
};

}  // namespace CW
