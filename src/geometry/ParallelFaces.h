#pragma once

#include "geometry/FaceCollector.h"
#include "geometry/FaceWork.h"
#include "geometry/MeshBuffer.h"
#include "support/WorkerPool.h"

namespace quellix {

// Makes the meshes of a collection's faces and appends them to `buffer` in order. Every host call
// is made on the calling thread, before the pool triangulates; a face whose triangulation failed
// gets the host's afterwards, also here. Throws what the source or a task threw, once no task runs.
void ExportFacesParallel(FaceCollector& collector, WorkerPool& pool, const FaceSource& source,
                         MeshBuffer& buffer);

}  // namespace quellix
