#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quellix {

// One scene (saved view) of the host, as the renderer lists it.
struct SceneInfo {
  std::string name;
  std::array<float, 10> values{};
  bool flag = false;
  std::array<std::int32_t, 6> integers{};
  std::array<float, 3> lastValues{};
};

// The host's shadow settings.
struct ShadowInfo {
  std::array<float, 3> values{};
  std::array<std::int32_t, 7> integers{};
};

// Who answers the renderer's requests. Every operation is called on the host thread only and must
// not throw; an answer of nothing means that there is none, because the receiver has none or could
// not tell, and the request is then acknowledged without one.
class RequestReceiver {
 public:
  // Asked once the size of an answer is known, before it is converted: false when there is no room
  // for so many scenes, or bytes, and no answer is wanted.
  using Room = std::function<bool(std::uint64_t)>;

  virtual ~RequestReceiver() = default;

  virtual void OnReload() = 0;
  virtual void OnCameraChangedByGui(const std::array<float, 10>& camera) = 0;
  virtual void OnRendererQuit() = 0;
  virtual void OnDatetimeUpdated(const std::array<std::int32_t, 6>& dateTime) = 0;
  virtual std::vector<SceneInfo> OnGetScenes(const Room& forScenes) = 0;
  virtual std::optional<std::array<float, 13>> OnRequestCameraInfo() = 0;
  virtual std::optional<ShadowInfo> OnRequestShadowInfo() = 0;
  virtual std::optional<bool> ModelOutOfSync() = 0;

  // Parameters travel as integers: the byte count, then the bytes as little-endian 32-bit words,
  // the last one filled with zeros. What is loaded has as many words as its byte count says.
  virtual void SaveParameters(const std::string& name, const std::vector<std::int64_t>& words) = 0;
  virtual std::optional<std::vector<std::uint32_t>> LoadParameters(const std::string& name,
                                                                   const Room& forBytes) = 0;

  virtual void RemoveAttribute(const std::string& name) = 0;
  virtual void SetUsePbr(bool usePbr) = 0;
  virtual std::optional<bool> GetUsePbr() = 0;
  virtual std::optional<std::uint64_t> GetSuVersion() = 0;
  virtual void SuppressAutosyncOnce() = 0;

  // Asked again and again during every wait: true when the wait, and the link with it, is to be
  // given up because something else must happen on the host thread. It stays true until the wait's
  // caller has returned.
  virtual bool Interrupted() { return false; }
};

}  // namespace quellix
