#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "app/Scene.h"
#include "view/Change.h"

namespace kvapp::view {

// The channel's end of the hand-over: gathers what a command changed and puts it into a bounded
// queue. It never waits for the server. When the queue is full it drops what comes, and hands over
// the whole scene once there is room again.
class Feed : public SceneWatcher {
 public:
  static constexpr std::size_t kMostSteps = 65536;

  // `wake` is called after a step was put into an empty queue, on the channel's thread.
  Feed(const Scene& scene, const Findings& findings, std::function<void()> wake);

  // By the channel's thread.
  void ExportBegan(std::uint64_t number) override;
  void TookMaterial(const std::shared_ptr<const Material>& material) override;
  void TookIndex(std::uint32_t index, std::uint64_t key) override;
  void Placed(const Placement& placement, bool first) override;
  void Moved(std::uint64_t owner, const Matrix& transform) override;
  void ExportEnded() { exportEnded_ = true; }
  // A command was taken, whether it was sound or not. Looks for what the scene does not tell by
  // itself.
  void Commit(std::uint64_t command, quellix::wire::CommandId id);
  // No command is in work: hands over what was found meanwhile, and what there was no room for.
  void AtRest();
  void SessionEnded(const std::string& reason);

  // By any thread: takes what is there.
  std::vector<Step> Take();

 private:
  void Set(Field field, nlohmann::json value);
  void SetFields();
  void SetExport();
  void SetFindings();
  change::Everything Everything() const;
  void Put();
  void PutAllAnew();

  const Scene& scene_;
  const Findings& findings_;
  std::function<void()> wake_;
  std::vector<Change> changes_;
  std::array<nlohmann::json, kNames.size()> told_;
  struct Told {
    std::uint64_t faultCount = 0;
    std::size_t faults = 0;
    std::size_t notes = 0;
    std::map<std::string, std::uint64_t> noteCounts;
  };
  Told findingsTold_;
  Told findingsPut_;  // what of these is in the queue or beyond
  std::uint64_t command_ = 0;
  std::chrono::steady_clock::time_point named_;
  bool exportEnded_ = false;
  bool lost_ = false;

  std::mutex mutex_;
  std::vector<Step> steps_;
};

}  // namespace kvapp::view
