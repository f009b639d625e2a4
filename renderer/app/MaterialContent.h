#pragma once

#include "app/SceneTypes.h"

namespace kvapp {

// Whether two materials show the same: every value but index, key and texture name.
bool SameContent(const Material& a, const Material& b);

}  // namespace kvapp
