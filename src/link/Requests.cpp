// The renderer's requests: taken one at a time from its segment, handed to the receiver, answered
// in place. Nothing that the renderer wrote is trusted: each value is read once, and every offset
// and size is held against the mapped size before it is used.

#include "link/IpcInterface.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <limits>

#include "link/Sending.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr std::uint64_t kBody = sizeof(wire::RequestHeader);

// How long a command that the next request finds unfinished is given before it counts as waiting
// for the answer.
constexpr std::uint32_t kFinishMs = 20;
// How long a command in flight is given to finish after a callback that was interrupted.
constexpr double kPatienceMs = 500.0;

// The bytes of a scene's name that its record has room for, cut at a whole UTF-8 character.
std::size_t FittingNameBytes(const std::string& name, std::size_t room) {
  if (name.size() <= room) return name.size();
  std::size_t length = room;
  while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) --length;
  return length;
}

wire::SceneRecord PackScene(const SceneInfo& scene) {
  wire::SceneRecord record{};
  constexpr std::size_t kRoom = sizeof record.name - 1;
  const std::size_t length = FittingNameBytes(scene.name, kRoom);
  std::memcpy(record.name, scene.name.data(), length);
  record.nameLength = length;
  record.nameCapacity = kRoom;
  std::copy(scene.values.begin(), scene.values.end(), record.values);
  record.flag = scene.flag ? 1 : 0;
  std::copy(scene.integers.begin(), scene.integers.end(), record.integers);
  std::copy(scene.lastValues.begin(), scene.lastValues.end(), record.lastValues);
  return record;
}

}  // namespace

void IpcInterface::ServeRequest() {
  // Nothing of Ruby's may run between an interrupt and the end of the method that it ends.
  if (serving || !SeenAlive() || AskInterrupted()) return;
  if (receiver == nullptr || !OpenToPluginSide() || !requestReady->Wait(0)) return;
  if (!StillOurs()) {
    LogLine("a request is left alone: the channel belongs to another host now");
    ended = true;
    return;
  }
  if (!MapRequestSegment()) return;

  const NestedRuby nested(*this, RequestInterrupts() ? Sends::Held : Sends::Normally);
  serving = true;
  struct Done {
    bool& flag;
    ~Done() { flag = false; }
  } done{serving};
  requestReady->Reset();
  std::uint32_t code = 0;
  std::memcpy(&code, toPluginBase, sizeof code);
  // Whatever happens, the renderer gets its acknowledgement, or it would wait for ever.
  try {
    HandleRequest(code);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "[Quellix] request %u is not answered: %s\n", code, error.what());
    std::fflush(stderr);
    LogLine("request %u is not answered: %s", code, error.what());
    SetRequired(0);
  }
  requestDone->Set();
  // The link ends here; who owns it releases it once nobody is inside.
  if (code == static_cast<std::uint32_t>(wire::RequestCode::RendererQuit)) ended = true;
  if (receiver->Interrupted()) patienceEnds = NowMs() + kPatienceMs;
}

// Whether the renderer may be waiting for the answer before it finishes a command. One that is
// merely not finished yet is given a moment.
bool IpcInterface::RequestInterrupts() {
  const SendScope scope(*this, /*mayWait=*/false);
  if (!scope.Owns()) return true;
  if (!pendingWait) return false;
  if (!commandDone->Wait(kFinishMs)) return true;
  AwaitPending();
  return false;
}

void IpcInterface::HandleRequest(std::uint32_t code) {
  switch (static_cast<wire::RequestCode>(code)) {
    case wire::RequestCode::Reload:
      return receiver->OnReload();
    case wire::RequestCode::RendererQuit:
      return receiver->OnRendererQuit();
    case wire::RequestCode::CameraChanged:
      return HandleCameraChanged();
    case wire::RequestCode::DateTimeUpdated:
      return HandleDatetimeUpdated();
    case wire::RequestCode::GetScenes:
      return HandleGetScenes();
    case wire::RequestCode::CameraInfo:
      return HandleCameraInfo();
    case wire::RequestCode::ShadowInfo:
      return HandleShadowInfo();
    case wire::RequestCode::ModelOutOfSync:
      return HandleBool(&RequestReceiver::ModelOutOfSync);
    case wire::RequestCode::SaveParameters:
      return HandleSaveParameters();
    case wire::RequestCode::LoadParameters:
      return HandleLoadParameters();
    case wire::RequestCode::RemoveAttribute:
      return HandleRemoveAttribute();
    case wire::RequestCode::SetUsePbr:
      return HandleSetUsePbr();
    case wire::RequestCode::GetUsePbr:
      return HandleBool(&RequestReceiver::GetUsePbr);
    case wire::RequestCode::GetSuVersion:
      return HandleSuVersion();
    case wire::RequestCode::SuppressAutosyncOnce:
      return receiver->SuppressAutosyncOnce();
    default:
      return;
  }
}

std::uint64_t IpcInterface::Capacity() const {
  std::uint64_t capacity = 0;
  std::memcpy(&capacity, toPluginBase + offsetof(wire::RequestHeader, capacity), sizeof capacity);
  return std::min<std::uint64_t>(capacity, toPluginRegion->get_size());
}

void IpcInterface::SetRequired(std::uint64_t required) {
  std::memcpy(toPluginBase + offsetof(wire::RequestHeader, required), &required, sizeof required);
}

// Announces the answer's end. False, with the renderer told so, when there is no room up to there.
bool IpcInterface::AnswerFits(std::uint64_t required) {
  const std::uint64_t capacity = Capacity();
  SetRequired(required);
  if (capacity >= required) return true;
  const auto code = static_cast<std::uint32_t>(wire::RequestCode::ReplyTooLarge);
  std::memcpy(toPluginBase, &code, sizeof code);
  return false;
}

bool IpcInterface::ReadRequest(std::uint64_t offset, void* target, std::uint64_t bytes) const {
  const std::uint64_t size = toPluginRegion->get_size();
  if (offset > size || bytes > size - offset) return false;
  std::memcpy(target, toPluginBase + offset, bytes);
  return true;
}

void IpcInterface::WriteAnswer(std::uint64_t offset, const void* source, std::uint64_t bytes) {
  std::memcpy(toPluginBase + offset, source, bytes);
}

// A NUL-terminated text whose offset stands at `offsetField`; false when it does not end inside the
// segment.
bool IpcInterface::ReadName(std::uint64_t offsetField, std::string& name) const {
  std::uint64_t offset = 0;
  if (!ReadRequest(offsetField, &offset, sizeof offset)) return false;
  const std::uint64_t size = toPluginRegion->get_size();
  if (offset >= size) return false;
  const char* text = reinterpret_cast<const char*>(toPluginBase + offset);
  const auto* end = static_cast<const char*>(std::memchr(text, 0, size - offset));
  if (end == nullptr) return false;
  name.assign(text, end);
  // The renderer may still be writing; the copy counts, up to its own first NUL.
  name.resize(std::strlen(name.c_str()));
  return true;
}

void IpcInterface::HandleCameraChanged() {
  std::array<float, 10> camera{};
  if (!ReadRequest(kBody, camera.data(), sizeof camera)) return;
  suppressCamera = true;
  receiver->OnCameraChangedByGui(camera);
}

void IpcInterface::HandleDatetimeUpdated() {
  std::array<std::int32_t, 6> dateTime{};
  if (!ReadRequest(kBody, dateTime.data(), sizeof dateTime)) return;
  suppressCamera = true;
  receiver->OnDatetimeUpdated(dateTime);
}

void IpcInterface::HandleGetScenes() {
  constexpr std::uint64_t kTable = kBody + sizeof(wire::ScenesAnswer);
  bool fits = false;
  const std::vector<SceneInfo> scenes = receiver->OnGetScenes([&](std::uint64_t count) {
    return fits = AnswerFits(kTable + sizeof(wire::SceneRecord) * count);
  });
  if (scenes.empty() || !fits) {
    if (fits) SetRequired(0);
    return;
  }
  wire::ScenesAnswer answer{};
  answer.tableOffset = kTable;
  answer.count = static_cast<std::uint32_t>(scenes.size());
  WriteAnswer(kBody, &answer, offsetof(wire::ScenesAnswer, pad));
  std::uint64_t offset = kTable;
  for (const SceneInfo& scene : scenes) {
    const wire::SceneRecord record = PackScene(scene);
    WriteAnswer(offset, &record, sizeof record);
    offset += sizeof record;
  }
}

void IpcInterface::HandleCameraInfo() {
  // The answer's last float ends at 76; the renderer reserves up to 80.
  if (!AnswerFits(80)) return;
  const auto camera = receiver->OnRequestCameraInfo();
  if (!camera) return SetRequired(0);
  WriteAnswer(kBody, camera->data(), sizeof *camera);
}

void IpcInterface::HandleShadowInfo() {
  if (!AnswerFits(kBody + sizeof(wire::ShadowInfoAnswer))) return;
  const auto shadow = receiver->OnRequestShadowInfo();
  if (!shadow) return SetRequired(0);
  wire::ShadowInfoAnswer answer{};
  std::copy(shadow->values.begin(), shadow->values.end(), answer.values);
  std::copy(shadow->integers.begin(), shadow->integers.end(), answer.integers);
  WriteAnswer(kBody, &answer, sizeof answer);
}

void IpcInterface::HandleBool(std::optional<bool> (RequestReceiver::*question)()) {
  if (!AnswerFits(32)) return;
  const std::optional<bool> answer = (receiver->*question)();
  if (!answer) return SetRequired(0);
  const std::uint8_t byte = *answer ? 1 : 0;
  WriteAnswer(kBody, &byte, sizeof byte);
}

void IpcInterface::HandleSuVersion() {
  if (!AnswerFits(32)) return;
  const std::optional<std::uint64_t> version = receiver->GetSuVersion();
  if (!version) return SetRequired(0);
  WriteAnswer(kBody, &*version, sizeof *version);
}

void IpcInterface::HandleSaveParameters() {
  wire::SaveParametersRequest request{};
  std::string name;
  if (!ReadRequest(kBody, &request, offsetof(wire::SaveParametersRequest, pad)) ||
      !ReadName(kBody, name)) {
    return;
  }
  const std::uint64_t count = request.byteCount;
  const std::uint64_t size = toPluginRegion->get_size();
  if (request.dataOffset > size || count > size - request.dataOffset) return;

  std::vector<std::int64_t> words;
  words.reserve(2 + count / 4);
  words.push_back(static_cast<std::int64_t>(count));
  for (std::uint64_t done = 0; done < count; done += 4) {
    std::int32_t word = 0;
    ReadRequest(request.dataOffset + done, &word, std::min<std::uint64_t>(4, count - done));
    words.push_back(word);
  }
  receiver->SaveParameters(name, words);
}

void IpcInterface::HandleLoadParameters() {
  std::string name;
  if (!ReadName(kBody, name)) return;
  constexpr std::uint64_t kData = kBody + sizeof(wire::LoadParametersAnswer);
  bool fits = false;
  const auto words = receiver->LoadParameters(
      name, [&](std::uint64_t bytes) { return fits = AnswerFits(kData + bytes); });
  if (!words || words->empty() || !fits) {
    if (fits) SetRequired(0);
    return;
  }
  const std::uint64_t count = words->front();
  const wire::LoadParametersAnswer answer{kData, count};
  WriteAnswer(kBody, &answer, sizeof answer);
  const std::uint64_t whole = count / 4 * 4;
  WriteAnswer(kData, words->data() + 1, whole);
  if (count > whole) WriteAnswer(kData + whole, &words->back(), count - whole);
}

void IpcInterface::HandleRemoveAttribute() {
  std::string name;
  if (ReadName(kBody, name)) receiver->RemoveAttribute(name);
}

void IpcInterface::HandleSetUsePbr() {
  std::uint8_t flag = 0;
  if (ReadRequest(kBody, &flag, sizeof flag)) receiver->SetUsePbr(flag != 0);
}

}  // namespace quellix
