#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "geometry/FaceCollector.h"

namespace quellix {

// A face as triangles, in the face's own coordinates. Vertices are the points of the face's rings
// in the order of FaceCollector::GatherFacePoints; a point of two rings occurs twice.
struct TessMesh {
  std::vector<Point> positions;
  std::vector<Point> normals;          // unit length, one per position
  std::vector<std::uint32_t> indexes;  // three per triangle

  void Clear();
};

// Triangulates a face that the collector has collected: a convex face without
// holes as a fan, any other with an ear-clipping triangulator in the plane. Triangles turn around
// the face's normal. False, with no indexes, for a face that is not valid or gave no triangle. No
// host calls; any number of threads at a time, each with a mesh of its own. `face` is the index
// that CollectSmoothingGroup gave.
bool TessellateFace(FaceCollector& collector, std::uint32_t face, TessMesh& mesh);

// The angle-weighted mean of the normals of the faces that smooth edges at the corner's vertex
// chain to `face`, those that look the other way turned around. Hard edges keep the faces beyond
// them out.
Point SmoothVertexNormal(FaceCollector& collector, std::uint32_t face, std::size_t corner);

// Whether the ring turns left everywhere, seen with `normal` pointing at the viewer; straight
// corners do not matter.
bool IsConvexRing(std::span<const Point> ring, const Point& normal);

}  // namespace quellix
