#pragma once

#include <atomic>

#include "link/IpcInterface.h"

namespace quellix {

// How far the two workers of an export are, each a fraction of its own work. The renderer is told
// the mean. Any thread.
class ExportProgress {
 public:
  explicit ExportProgress(IpcInterface& linkToReport) : link(linkToReport) {}

  void SetMaterial(float fraction) {
    materialProgress = fraction;
    Report();
  }
  void SetGeometry(float fraction) {
    geometryProgress = fraction;
    Report();
  }

 private:
  void Report() { link.SetProgress((materialProgress + geometryProgress) * 0.5f); }

  IpcInterface& link;
  std::atomic<float> materialProgress{0.0f};
  std::atomic<float> geometryProgress{0.0f};
};

}  // namespace quellix
