#pragma once

#include "host/RubyHeaders.h"
#include "link/RequestReceiver.h"

namespace quellix {

// Hands the renderer's requests to methods of a Ruby object. A method that raises, or returns too
// little, counts as having no answer; the error is told once on standard error and in the timing
// log, and unwinds nothing. The object is kept from the garbage collector for as long as this
// lives. Host thread.
class RubyReceiver : public RequestReceiver {
 public:
  explicit RubyReceiver(VALUE rubyObject);
  ~RubyReceiver() override;
  RubyReceiver(const RubyReceiver&) = delete;
  RubyReceiver& operator=(const RubyReceiver&) = delete;

  void OnReload() override;
  void OnCameraChangedByGui(const std::array<float, 10>& camera) override;
  void OnRendererQuit() override;
  void OnDatetimeUpdated(const std::array<std::int32_t, 6>& dateTime) override;
  std::vector<SceneInfo> OnGetScenes(const Room& forScenes) override;
  std::optional<std::array<float, 13>> OnRequestCameraInfo() override;
  std::optional<ShadowInfo> OnRequestShadowInfo() override;
  std::optional<bool> ModelOutOfSync() override;
  void SaveParameters(const std::string& name, const std::vector<std::int64_t>& words) override;
  std::optional<std::vector<std::uint32_t>> LoadParameters(const std::string& name,
                                                           const Room& forBytes) override;
  void RemoveAttribute(const std::string& name) override;
  void SetUsePbr(bool usePbr) override;
  std::optional<bool> GetUsePbr() override;
  std::optional<std::uint64_t> GetSuVersion() override;
  void SuppressAutosyncOnce() override;
  bool Interrupted() override;

 private:
  VALUE object;
};

}  // namespace quellix
