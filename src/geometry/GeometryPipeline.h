#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

#include <boost/circular_buffer.hpp>

#include "geometry/FaceCollector.h"
#include "geometry/FaceWork.h"
#include "geometry/GeoMeshJob.h"
#include "geometry/MeshSink.h"
#include "support/WorkerPool.h"

namespace quellix {

// The pipeline of one export: the walk writes down faces in chunks, a pool makes their meshes, a
// sender thread sends them in the order of the walk.
//
// A chunk is collected, which asks the host, and then built. Collecting is a stage that one thread
// at a time runs, unless the user has said that the host's face data may be shared: a thread that
// finds it taken builds what is collected. Where the pool is so far behind that the walk would
// wait, the walk does the same as the pool.
//
// All calls are for the walk's thread, except PeaksSoFar. When a task or the sender fails, what is
// queued is dropped, nobody goes on waiting, and the walk's next call throws the first error.
class GeometryPipeline {
 public:
  static constexpr std::size_t kMaxChunks = 128;
  static constexpr std::size_t kMaxEntries = 256;
  // A thread that sleeps because nothing is collected is woken for so many chunks: waking it for
  // each would cost the collecting thread, which the export waits for.
  static constexpr std::size_t kWakeChunks = 4;

  // Starts the pool and the sender. Throws std::system_error when a thread cannot be started.
  GeometryPipeline(FaceCollector& faceCollector, MeshSink& meshSink, unsigned poolThreads);
  // Ends all threads; what is not sent yet is dropped.
  ~GeometryPipeline();
  GeometryPipeline(const GeometryPipeline&) = delete;
  GeometryPipeline& operator=(const GeometryPipeline&) = delete;

  // Starts a mesh; the faces that follow go into it.
  void OpenMesh(const MeshPlacement& placement, std::uint8_t pass);
  // Hands a collection's faces to the pool, in chunks. Waits while as many chunks as may be are
  // unfinished. Does nothing when no mesh is open.
  void ProduceFaceWork(const FaceSource& source);
  // Ends the open mesh and queues it, unless no face was added.
  void CloseMesh();
  // Queues one more placement of a mesh queued before.
  void PlaceMesh(const MeshPlacement& placement);
  // Returns when all that was queued has been sent and the sender has ended. Throws the first
  // error.
  void Finish();

  // The most that there were at once, of unfinished chunks and of queued entries.
  struct Peaks {
    std::size_t chunks = 0;
    std::size_t entries = 0;
  };
  Peaks PeaksSoFar();

 private:
  // A chunk on its way, with the mesh that it is a part of.
  struct ChunkWork {
    std::shared_ptr<GeoMeshJob> job;
    FaceChunk* chunk = nullptr;
  };

  void Submit(std::unique_ptr<FaceChunk> chunk);
  void RunWorker();
  void Help(std::size_t untilChunks);
  bool CanWork() const { return !ready.empty() || (!unread.empty() && !collecting); }
  bool WorkOnce(std::unique_lock<std::mutex>& lock);
  template <class Work>
  void Attempt(Work&& work);
  void CollectFaces(FaceChunk& chunk);
  void BuildChunk(ChunkWork work);
  void EvaluateTextures(FaceChunk& chunk);
  void BuildMeshes(FaceChunk& chunk);
  void EndWorkers();

  void EnqueueSend(SendQueueEntry entry);
  void RunSender();
  bool TakeEntry(SendQueueEntry& entry);
  void SendGeoMeshJob(GeoMeshJob& job);
  void EndSender();

  void Fail(std::exception_ptr error);
  void ThrowIfFailed();

  FaceCollector& collector;
  MeshSink& sink;
  std::shared_ptr<GeoMeshJob> currentJob;

  std::mutex queueMutex;  // guards the queue and `producerDone`
  std::condition_variable notEmpty;
  std::condition_variable notFull;
  std::deque<SendQueueEntry> queue;
  bool producerDone = false;
  std::size_t peakEntries = 0;

  const bool collectorShared;  // by threads that collect at the same time
  std::mutex workMutex;        // guards what follows
  std::condition_variable workChanged;
  boost::circular_buffer<ChunkWork> unread{kMaxChunks};
  boost::circular_buffer<ChunkWork> ready{kMaxChunks};  // collected
  bool collecting = false;                              // the stage is taken
  bool ended = false;                                   // no chunk comes any more
  std::size_t chunksInFlight = 0;
  std::size_t peakChunks = 0;

  std::mutex errorMutex;  // guards the error; `failed` is set after it
  std::exception_ptr firstError;
  std::atomic<bool> failed{false};

  MeshBuffer merged;  // the sender's, kept from mesh to mesh
  WorkerPool pool;
  std::thread senderThread;
};

}  // namespace quellix
