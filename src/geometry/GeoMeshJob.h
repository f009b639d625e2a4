#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "geometry/FaceWork.h"
#include "geometry/MeshPlacement.h"

namespace quellix {

// One mesh on its way through the pipeline, shared by the walk, the pool's tasks and the sender.
struct GeoMeshJob {
  MeshPlacement placement;
  std::uint8_t pass = 0;

  // The walk's until the job is closed; then the sender's, once nothing is pending. Each chunk is
  // its task's in between.
  std::vector<std::unique_ptr<FaceChunk>> chunks;

  std::mutex mutex;  // guards what follows
  std::condition_variable changed;
  std::uint32_t pendingChunks = 0;  // handed to the pool and not finished
  bool closed = false;              // no chunk is added any more
};

// What is to be sent next: a mesh, or without a job one more placement of a mesh that went before.
struct SendQueueEntry {
  std::shared_ptr<GeoMeshJob> job;
  MeshPlacement placement;
};

}  // namespace quellix
