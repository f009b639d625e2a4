#pragma once

#include <vector>

struct osmesa_context;

namespace kvpicture {

// A software OpenGL 3.3 context that needs neither display nor graphics card. Current on the thread
// that made it. Throws std::runtime_error.
class OffscreenContext {
 public:
  OffscreenContext();
  ~OffscreenContext();
  OffscreenContext(const OffscreenContext&) = delete;
  OffscreenContext& operator=(const OffscreenContext&) = delete;

 private:
  osmesa_context* context_ = nullptr;
  std::vector<unsigned char> surface_;  // of the default framebuffer, which is not drawn to
};

}  // namespace kvpicture
