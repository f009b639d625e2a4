#include "geometry/GeometryPipeline.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "geometry/GeometryTimings.h"
#include "support/Gates.h"
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
    : collector(faceCollector),
      sink(meshSink),
      collectorShared(FaceDataIsShared()),
      pool(poolThreads) {
  senderThread = std::thread([this] { RunSender(); });
  try {
    for (unsigned i = 0; i < poolThreads; ++i) pool.Enqueue([this] { RunWorker(); });
  } catch (...) {
    EndWorkers();
    EndSender();
    throw;
  }
}

// Chunks that are not finished see `failed` and end at once, for the sender may wait for them.
GeometryPipeline::~GeometryPipeline() {
  failed = true;
  EndSender();
  EndWorkers();
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
    const std::lock_guard lock(workMutex);
    full = chunksInFlight >= kMaxChunks;
  }
  if (full) Help(kResumeChunks);
  ThrowIfFailed();
  currentJob->chunks.push_back(std::move(chunk));
  {
    const std::lock_guard lock(currentJob->mutex);
    ++currentJob->pendingChunks;
  }
  const std::lock_guard lock(workMutex);
  unread.push_back({currentJob, currentJob->chunks.back().get()});
  peakChunks = std::max(peakChunks, ++chunksInFlight);
  if (!collecting) workChanged.notify_one();
}

void GeometryPipeline::RunWorker() {
  NameThreadOnce("geo pool");
  std::unique_lock lock(workMutex);
  do {
    workChanged.wait(lock, [this] { return CanWork() || ended; });
  } while (WorkOnce(lock) || !ended);
}

// Does what the pool would do, and waits where there is nothing to do, until so few chunks are
// unfinished.
void GeometryPipeline::Help(std::size_t untilChunks) {
  std::unique_lock lock(workMutex);
  const auto enough = [&] { return chunksInFlight <= untilChunks || failed; };
  while (!enough()) {
    if (WorkOnce(lock)) continue;
    const ScopedTiming timing(Waits().chunkBound);
    workChanged.wait(lock, [&] { return enough() || CanWork(); });
  }
  if (CanWork()) workChanged.notify_one();  // it may be this thread that was woken for that
}

// Collects a chunk if nobody else is collecting, else builds one. False when neither can be done.
// The lock is let go meanwhile.
bool GeometryPipeline::WorkOnce(std::unique_lock<std::mutex>& lock) {
  if (!CanWork()) return false;
  const bool collect = !unread.empty() && !collecting;
  boost::circular_buffer<ChunkWork>& from = collect ? unread : ready;
  ChunkWork work = std::move(from.front());
  from.pop_front();
  if (collect) collecting = !collectorShared;
  lock.unlock();
  if (collect) Attempt([&] { CollectFaces(*work.chunk); });
  if (!collect || collectorShared) {
    BuildChunk(std::move(work));
    lock.lock();
    return true;
  }
  lock.lock();
  collecting = false;
  ready.push_back(std::move(work));
  if (ready.size() >= kWakeChunks || unread.empty()) workChanged.notify_one();
  return true;
}

// What fails ends the export; after that nothing is tried.
template <class Work>
void GeometryPipeline::Attempt(Work&& work) {
  try {
    if (!failed) work();
  } catch (...) {
    Fail(std::current_exception());
  }
}

// Where the collector is shared, another thread may be reading some of the faces as neighbours of
// its own. They are waited for in the end, when that is mostly over.
void GeometryPipeline::CollectFaces(FaceChunk& chunk) {
  std::vector<std::uint32_t> collected;
  collected.reserve(chunk.faces.size());
  for (FaceWork& work : chunk.faces) {
    work.face = collector.CollectFace(work.su_face, chunk.scope);
    collected.push_back(work.face);
  }
  if (!collectorShared) collector.CollectFans(collected);
  for (FaceWork& work : chunk.faces) {
    if (!collector.ReadFace(work.face).Valid()) work.face = FaceCollector::kNone;
  }
}

void GeometryPipeline::BuildChunk(ChunkWork work) {
  Attempt([&] {
    EvaluateTextures(*work.chunk);
    BuildMeshes(*work.chunk);
  });
  work.chunk->DropFaces();
  {
    const std::lock_guard lock(work.job->mutex);
    if (--work.job->pendingChunks == 0 && work.job->closed) work.job->changed.notify_all();
  }
  const std::lock_guard lock(workMutex);
  --chunksInFlight;
  if (chunksInFlight == kResumeChunks || chunksInFlight == 0) workChanged.notify_all();
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
  const std::lock_guard lock(workMutex);
  peaks.chunks = peakChunks;
  return peaks;
}

void GeometryPipeline::Finish() {
  Help(0);
  EndSender();
  ThrowIfFailed();
}

void GeometryPipeline::EndWorkers() {
  const std::lock_guard lock(workMutex);
  ended = true;
  workChanged.notify_all();
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
  const std::lock_guard lock(workMutex);
  workChanged.notify_all();
}

void GeometryPipeline::ThrowIfFailed() {
  if (!failed) return;
  const std::lock_guard lock(errorMutex);
  if (firstError) std::rethrow_exception(firstError);
}

}  // namespace quellix
