#pragma once

#include <cstdint>
#include <vector>

#include "link/SceneRecords.h"
#include "link/WireRecords.h"

namespace quellix {

// What one command adds to the digest: hashes, and the id that they count under.
struct DigestEntries {
  wire::CommandId id{};
  std::vector<std::uint64_t> hashes;
};

// What of each scene command goes into the digest: its content, and nothing that differs between
// two sends of the same scene (offsets, texture names, mesh ids). Each function takes a pointer to
// the type named beside it. Any thread.
struct SceneDigest {
  struct Material {
    const wire::AppendMaterial& record;
    const ClassicMaterialRecord& values;
  };
  struct PbrMaterial {
    const wire::AppendPBRMaterial& record;
    const PbrMaterialRecord& values;
  };
  struct Block {
    const void* bytes;
    std::uint64_t size;
  };
  struct Mesh {
    const wire::AppendMesh& record;
    Block vertices;
    Block triangles;
  };

  static DigestEntries OfMaterial(const void* material);     // Material
  static DigestEntries OfPbrMaterial(const void* material);  // PbrMaterial
  static DigestEntries OfOmniLight(const void* record);      // wire::AppendOmniLight
  static DigestEntries OfSpotLight(const void* record);      // wire::AppendSpotLight
  static DigestEntries OfMesh(const void* mesh);             // Mesh
  static DigestEntries OfInstance(const void* record);       // wire::InstanciateMesh
  static DigestEntries OfOwners(const void* ownerIds);       // std::vector<std::uint64_t>
  static DigestEntries OfCachedMaterials(
      const void* references);  // std::vector<CachedMaterialReference>
};

}  // namespace quellix
