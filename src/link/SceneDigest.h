#pragma once

#include <cstdint>
#include <vector>

#include "link/SceneRecords.h"
#include "link/WireRecords.h"

namespace quellix {

// What of each scene command goes into the digest: its content, and nothing that differs between
// two sends of the same scene (offsets, texture names, mesh ids). Each function takes a pointer to
// the type named beside it and does nothing while the digest is off. Under the send lock.
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

  static void OfMaterial(const void* material);           // Material
  static void OfPbrMaterial(const void* material);        // PbrMaterial
  static void OfOmniLight(const void* record);            // wire::AppendOmniLight
  static void OfSpotLight(const void* record);            // wire::AppendSpotLight
  static void OfMesh(const void* mesh);                   // Mesh
  static void OfInstance(const void* record);             // wire::InstanciateMesh
  static void OfOwners(const void* ownerIds);             // std::vector<std::uint64_t>
  static void OfCachedMaterials(const void* references);  // std::vector<CachedMaterialReference>
};

}  // namespace quellix
