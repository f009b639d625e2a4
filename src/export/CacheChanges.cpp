#include "export/CacheChanges.h"

#include <utility>

namespace quellix {

void CacheChanges::Make(Change change) {
  if (exporting) {
    waiting.push_back(std::move(change));
  } else {
    change(ReloadCaches::Instance());
  }
}

void CacheChanges::EndExport() noexcept {
  exporting = false;
  ReloadCaches& caches = ReloadCaches::Instance();
  try {
    for (const Change& change : std::exchange(waiting, {})) change(caches);
  } catch (...) {
    // What is not known to be unchanged is sent again.
    caches.ClearReloadCache();
  }
  caches.ForgetFormerScan();
}

}  // namespace quellix
