#include "picture/Model.h"

namespace kvpicture {

std::optional<Box> BoxOf(const Model& model) {
  std::optional<Box> box;
  for (const Item& item : model.items) {
    const Part& part = model.parts[static_cast<std::size_t>(item.part)];
    for (int corner = 0; corner < 8; ++corner) {
      const glm::vec3 local((corner & 1) != 0 ? part.high.x : part.low.x,
                            (corner & 2) != 0 ? part.high.y : part.low.y,
                            (corner & 4) != 0 ? part.high.z : part.low.z);
      const glm::vec3 world(item.transform * glm::vec4(local, 1));
      if (!box) box = Box{world, world};
      box->low = glm::min(box->low, world);
      box->high = glm::max(box->high, world);
    }
  }
  return box;
}

}  // namespace kvpicture
