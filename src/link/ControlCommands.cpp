// The commands that steer the renderer.

#include "link/IpcInterface.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "link/Sending.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr float kSmallestProgressStep = 0.01f;

wire::SetCamera CameraRecord(wire::CommandId id, const CameraValues& camera, bool withProgress) {
  wire::SetCamera record{};
  record.id = static_cast<std::uint32_t>(id);
  std::copy_n(camera.vector1, 3, record.vector1);
  std::copy_n(camera.vector2, 3, record.vector2);
  std::copy_n(camera.vector3, 3, record.vector3);
  record.cameraScalar = camera.cameraScalar;
  std::copy_n(camera.vector4, 3, record.vector4);
  record.withProgress = withProgress ? 1 : 0;
  return record;
}

// Truncates toward zero; what no integer can hold becomes the nearest one, not a number 0.
std::int32_t Truncated(float value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483648.0f) return std::numeric_limits<std::int32_t>::max();
  if (value < -2147483648.0f) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(value);
}

wire::SetBackgroundSettings BackgroundRecord(const BackgroundValues& background) {
  wire::SetBackgroundSettings record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::SetBackgroundSettings);
  std::copy_n(background.floats, 3, record.bgFloat);
  std::copy_n(background.integers, 6, record.bgInt);
  record.bgInt[6] = Truncated(background.last);
  return record;
}

}  // namespace

void IpcInterface::SendPlain(wire::CommandId id, bool wait) {
  wire::CommandOnly record{static_cast<std::uint32_t>(id)};
  SendTraits traits;
  traits.wait = wait;
  Send(CommandMessage(record), traits);
}

void IpcInterface::SendText(wire::CommandId id, const std::string& text) {
  wire::TextCommand record{static_cast<std::uint32_t>(id), 0};
  Send(CommandMessage(record).Text(record.textOffset, text.c_str()), {});
}

void IpcInterface::PrepareRendering(bool reload) {
  wire::PrepareRendering record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::PrepareRendering);
  record.reload = reload ? 1 : 0;
  SendTraits traits;
  traits.sent = [](const std::byte* sent, double elapsedMs) {
    LogLine("ipc PrepareRendering(reload=%d): %.1f ms",
            std::to_integer<int>(sent[offsetof(wire::PrepareRendering, reload)]), elapsedMs);
  };
  Send(CommandMessage(record), traits);
}

// The renderer that reported a change of its own camera is not sent the reaction to it, once.
void IpcInterface::SetCamera(const CameraValues& camera, bool withProgress) {
  if (!IsAlive() || suppressCamera) {
    suppressCamera = false;
    return;
  }
  wire::SetCamera record = CameraRecord(wire::CommandId::SetCamera, camera, withProgress);
  Send(CommandMessage(record), {});
}

void IpcInterface::SetBackgroundSettings(const BackgroundValues& background) {
  wire::SetBackgroundSettings record = BackgroundRecord(background);
  Send(CommandMessage(record), {});
}

void IpcInterface::SetCameraAndBackgroundSettings(const CameraValues& camera,
                                                  const BackgroundValues& background) {
  if (!IsAlive() || suppressCamera) {
    suppressCamera = false;
    return;
  }
  wire::SetCameraAndBackgroundSettings record{};
  record.camera = CameraRecord(wire::CommandId::SetCameraAndBackgroundSettings, camera, false);
  record.background = BackgroundRecord(background);
  Send(CommandMessage(record), {});
}

void IpcInterface::SetModelName(const std::string& name) {
  SendText(wire::CommandId::SetModelName, name);
}

void IpcInterface::SetMessage(const std::string& text) {
  SendText(wire::CommandId::SetMessage, text);
}

void IpcInterface::SetProgress(float fraction) {
  wire::SetProgress record{static_cast<std::uint32_t>(wire::CommandId::SetProgress), fraction};
  SendTraits traits;
  traits.isProgress = true;
  Send(CommandMessage(record), traits);
}

bool IpcInterface::AdmitProgress(const std::byte* record) {
  wire::SetProgress progress{};
  std::memcpy(&progress, record, sizeof progress);
  const float fraction = progress.progress;
  if (fraction > 0.0f && fraction < 1.0f &&
      std::fabs(fraction - lastProgress) < kSmallestProgressStep) {
    return false;
  }
  lastProgress = fraction;
  return true;
}

bool IpcInterface::GetLinkCamera() {
  if (!SeenAlive()) return false;
  const SendScope scope(*this);
  if (!scope.Owns()) return false;
  const bool flushed = FlushPending();
  if (ended || (!flushed && !IsAlive())) return false;
  if (!EnsureSegment(sizeof(wire::CommandOnly))) return false;
  const auto id = static_cast<std::uint32_t>(wire::CommandId::GetLinkCamera);
  std::memcpy(toAppBase, &id, sizeof id);
  const bool completed = Commit(true);
  // The answer takes the place of the record's first byte; where that still stands, none was given.
  const auto answer = std::to_integer<std::uint32_t>(toAppBase[0]);
  const bool linked = completed && answer != id && answer != 0;
  SendHeld();
  return linked;
}

void IpcInterface::SetLinkCamera(bool linked) {
  wire::SetLinkCamera record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::SetLinkCamera);
  record.linked = linked ? 1 : 0;
  Send(CommandMessage(record), {});
}

void IpcInterface::ReloadFromPlugin() {
  SendPlain(wire::CommandId::ReloadFromPlugin, false);
}

void IpcInterface::ClearModelDataForReload() {
  SendPlain(wire::CommandId::ClearModelDataForReload, true);
}

}  // namespace quellix
