#pragma once

#include <functional>
#include <vector>

#include "export/ReloadCaches.h"

namespace quellix {

// What Ruby reports or asks of the reload caches. While an export runs, its threads have the
// caches, and what it reads of the model may be older than a report or newer; so a change then
// takes effect when the export has ended, once, in the order of the calls. Host thread.
class CacheChanges {
 public:
  using Change = std::function<void(ReloadCaches&)>;

  void Make(Change change);

  void BeginExport() { exporting = true; }
  void EndExport() noexcept;

 private:
  bool exporting = false;
  std::vector<Change> waiting;
};

}  // namespace quellix
