#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "link/IpcInterface.h"

namespace quellix {

// Answers nothing; what a test wants of it, it overrides.
class SilentReceiver : public RequestReceiver {
 public:
  void OnReload() override {}
  void OnCameraChangedByGui(const std::array<float, 10>&) override {}
  void OnRendererQuit() override {}
  void OnDatetimeUpdated(const std::array<std::int32_t, 6>&) override {}
  std::vector<SceneInfo> OnGetScenes() override { return {}; }
  std::optional<std::array<float, 13>> OnRequestCameraInfo() override { return {}; }
  std::optional<ShadowInfo> OnRequestShadowInfo() override { return {}; }
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

// A link to a stand-in renderer in a process of its own, which logs the bytes of every message.
class LinkTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Starts the renderer, following a script if one is given.
  void Start(const std::string& script = {}, RequestReceiver* requestReceiver = nullptr);

  // Closes the renderer and waits for its end. A receiver of a test's own must not end before.
  void Close();

  // Closes the renderer and returns the commands that it received, in order.
  std::vector<nlohmann::json> Received();
  nlohmann::json Report() const;

  std::filesystem::path folder;
  SilentReceiver receiver;
  IpcInterface link;
};

}  // namespace quellix
