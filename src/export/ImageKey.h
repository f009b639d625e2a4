#pragma once

#include <cstdint>

#include <SketchUpAPI/sketchup.h>

namespace quellix {

// The key under which an image is known: the low half of its definition's persistent id, or of its
// own when it has none; 0 when neither can be read.
std::uint32_t ImageKey(SUImageRef su_image);

}  // namespace quellix
