#pragma once

#include <string>

#include "link/IpcInterface.h"

namespace bench {

// A link to a renderer in a process of its own, open while this lives. The renderer's requests go
// unanswered.
class RendererLink : private quellix::RequestReceiver {
 public:
  // `directory` holds KvApp/. Throws std::runtime_error when there is no channel or no renderer.
  explicit RendererLink(const std::string& directory);
  ~RendererLink() override;

  quellix::IpcInterface link;

 private:
  void OnReload() override {}
  void OnCameraChangedByGui(const std::array<float, 10>&) override {}
  void OnRendererQuit() override {}
  void OnDatetimeUpdated(const std::array<std::int32_t, 6>&) override {}
  std::vector<quellix::SceneInfo> OnGetScenes() override { return {}; }
  std::optional<std::array<float, 13>> OnRequestCameraInfo() override { return {}; }
  std::optional<quellix::ShadowInfo> OnRequestShadowInfo() override { return {}; }
  std::optional<bool> ModelOutOfSync() override { return {}; }
  void SaveParameters(const std::string&, const std::vector<std::int64_t>&) override {}
  std::optional<std::vector<std::uint32_t>> LoadParameters(const std::string&) override {
    return {};
  }
  void RemoveAttribute(const std::string&) override {}
  void SetUsePbr(bool) override {}
  std::optional<bool> GetUsePbr() override { return {}; }
  std::optional<std::uint64_t> GetSuVersion() override { return {}; }
  void SuppressAutosyncOnce() override {}
};

}  // namespace bench
