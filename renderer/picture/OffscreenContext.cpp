#include "picture/OffscreenContext.h"

#include <stdexcept>

#include "picture/Gl.h"

#include <GL/osmesa.h>

// The library keeps a few small objects for the life of the process, and hands work to threads in
// ways that the sanitizers, which did not see it compiled, cannot follow. They read this when the
// program is built with them.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libOSMesa\n";
}
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
  return "race:libOSMesa\nmutex:libOSMesa\n";
}

namespace kvpicture {

namespace {

constexpr int kSide = 16;

}  // namespace

OffscreenContext::OffscreenContext() : surface_(kSide * kSide * 4) {
  const int attributes[] = {OSMESA_FORMAT,
                            OSMESA_RGBA,
                            OSMESA_DEPTH_BITS,
                            24,
                            OSMESA_PROFILE,
                            OSMESA_CORE_PROFILE,
                            OSMESA_CONTEXT_MAJOR_VERSION,
                            3,
                            OSMESA_CONTEXT_MINOR_VERSION,
                            3,
                            0};
  context_ = OSMesaCreateContextAttribs(attributes, nullptr);
  if (context_ == nullptr ||
      OSMesaMakeCurrent(context_, surface_.data(), GL_UNSIGNED_BYTE, kSide, kSide) == GL_FALSE) {
    throw std::runtime_error("no off-screen OpenGL 3.3 context could be made");
  }
}

OffscreenContext::~OffscreenContext() {
  if (context_ != nullptr) OSMesaDestroyContext(context_);
}

}  // namespace kvpicture
