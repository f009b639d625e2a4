#include "geometry/GeometryTimings.h"

namespace quellix {

GeometryTimings& Timings() {
  static GeometryTimings timings;
  return timings;
}

GeometryWaits& Waits() {
  static GeometryWaits waits;
  return waits;
}

void ResetGeometryTimings() {
  GeometryTimings& t = Timings();
  GeometryWaits& w = Waits();
  for (TimingCounter* counter : {&t.collectFace, &t.meshHelperCreate, &t.uvHelper, &w.collectorLock,
                                 &w.chunkBound, &w.queueBound, &w.senderIdle, &w.senderForMesh}) {
    counter->microseconds = 0;
    counter->count = 0;
  }
}

void DumpGeometryTimings() {
  const auto milliseconds = [](const TimingCounter& counter) {
    return static_cast<double>(counter.microseconds.load()) / 1000.0;
  };
  const GeometryTimings& t = Timings();
  LogLine("CollectFace: n=%lld total=%.1fms (SUMeshHelperCreate=%.1fms, UVHelper=%.1fms)",
          static_cast<long long>(t.collectFace.count.load()), milliseconds(t.collectFace),
          milliseconds(t.meshHelperCreate), milliseconds(t.uvHelper));
}

}  // namespace quellix
