#include "export/MaterialExport.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

#include "cw/Entity.h"
#include "export/AttributeReaders.h"
#include "export/MaterialPreparation.h"
#include "export/MaterialSending.h"
#include "export/ReloadCaches.h"
#include "support/Switches.h"
#include "support/TimingLog.h"
#include "support/WorkerPool.h"

namespace quellix {

namespace {

std::atomic<int> recordsAlive{0};
std::atomic<int> peakRecordsAlive{0};

// What bounds the queue to the pool: a record is made only when fewer than (workers + 2) are alive,
// and counts until its last owner lets it go. So each worker has one, one waits for it, and one is
// being prepared, however many materials there are and however slowly the renderer takes them.
//
// Not a std::counting_semaphore: where the system has no futex, libstdc++ 12's can miss a release
// and wait for ever.
class RecordBudget {
 public:
  explicit RecordBudget(int records) : free(records) {}

  std::shared_ptr<MaterialSendJob> Take() {
    {
      std::unique_lock lock(mutex);
      recordFreed.wait(lock, [this] { return free > 0; });
      --free;
    }
    const int alive = ++recordsAlive;
    int peak = peakRecordsAlive;
    while (alive > peak && !peakRecordsAlive.compare_exchange_weak(peak, alive)) {
    }
    return {new MaterialSendJob, [this](MaterialSendJob* job) {
              delete job;
              --recordsAlive;
              const std::lock_guard lock(mutex);
              ++free;
              recordFreed.notify_one();
            }};
  }

 private:
  std::mutex mutex;
  std::condition_variable recordFreed;
  int free;
};

class MaterialExporter {
 public:
  MaterialExporter(SkpImporter& skpImporter, std::size_t entryCount)
      : importer(skpImporter), entries(entryCount), budget(static_cast<int>(kWorkers) + 2) {
    if (MatPipelineEnabled()) pool.emplace(kWorkers);
  }

  void ExportImage(const MaterialEntry& entry, std::size_t position);
  void ExportMaterial(const MaterialEntry& entry, std::size_t position);
  void Finish();

 private:
  bool HeldByRenderer(const MaterialEntry& entry, std::uint32_t id, float lightPower);
  void Send(std::shared_ptr<MaterialSendJob> job, std::uint64_t picture);
  void ReportProgress(std::size_t position);

  static inline const unsigned kWorkers = WorkerCount(std::thread::hardware_concurrency());

  SkpImporter& importer;
  const std::size_t entries;
  ReloadCaches& caches = ReloadCaches::Instance();
  // What this export has sent or referenced so far, the default face materials first.
  IdSet keys{MaterialKey(0, kDefaultFrontMaterialId), MaterialKey(0, kDefaultBackMaterialId)};
  // The pool ends first: its tasks give their records back.
  RecordBudget budget;
  std::optional<WorkerPool> pool;
};

// Then it is referenced. Several materials have one key where the host gives no ids, or the same
// ones, or some that differ in their upper halves only: the first one is sent and the others'
// indexes refer to it, so that every face has a material that the renderer knows.
bool MaterialExporter::HeldByRenderer(const MaterialEntry& entry, std::uint32_t id,
                                      float lightPower) {
  if (!caches.UseCachedMaterial(entry.index, id, entry.textureId, lightPower,
                                importer.cachedMaterialRefs)) {
    return false;
  }
  const std::uint64_t key = MaterialKey(entry.textureId, id);
  if (!keys.insert(key).second) {
    LogLine("left out: the material of index %u, whose key %llu another one has", entry.index,
            static_cast<unsigned long long>(key));
  }
  return true;
}

void MaterialExporter::ExportImage(const MaterialEntry& entry, std::size_t position) {
  if (!HeldByRenderer(entry, entry.imageKey, 0.0f)) {
    auto job = budget.Take();
    if (PrepareImageMaterial(entry, *job)) Send(std::move(job), entry.picture);
  }
  ReportProgress(position);
}

void MaterialExporter::ExportMaterial(const MaterialEntry& entry, std::size_t position) {
  const SUEntityRef su_entity = SUMaterialToEntity(entry.material);
  const auto materialId = static_cast<std::uint32_t>(CW::persistent_id(su_entity));
  const float lightPower = ReadLightPower(FindUsableDictionary(su_entity));
  if (HeldByRenderer(entry, materialId, lightPower)) return;
  auto job = budget.Take();
  const bool pbr = importer.usePbr && IsPbrMaterial(entry.material);
  if (pbr ? PreparePbrMaterial(entry, materialId, *job)
          : PrepareClassicMaterial(entry, materialId, *job)) {
    Send(std::move(job), entry.picture);
  }
  ReportProgress(position);
}

// The record counts as held by the renderer from here on, before its command is written.
void MaterialExporter::Send(std::shared_ptr<MaterialSendJob> job, std::uint64_t picture) {
  caches.RecordMaterial(job->key, picture);
  keys.insert(job->key);
  if (!pool) {
    SendMaterialJob(importer.link, *job);
    return;
  }
  pool->Enqueue([&link = importer.link, job = std::move(job)] { SendMaterialJob(link, *job); });
}

// The share of the list that is done; a reload shows no progress of its materials.
void MaterialExporter::ReportProgress(std::size_t position) {
  importer.progress.SetMaterial(
      importer.reload ? 0.0f : static_cast<float>(position) / static_cast<float>(entries));
}

void MaterialExporter::Finish() {
  if (pool) pool->WaitIdle();
  importer.link.AppendCachedMaterials(importer.cachedMaterialRefs);
  importer.cachedMaterialRefs.clear();
}

}  // namespace

bool ExportMaterials(SkpImporter& importer, const std::vector<MaterialEntry>& entries) {
  MaterialExporter exporter(importer, entries.size());
  for (std::size_t i = 0; i < entries.size() && !importer.Abandoned(); ++i) {
    if (entries[i].isImage) {
      exporter.ExportImage(entries[i], i);
    } else {
      exporter.ExportMaterial(entries[i], i);
    }
  }
  exporter.Finish();
  return true;
}

int PeakMaterialRecords() {
  return peakRecordsAlive;
}
void ResetPeakMaterialRecords() {
  peakRecordsAlive = 0;
}

}  // namespace quellix
