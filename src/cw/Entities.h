#pragma once

#include <string>
#include <vector>

#include "cw/ComponentInstance.h"
#include "cw/Edge.h"
#include "cw/Face.h"
#include "cw/Group.h"

namespace CW {

class GeometryInput;

// What a model's root, a definition or a group holds. The owner of the list owns everything in it.
class Entities {
 public:
  Entities() = default;
  Entities(SUEntitiesRef su_entities, SUModelRef su_model);
  // The entities of a definition or a group; the model is that of `su_owner`.
  Entities(SUEntitiesRef su_entities, SUEntityRef su_owner);

  bool is_null() const { return SUIsInvalid(su_entities_); }
  SUEntitiesRef ref() const { return su_entities_; }
  SUModelRef model_ref() const { return su_model_; }

  std::vector<Face> faces() const;
  std::vector<ComponentInstance> instances() const;
  std::vector<Group> groups() const;
  // All edges, or only those without a face.
  std::vector<Edge> edges(bool stand_alone_only = false) const;

  // Take the elements over; false, and nothing is taken, when the host refuses.
  bool add(std::vector<Face>& faces);
  bool add(std::vector<Edge>& edges);
  bool add_group(Group& group);
  // A new empty group.
  Group add_group();
  // A new placement of `definition`, null when the host refuses. A null definition throws
  // std::invalid_argument.
  ComponentInstance add_instance(const ComponentDefinition& definition,
                                 const SUTransformation& transformation,
                                 const std::string& name = {});
  // Builds what the input describes, coinciding vertices welded.
  bool fill(const GeometryInput& input);

 private:
  SUEntitiesRef su_entities_ = SU_INVALID;
  SUModelRef su_model_ = SU_INVALID;
};

}  // namespace CW
