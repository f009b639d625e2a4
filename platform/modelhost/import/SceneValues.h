// Attributes and typed values of a scene file.
#pragma once

#include <SketchUpAPI/model/defs.h>

#include "import/SceneNode.h"

namespace modelhost {

// Fills a created typed value: a plain JSON value, or an object that names the type.
void readValue(const SceneNode& node, SUTypedValueRef value);
// {"dictionary": {"key": value}}, or a list of such objects.
void readAttributes(const SceneNode& node, SUEntityRef entity);
void readRenderingOptions(const SceneNode& node, SURenderingOptionsRef options);

}  // namespace modelhost
