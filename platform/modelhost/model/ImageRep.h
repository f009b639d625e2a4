// The object through which a caller gets at pixels.
#pragma once

#include "core/Object.h"
#include "pixels/Pixels.h"

namespace modelhost {

class ImageRep : public Object {
 public:
  ImageRep() : Object(Kind::ImageRep) {}
  // Null until it is filled. Shared with what it came from; changes make a copy.
  std::shared_ptr<const Pixels> pixels;
};

}  // namespace modelhost
