#pragma once

#include <span>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "geometry/FaceContext.h"
#include "geometry/FaceData.h"
#include "geometry/MeshBuilder.h"
#include "geometry/Tessellation.h"

// The host's own helpers for one face: its mesh helper, which triangulates the face, and its UV
// helpers, which give texture coordinates. Both belong to whoever made them and are released here
// on every way out. Calls take the gates named at each; a failing call leaves nothing.

namespace quellix {

// The host's triangulation of a face, in the form of the own one: positions, normals, indexes.
class MeshHelper {
 public:
  MeshHelper() = default;
  MeshHelper(const MeshHelper&) = delete;
  MeshHelper& operator=(const MeshHelper&) = delete;
  // Takes the mesh-helper gate if there is still something to release.
  ~MeshHelper();

  bool Empty() const { return SUIsInvalid(su_helper); }
  // Takes the mesh-helper gate. For an empty helper only.
  void Create(SUFaceRef su_face);
  // Fills `mesh`, with no vertices when the host gave none. Takes the mesh-helper gate.
  void Read(TessMesh& mesh) const;
  // The caller holds the mesh-helper gate.
  void Release();

 private:
  SUMeshHelperRef su_helper = SU_INVALID;
};

// Texture coordinates of the textured sides of a face.
class UvHelpers {
 public:
  UvHelpers() = default;
  // Takes the UV gate if a side is textured.
  UvHelpers(SUFaceRef su_face, const FaceContext& context);
  UvHelpers(UvHelpers&& other) noexcept;
  UvHelpers& operator=(UvHelpers&& other) noexcept;
  // Takes the UV gate if there is still something to release.
  ~UvHelpers();

  bool HasAny() const { return SUIsValid(su_front) || SUIsValid(su_back); }
  // The coordinates of each point, as the host gives them, without a division by q; no list for a
  // side without a helper. A point that the host refuses has (0, 0). Takes the UV gate.
  void Evaluate(std::span<const Point> points, UvList& front, UvList& back) const;
  // The caller holds the gate under which the helpers shall go.
  void Release();

 private:
  SUUVHelperRef su_front = SU_INVALID;
  SUUVHelperRef su_back = SU_INVALID;
};

}  // namespace quellix
