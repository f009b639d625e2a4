#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "link/RequestReceiver.h"

namespace quellix {

// Answers nothing; what a test wants of it, it overrides.
class SilentReceiver : public RequestReceiver {
 public:
  void OnReload() override {}
  void OnCameraChangedByGui(const std::array<float, 10>&) override {}
  void OnRendererQuit() override {}
  void OnDatetimeUpdated(const std::array<std::int32_t, 6>&) override {}
  std::vector<SceneInfo> OnGetScenes(const Room&) override { return {}; }
  std::optional<std::array<float, 13>> OnRequestCameraInfo() override { return {}; }
  std::optional<ShadowInfo> OnRequestShadowInfo() override { return {}; }
  std::optional<bool> ModelOutOfSync() override { return {}; }
  void SaveParameters(const std::string&, const std::vector<std::int64_t>&) override {}
  std::optional<std::vector<std::uint32_t>> LoadParameters(const std::string&,
                                                           const Room&) override {
    return {};
  }
  void RemoveAttribute(const std::string&) override {}
  void SetUsePbr(bool) override {}
  std::optional<bool> GetUsePbr() override { return {}; }
  std::optional<std::uint64_t> GetSuVersion() override { return {}; }
  void SuppressAutosyncOnce() override {}
};

}  // namespace quellix
