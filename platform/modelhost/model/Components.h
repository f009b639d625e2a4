// Definitions and what places them: component instances, groups and images.
#pragma once

#include <SketchUpAPI/model/component_definition.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "model/Entities.h"
#include "model/Entity.h"
#include "model/Geometry.h"
#include "pixels/Pixels.h"

namespace modelhost {

class Definition : public DrawingElement {
 public:
  explicit Definition(SUComponentType type);
  ~Definition() override;

  // Whether placing this definition among `entities` would put it inside itself.
  bool contains(const Entities& entities) const;

  const SUComponentType type;
  std::string name;
  std::string description;
  SUComponentBehavior behavior{};
  std::unique_ptr<Entities> entities;
  // Everything that places it, whether among entities yet or not.
  std::vector<Instance*> instances;

  // An image's picture, its file's name, and its size before the transformation.
  std::shared_ptr<const Pixels> picture;
  std::string fileName;
};

class Instance : public DrawingElement {
 public:
  explicit Instance(Definition& placed) : Instance(Kind::Instance, placed, nullptr) {}
  ~Instance() override;

  // Null when the definition has been released under a placement that was never added.
  Definition* definition() const { return definition_; }
  // Groups and images keep their definition alive together.
  const std::shared_ptr<Definition>& sharedDefinition() const { return shared_; }

  // Whether it counts among its definition's instances, as at first. Taken back in reverse order,
  // these restore the order of those instances.
  void leave();
  void join();
  // Places another definition of the same kind instead; groups and images hold it.
  void place(Definition& other, std::shared_ptr<Definition> otherShared);

  std::string name;
  SUTransformation transform = identity();

 protected:
  Instance(Kind kind, Definition& placed, std::shared_ptr<Definition> shared);

 private:
  friend class Definition;
  Definition* definition_;
  std::shared_ptr<Definition> shared_;
  std::size_t slot_;
  bool joined_ = true;
};

class Group : public Instance {
 public:
  Group() : Group(std::make_shared<Definition>(SUComponentType_Group)) {}
  explicit Group(const std::shared_ptr<Definition>& shared)
      : Instance(Kind::Group, *shared, shared) {}
};

class Image : public Instance {
 public:
  explicit Image(const std::shared_ptr<Definition>& shared)
      : Instance(Kind::Image, *shared, shared) {}
  // Size in the model, the transformation's scale included.
  double width() const;
  double height() const;
};

}  // namespace modelhost
