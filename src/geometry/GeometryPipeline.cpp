#include "geometry/GeometryPipeline.h"

#include <algorithm>
#include <utility>

#include "geometry/GeometryTimings.h"
#include "support/ThreadName.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

// A walk that found as many chunks as may be goes on when so many are left, instead of being woken
// for each.
constexpr std::size_t kResumeChunks = 96;
// So many chunks at most wait for the walk; more the pool does itself.
constexpr std::size_t kMaxCollected = 16;

}  // namespace

GeometryPipeline::GeometryPipeline(FaceCollector& faceCollector, MeshSink& meshSink,
                                   unsigned poolThreads)
    : collector(faceCollector), sink(meshSink), pool(poolThreads) {
  senderThread = std::thread([this] { RunSender(); });
}

// Tasks still in the pool see `failed` and end at once; the pool's destructor waits for them.
GeometryPipeline::~GeometryPipeline() {
  failed = true;
  EndSender();
}

void GeometryPipeline::OpenMesh(const MeshPlacement& placement, std::uint8_t pass) {
  ThrowIfFailed();
  currentJob = std::make_shared<GeoMeshJob>();
  currentJob->placement = placement;
  currentJob->pass = pass;
}

// A chunk goes as soon as it is full, so that the pool works while a large collection is walked.
void GeometryPipeline::ProduceFaceWork(const FaceSource& source) {
  if (!currentJob) return;
  std::unique_ptr<FaceChunk> chunk;
  source([&](SUFaceRef su_face, const FaceContext& context) {
    if (!chunk) chunk = std::make_unique<FaceChunk>();
    FaceWork& work = chunk->Add(su_face, context);
    if (context.front.textured || context.back.textured) {
      const ScopedTiming timing(Timings().uvHelper);
      work.uvHelpers = UvHelpers(su_face, context);
    }
    if (chunk->faces.size() == FaceChunk::kFaces) Submit(std::move(chunk));
  });
  if (chunk) Submit(std::move(chunk));
}

void GeometryPipeline::Submit(std::unique_ptr<FaceChunk> chunk) {
  bool full = false;
  {
    const std::lock_guard lock(throttleMutex);
    full = chunksInFlight >= kMaxChunks;
  }
  if (full) Help(kResumeChunks);
  {
    const std::lock_guard lock(throttleMutex);
    ++chunksInFlight;
    peakChunks = std::max(peakChunks, chunksInFlight);
  }
  const std::shared_ptr<GeoMeshJob> job = currentJob;
  {
    const std::lock_guard lock(job->mutex);
    ++job->pendingChunks;
  }
  FaceChunk& content = *chunk;
  try {
    ThrowIfFailed();
    job->chunks.push_back(std::move(chunk));
    pool.Enqueue([this, job, &content] { ProcessFaceWork(job, content); });
  } catch (...) {
    EndChunk(*job);
    throw;
  }
}

// Makes meshes, and waits where there is nothing to make them of, until so few chunks are left.
void GeometryPipeline::Help(std::size_t untilChunks) {
  std::unique_lock lock(throttleMutex);
  walkHelps = true;
  for (;;) {
    {
      const ScopedTiming timing(Waits().chunkBound, collected.empty());
      chunkChanged.wait(
          lock, [&] { return !collected.empty() || chunksInFlight <= untilChunks || failed; });
    }
    if (collected.empty()) break;
    const Collected next = std::move(collected.front());
    collected.pop_front();
    lock.unlock();
    BuildMeshes(*next.job, *next.chunk);
    lock.lock();
  }
  walkHelps = false;
}

void GeometryPipeline::ProcessFaceWork(const std::shared_ptr<GeoMeshJob>& job, FaceChunk& chunk) {
  NameThreadOnce("geo pool");
  try {
    if (!failed) {
      CollectFaces(chunk);
      EvaluateTextures(chunk);
      if (HandOver(job, chunk)) return;
    }
  } catch (...) {
    Fail(std::current_exception());
  }
  BuildMeshes(*job, chunk);
}

// To the walk, if that waits. Faces that only the host can triangulate stay here.
bool GeometryPipeline::HandOver(const std::shared_ptr<GeoMeshJob>& job, FaceChunk& chunk) {
  for (const FaceWork& work : chunk.faces) {
    if (work.face == FaceCollector::kNone) return false;
  }
  const std::lock_guard lock(throttleMutex);
  if (!walkHelps || collected.size() >= kMaxCollected) return false;
  collected.push_back({job, &chunk});
  chunkChanged.notify_one();
  return true;
}

// What is left of a chunk's way once the host has told all: no more host calls, except for faces
// without an own triangulation.
void GeometryPipeline::BuildMeshes(GeoMeshJob& job, FaceChunk& chunk) {
  try {
    for (FaceWork& work : chunk.faces) {
      if (failed) break;
      BuildOwnMesh(collector, work, chunk);
      if (!work.done) BuildHelperMesh(work, chunk);
    }
  } catch (...) {
    Fail(std::current_exception());
  }
  chunk.DropFaces();
  EndChunk(job);
}

void GeometryPipeline::EndChunk(GeoMeshJob& job) {
  {
    const std::lock_guard lock(job.mutex);
    if (--job.pendingChunks == 0 && job.closed) job.changed.notify_all();
  }
  const std::lock_guard lock(throttleMutex);
  --chunksInFlight;
  if (chunksInFlight == kResumeChunks || chunksInFlight == 0) chunkChanged.notify_one();
}

// Most faces of a chunk were reached from others, or none was: one exclusive turn for all that are
// left keeps the lock from going to and fro.
void GeometryPipeline::CollectFaces(FaceChunk& chunk) {
  bool all = true;
  {
    const auto reading =
        LockTimed<std::shared_lock<std::shared_mutex>>(collectorLock, Waits().collectorLock);
    for (FaceWork& work : chunk.faces) {
      const std::uint32_t face = collector.FindFace(work.su_face);
      const bool visited = face != FaceCollector::kNone && collector.Face(face).Visited();
      all = all && visited;
      if (visited && collector.Face(face).Valid()) work.face = face;
    }
  }
  if (!all) {
    const auto writing =
        LockTimed<std::unique_lock<std::shared_mutex>>(collectorLock, Waits().collectorLock);
    for (FaceWork& work : chunk.faces) work.face = collector.CollectSmoothingGroup(work.su_face);
  }
  ReserveOwnMesh(collector, chunk);
}

// A face that is not valid keeps its helpers for the host's triangulation.
void GeometryPipeline::EvaluateTextures(FaceChunk& chunk) {
  std::vector<Point> points;
  for (FaceWork& work : chunk.faces) {
    if (!work.uvHelpers.HasAny()) continue;
    if (!collector.GatherFacePoints(work.face, points)) continue;
    EvaluateUv(work.uvHelpers, points, work, chunk);
    work.uvHelpers = {};
  }
}

void GeometryPipeline::CloseMesh() {
  const std::shared_ptr<GeoMeshJob> job = std::move(currentJob);
  currentJob.reset();
  if (!job || job->chunks.empty()) return;
  {
    const std::lock_guard lock(job->mutex);
    job->closed = true;
    job->changed.notify_all();
  }
  EnqueueSend({job, {}});
}

void GeometryPipeline::PlaceMesh(const MeshPlacement& placement) {
  EnqueueSend({nullptr, placement});
}

void GeometryPipeline::EnqueueSend(SendQueueEntry entry) {
  {
    std::unique_lock lock(queueMutex);
    const ScopedTiming timing(Waits().queueBound, queue.size() >= kMaxEntries);
    notFull.wait(lock, [this] { return queue.size() < kMaxEntries || failed; });
    if (!failed) {
      queue.push_back(std::move(entry));
      peakEntries = std::max(peakEntries, queue.size());
      notEmpty.notify_one();
    }
  }
  ThrowIfFailed();
}

void GeometryPipeline::RunSender() {
  NameThreadOnce("thGeoSend");
  const double start = NowMs();
  try {
    SendQueueEntry entry;
    while (TakeEntry(entry)) {
      if (entry.job) {
        SendGeoMeshJob(*entry.job);
      } else {
        sink.SendPlacement(entry.placement);
      }
      entry.job.reset();
    }
  } catch (...) {
    Fail(std::current_exception());
  }
  LogLine("thGeoSend (pipeline sender): %.1f ms", NowMs() - start);
}

// False when there is nothing more to send, or no use in it.
bool GeometryPipeline::TakeEntry(SendQueueEntry& entry) {
  std::unique_lock lock(queueMutex);
  const ScopedTiming timing(Waits().senderIdle, queue.empty());
  notEmpty.wait(lock, [this] { return !queue.empty() || producerDone || failed; });
  if (failed || queue.empty()) return false;
  entry = std::move(queue.front());
  queue.pop_front();
  notFull.notify_one();
  return true;
}

void GeometryPipeline::SendGeoMeshJob(GeoMeshJob& job) {
  {
    std::unique_lock lock(job.mutex);
    const ScopedTiming timing(Waits().senderForMesh, job.pendingChunks > 0);
    job.changed.wait(lock, [&] { return job.closed && job.pendingChunks == 0; });
  }
  if (failed) return;
  if (job.chunks.size() == 1) {
    sink.SendMesh(job.chunks.front()->mesh, job.placement, job.pass);
    return;
  }
  std::size_t vertices = 0;
  std::size_t words = 0;
  for (const std::unique_ptr<FaceChunk>& chunk : job.chunks) {
    vertices += chunk->mesh.vertices.size();
    words += chunk->mesh.triangles.size();
  }
  merged.vertices.clear();
  merged.triangles.clear();
  merged.vertices.reserve(vertices);
  merged.triangles.reserve(words);
  for (std::unique_ptr<FaceChunk>& chunk : job.chunks) {
    AppendPart(chunk->mesh, 0, chunk->mesh.vertices.size(), 0, chunk->mesh.triangles.size(),
               merged);
    chunk.reset();
  }
  sink.SendMesh(merged, job.placement, job.pass);
}

GeometryPipeline::Peaks GeometryPipeline::PeaksSoFar() {
  Peaks peaks;
  {
    const std::lock_guard lock(queueMutex);
    peaks.entries = peakEntries;
  }
  const std::lock_guard lock(throttleMutex);
  peaks.chunks = peakChunks;
  return peaks;
}

void GeometryPipeline::Finish() {
  Help(0);
  EndSender();
  ThrowIfFailed();
}

void GeometryPipeline::EndSender() {
  {
    const std::lock_guard lock(queueMutex);
    producerDone = true;
    notEmpty.notify_one();
  }
  if (senderThread.joinable()) senderThread.join();
}

// Whoever waits on a bound looks at `failed` under the bound's mutex, so it is told under it too.
void GeometryPipeline::Fail(std::exception_ptr error) {
  {
    const std::lock_guard lock(errorMutex);
    if (!firstError) firstError = std::move(error);
  }
  failed = true;
  {
    const std::lock_guard lock(queueMutex);
    notEmpty.notify_all();
    notFull.notify_all();
  }
  const std::lock_guard lock(throttleMutex);
  chunkChanged.notify_all();
}

void GeometryPipeline::ThrowIfFailed() {
  if (!failed) return;
  const std::lock_guard lock(errorMutex);
  if (firstError) std::rethrow_exception(firstError);
}

}  // namespace quellix
