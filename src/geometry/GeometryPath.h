#pragma once

#include <functional>

namespace quellix {

// The ways in which the faces of an export become meshes. All give the same meshes in the same
// order.
enum class GeometryPath {
  Serial,    // face by face, all on the walk's thread
  Parallel,  // the host is asked on the walk's thread, triangles are made in a pool
  Pipeline,  // everything but the walk in a pool, a thread of its own sends
};

// What the switches ask for. A dump that must see every face one after the other keeps the export
// serial. The pipeline, where nothing but faces can go into a mesh, is not for models with image
// entities; `containsImages` is asked only when that decides.
GeometryPath ChooseGeometryPath(const std::function<bool()>& containsImages);

}  // namespace quellix
