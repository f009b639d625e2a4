#include "Bytes.h"

namespace kvapp::test {

Bytes BareCommand(std::uint32_t id) {
  return Bytes(4).U32(0, id);
}

Bytes TextCommand(std::uint32_t id, const std::string& text) {
  return Bytes(8).U32(0, id).U32(4, 8).Text(8, text);
}

Bytes ProgressCommand(float progress) {
  return Bytes(8).U32(0, 17).F32(4, {progress});
}

Bytes ClassicMaterial(std::uint32_t index, std::uint64_t key) {
  Bytes bytes(144);
  bytes.U32(0, 4).U32(4, index);
  bytes.F32(8, {0.3f, 0.15f, 0.06f}).F32(20, {1, 0.5f, 0.2f}).F32(32, {0.5f, 0.5f, 0.5f});
  bytes.F32(44, {1, 0.25f, 0.25f}).U32(56, 1).F32(60, {1}).U32(64, 0).F32(68, {0.75f});
  bytes.U8(72, 1).U32(76, 144).U64(80, 2).U64(88, 1).U64(96, 8).U64(104, 160);
  bytes.F32(112, {0.5f, 2}).U8(120, 0).U32(124, 146).U32(128, 152).U64(136, key);
  bytes.Text(144, "t").Text(146, "Brick").Text(152, "Default");
  for (unsigned i = 0; i < 8; ++i) bytes.U8(160 + i, 10 * i + 5);
  return bytes;
}

Bytes PlainMaterial(std::uint32_t index, std::uint64_t key, const std::string& name,
                    std::initializer_list<float> color, float opacity) {
  Bytes bytes(144);
  bytes.U32(0, 4).U32(4, index).F32(20, color).F32(32, {0.5f, 0.5f, 0.5f, 1});
  bytes.F32(68, {opacity}).U32(76, 144).U32(124, 145).U64(136, key);
  bytes.Text(144, "").Text(145, name);
  const auto type = static_cast<std::uint32_t>(bytes.Size());
  bytes.U32(128, type).Text(type, "Default");
  return bytes.U64(104, bytes.Size());
}

Bytes PbrMaterial(std::uint32_t index, std::uint64_t key) {
  Bytes bytes(256);
  bytes.U32(0, 5).U32(4, index).F32(8, {0.8f, 0.8f, 0.9f});
  bytes.U8(20, 1).U64(24, 1).U64(32, 1).U64(40, 4).U64(48, 271);
  bytes.F32(56, {0.9f}).U8(60, 1);
  bytes.U64(64, 1).U64(72, 1).U64(80, 32).U64(88, 4).U64(96, 4).U64(104, 275);
  bytes.F32(112, {0.4f}).U8(116, 1);
  bytes.U64(120, 1).U64(128, 1).U64(136, 32).U64(144, 4).U64(152, 4).U64(160, 279);
  bytes.F32(168, {1.5f}).U8(172, 1);
  bytes.U64(176, 1).U64(184, 1).U64(192, 32).U64(200, 4).U64(208, 4).U64(216, 283);
  bytes.F32(224, {0.1f, 1, 0.5f}).U8(236, 0).U32(240, 256).U32(244, 262).U64(248, key);
  bytes.Text(256, "Steel").Text(262, "Metallic");
  return bytes.Fill(271, 4, 200).Fill(275, 4, 90).Fill(279, 4, 60).Fill(283, 4, 128);
}

Bytes TriangleMesh(std::uint64_t meshId, std::uint64_t cacheKey, std::uint32_t front,
                   std::uint32_t back, float size) {
  Bytes bytes(252);
  bytes.U32(0, 10).U64(8, meshId).Identity(16);
  bytes.U32(80, 3).U32(84, 112).U32(88, 1).U32(92, 232).U8(96, meshId >> 63 ? 1 : 0);
  bytes.U64(104, cacheKey);
  bytes.F32(112, {0, 0, 0, 0, 0, 1, 0, 0, 0, 0});
  bytes.F32(152, {size, 0, 0, 0, 0, 1, 1, 0, 1, 0});
  bytes.F32(192, {0, size, 0, 0, 0, 1, 0, 1, 0, 1});
  return bytes.U32(232, 0).U32(236, 1).U32(240, 2).U32(244, front).U32(248, back);
}

Bytes Instance(std::uint64_t meshId, std::uint64_t cacheKey, float x) {
  return Bytes(88).U32(0, 13).U64(8, meshId).Identity(16).F32(64, {x}).U64(80, cacheKey);
}

Bytes OwnerBatch(const std::vector<std::uint64_t>& owners) {
  Bytes bytes(12);
  bytes.U32(0, 22).U32(4, static_cast<std::uint32_t>(owners.size())).U32(8, 12);
  for (std::size_t i = 0; i < owners.size(); ++i) bytes.U64(12 + 8 * i, owners[i]);
  return bytes;
}

Bytes CachedMaterials(const std::vector<Reference>& references) {
  Bytes bytes(12);
  bytes.U32(0, 23).U32(4, static_cast<std::uint32_t>(references.size())).U32(8, 12);
  for (std::size_t i = 0; i < references.size(); ++i) {
    const std::size_t at = 12 + 16 * i;
    bytes.U32(at, references[i].index).F32(at + 4, {references[i].lightPower});
    bytes.U64(at + 8, references[i].key);
  }
  return bytes;
}

Bytes MoveOwner(std::uint64_t owner, float x) {
  return Bytes(80).U32(0, 24).U64(8, owner).Identity(16).F32(64, {x});
}

Bytes OmniLight(float red, float x) {
  return Bytes(28).U32(0, 6).F32(4, {red, 2, 3}).F32(16, {x, 20, 30});
}

Bytes SpotLight() {
  return Bytes(48).U32(0, 7).F32(4, {1, 2, 3, 4, 5, 6, 0, 0, -1, 0.25f, 0.75f});
}

Bytes Camera(float eyeX) {
  Bytes bytes(60);
  bytes.U32(0, 3).F32(4, {eyeX, -5, 3, 0, 0, 0, 0, 0, 1, 45, 0.3f, -0.4f, 0.8f});
  return bytes.U8(56, 1);
}

Bytes Background(float red) {
  Bytes bytes(44);
  bytes.U32(0, 15).F32(4, {red, 0.7f, 0.9f});
  for (std::uint32_t i = 0; i < 7; ++i) bytes.U32(16 + 4 * i, i == 6 ? 0xfffffffeu : i);
  return bytes;
}

}  // namespace kvapp::test
