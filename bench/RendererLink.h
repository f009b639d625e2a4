#pragma once

#include <string>

#include "SilentReceiver.h"
#include "link/IpcInterface.h"

namespace bench {

// A link to a renderer in a process of its own, open while this lives. The renderer's requests go
// unanswered.
class RendererLink {
  quellix::SilentReceiver receiver;  // outlives the link

 public:
  // `directory` holds KvApp/. Throws std::runtime_error when there is no channel or no renderer.
  explicit RendererLink(const std::string& directory);
  ~RendererLink();
  RendererLink(const RendererLink&) = delete;
  RendererLink& operator=(const RendererLink&) = delete;

  quellix::IpcInterface link;
};

}  // namespace bench
