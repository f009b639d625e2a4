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
    if (!chunk) {
      chunk = std::make_unique<FaceChunk>();
      chunk->scope = collector.Scope();
    }
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

// Does what the pool would do, and waits where nothing is left for it to begin, until so few chunks
// are unfinished.
void GeometryPipeline::Help(std::size_t untilChunks) {
  const auto enough = [&] { return chunksInFlight <= untilChunks || failed; };
  for (;;) {
    {
      const std::lock_guard lock(throttleMutex);
      if (enough()) return;
    }
    if (pool.RunOne()) continue;
    std::unique_lock lock(throttleMutex);
    const ScopedTiming timing(Waits().chunkBound);
    chunkChanged.wait(lock, enough);
  }
}

void GeometryPipeline::ProcessFaceWork(const std::shared_ptr<GeoMeshJob>& job, FaceChunk& chunk) {
  NameThreadOnce("geo pool");
  try {
    if (!failed) CollectFaces(chunk);
    if (!failed) EvaluateTextures(chunk);
    if (!failed) BuildMeshes(chunk);
  } catch (...) {
    Fail(std::current_exception());
  }
  chunk.DropFaces();
  EndChunk(*job);
}

// Another thread may be reading some of the faces as neighbours of its own. They are waited for in
// the end, when that is mostly over.
void GeometryPipeline::CollectFaces(FaceChunk& chunk) {
  for (FaceWork& work : chunk.faces) {
    work.face = collector.CollectFace(work.su_face, chunk.scope);
  }
  for (FaceWork& work : chunk.faces) {
    if (!collector.ReadFace(work.face).Valid()) work.face = FaceCollector::kNone;
  }
}

// A face that is not valid keeps its helpers for the host's triangulation.
void GeometryPipeline::EvaluateTextures(FaceChunk& chunk) {
  std::vector<Point> points;
  for (FaceWork& work : chunk.faces) {
    if (!work.uvHelpers.HasAny() || !collector.GatherFacePoints(work.face, points)) continue;
    EvaluateUv(work.uvHelpers, points, work, chunk);
    work.uvHelpers = {};
  }
}

void GeometryPipeline::BuildMeshes(FaceChunk& chunk) {
  ReserveOwnMesh(collector, chunk);
  for (FaceWork& work : chunk.faces) {
    if (failed) return;
    BuildOwnMesh(collector, work, chunk);
    if (!work.done) BuildHelperMesh(work, chunk);
  }
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
  const Stopwatch watch;
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
  LogLine("thGeoSend (pipeline sender): %.1f ms", watch.Ms());
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
