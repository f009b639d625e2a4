#pragma once

#include <SketchUpAPI/sketchup.h>

namespace quellix {

// Whether there is an image entity in the collection or in anything placed below it. Each
// definition is looked into once.
bool ContainsImages(SUEntitiesRef su_entities);

}  // namespace quellix
