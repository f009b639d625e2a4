#include "app/Decoder.h"

#include <utility>

#include "app/DecodeContent.h"
#include "app/MessageReader.h"

namespace kvapp {

namespace wire = quellix::wire;

namespace {

template <class Result>
Command DecodeBare(MessageReader& reader) {
  wire::CommandOnly record;
  if (!reader.ReadRecord(record)) return {};
  return Result{};
}

Command DecodePrepare(MessageReader& reader) {
  wire::PrepareRendering record;
  if (!reader.ReadRecord(record)) return {};
  return command::PrepareRendering{reader.Flag("reload", record.reload)};
}

Vector3 ReadVector(MessageReader& reader, const char* field, const float (&values)[3]) {
  reader.Finite(field, values);
  return {values[0], values[1], values[2]};
}

CameraView ReadCamera(MessageReader& reader, const wire::SetCamera& record) {
  CameraView view;
  view.eye = ReadVector(reader, "vector1", record.vector1);
  view.target = ReadVector(reader, "vector2", record.vector2);
  view.up = ReadVector(reader, "vector3", record.vector3);
  view.towardsSun = ReadVector(reader, "vector4", record.vector4);
  reader.Finite("cameraScalar", std::span(&record.cameraScalar, 1));
  view.fieldOfView = record.cameraScalar;
  view.withProgress = reader.Flag("withProgress", record.withProgress);
  return view;
}

Background ReadBackground(MessageReader& reader, const wire::SetBackgroundSettings& record) {
  Background background;
  background.color = ReadVector(reader, "bgFloat", record.bgFloat);
  std::copy(std::begin(record.bgInt), std::end(record.bgInt), background.integers.begin());
  return background;
}

Command DecodeCamera(MessageReader& reader) {
  wire::SetCamera record;
  if (!reader.ReadRecord(record)) return {};
  return command::SetCamera{ReadCamera(reader, record)};
}

Command DecodeBackground(MessageReader& reader) {
  wire::SetBackgroundSettings record;
  if (!reader.ReadRecord(record)) return {};
  return command::SetBackgroundSettings{ReadBackground(reader, record)};
}

Command DecodeCameraAndBackground(MessageReader& reader) {
  wire::SetCameraAndBackgroundSettings record;
  if (!reader.ReadRecord(record)) return {};
  if (record.camera.withProgress != 0) {
    reader.Wrong("withProgress", record.camera.withProgress, 0);
  }
  const auto wantedId = static_cast<std::uint32_t>(wire::CommandId::SetBackgroundSettings);
  if (record.background.id != wantedId) {
    reader.Wrong("id of the background record", record.background.id, wantedId);
  }
  return command::SetCameraAndBackgroundSettings{ReadCamera(reader, record.camera),
                                                 ReadBackground(reader, record.background)};
}

template <class Result>
Command DecodeText(MessageReader& reader, const char* field) {
  wire::TextCommand record;
  if (!reader.ReadRecord(record)) return {};
  return Result{reader.Text(field, record.textOffset)};
}

Command DecodeModelName(MessageReader& reader) {
  Command command = DecodeText<command::SetModelName>(reader, "model name");
  const auto* name = std::get_if<command::SetModelName>(&command);
  if (name != nullptr && name->name.empty() && reader.InOrder()) {
    reader.Problem("the model name is empty, wanted a name");
  }
  return command;
}

Command DecodeProgress(MessageReader& reader) {
  wire::SetProgress record;
  if (!reader.ReadRecord(record)) return {};
  if (!(record.progress >= 0 && record.progress <= 1)) {
    reader.Problem("progress is " + std::to_string(record.progress) + ", wanted 0 to 1");
  }
  return command::SetProgress{record.progress};
}

Command DecodeLinkCamera(MessageReader& reader) {
  wire::SetLinkCamera record;
  if (!reader.ReadRecord(record)) return {};
  return command::SetLinkCamera{reader.Flag("linked", record.linked)};
}

Command DecodeById(MessageReader& reader, std::uint32_t id, const DecodeOptions& options) {
  using Id = wire::CommandId;
  switch (static_cast<Id>(id)) {
    case Id::PrepareRendering:
      return DecodePrepare(reader);
    case Id::CloseApp:
      return DecodeBare<command::CloseApp>(reader);
    case Id::SetCamera:
      return DecodeCamera(reader);
    case Id::AppendMaterial:
      return DecodeClassicMaterial(reader, options);
    case Id::AppendPBRMaterial:
      return DecodePbrMaterial(reader, options);
    case Id::AppendOmniLight:
      return DecodeOmniLight(reader);
    case Id::AppendSpotLight:
      return DecodeSpotLight(reader);
    case Id::AppendMesh:
      return DecodeMesh(reader, options);
    case Id::InstanciateMesh:
      return DecodeInstance(reader);
    case Id::SetModelName:
      return DecodeModelName(reader);
    case Id::SetBackgroundSettings:
      return DecodeBackground(reader);
    case Id::SetMessage:
      return DecodeText<command::SetMessage>(reader, "message");
    case Id::SetProgress:
      return DecodeProgress(reader);
    case Id::GetLinkCamera:
      return DecodeBare<command::GetLinkCamera>(reader);
    case Id::ReloadFromPlugin:
      return DecodeBare<command::ReloadFromPlugin>(reader);
    case Id::ClearModelDataForReload:
      return DecodeBare<command::ClearModelDataForReload>(reader);
    case Id::MemoryDestroyed:
      return DecodeBare<command::MemoryDestroyed>(reader);
    case Id::InstanciateMeshBatch:
      return DecodeOwnerList(reader);
    case Id::AppendCachedMaterials:
      return DecodeMaterialReferences(reader);
    case Id::UpdateInstanceTransform:
      return DecodeTransformUpdate(reader);
    case Id::SetCameraAndBackgroundSettings:
      return DecodeCameraAndBackground(reader);
    case Id::SetLinkCamera:
      return DecodeLinkCamera(reader);
    case Id::None:
    case Id::AppendDirectionalLight:
    case Id::AppendLEMLight:
    case Id::IsCached:
    case Id::InstanciateMesh2:
      break;
  }
  reader.Problem(id <= wire::kLastCommandId ? "command id " + std::to_string(id) + " is never sent"
                                            : "command id " + std::to_string(id) +
                                                  " is not in the catalogue, wanted 1 to " +
                                                  std::to_string(wire::kLastCommandId));
  return {};
}

}  // namespace

Decoded Decode(std::span<const std::byte> segment, const DecodeOptions& options) {
  Decoded decoded;
  MessageReader reader(segment, decoded.problems);
  wire::CommandOnly first;
  if (!reader.ReadRecord(first)) return decoded;
  decoded.id = first.id;
  MessageReader message(segment, decoded.problems);
  decoded.command = DecodeById(message, first.id, options);
  decoded.messageBytes = message.MessageBytes();
  decoded.recordBytes = message.RecordBytes();
  return decoded;
}

const char* ShortCommandName(std::uint32_t id) {
  switch (static_cast<wire::CommandId>(id)) {
    case wire::CommandId::SetCamera:
      return "SetCamera";
    case wire::CommandId::InstanciateMesh2:
      return "InstanciateMesh2";
    default:
      return wire::CommandName(id);
  }
}

}  // namespace kvapp
