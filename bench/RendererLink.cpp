#include "RendererLink.h"

#include <stdexcept>

#include "support/WxRuntime.h"

namespace bench {

RendererLink::RendererLink(const std::string& directory) {
  quellix::EnsureWx();
  if (!link.OpenChannel(&receiver)) throw std::runtime_error("no channel to the renderer");
  if (!link.LaunchApp(directory)) {
    link.ReleaseChannel();
    throw std::runtime_error("no renderer in " + directory);
  }
}

RendererLink::~RendererLink() {
  link.CloseApp();
  link.ReleaseChannel();
}

}  // namespace bench
