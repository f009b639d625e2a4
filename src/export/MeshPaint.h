#pragma once

#include <cstdint>
#include <map>

#include <SketchUpAPI/sketchup.h>

#include "cw/Handle.h"
#include "export/InheritanceManager.h"
#include "export/SceneIndex.h"

namespace quellix {

// The id of a definition's mesh whose faces without paint show that of what the mesh is placed in.
// It is made of the two persistent ids alone, so it is the same in every export. Bit 62 is set,
// which no persistent id reaches; bit 63, which the second pass sets, is not.
std::uint64_t PaintedMeshId(std::uint64_t definitionId, SUMaterialRef su_paint);

// Finds the paint that makes two placements of one definition look different: what its faces
// without paint of their own take from the levels around it. For one export, on one thread.
//
// Faces count at any depth, whether they are hidden or not, and also in what faces the camera,
// which is not part of the mesh. So the answer depends on the definition alone, and a layer or an
// element that is shown or hidden changes no mesh id.
class MeshPaint {
 public:
  // The index is read at each call.
  explicit MeshPaint(const SceneIndex& sceneIndex) : scene(sceneIndex) {}

  // `manager` stands at a placement of the definition. Null when it inherits no paint there, or
  // when none of its faces would show it.
  SUMaterialRef TakenBy(SUComponentDefinitionRef su_definition, const InheritanceManager& manager);

 private:
  bool TakesPaint(SUComponentDefinitionRef su_definition);

  const SceneIndex& scene;
  std::map<SUComponentDefinitionRef, bool, CW::HandleLess> known;
};

}  // namespace quellix
