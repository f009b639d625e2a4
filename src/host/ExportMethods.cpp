// The export and the upkeep of the reload caches.

#include "host/Methods.h"

#include <array>
#include <stdexcept>
#include <string>

#include <boost/interprocess/exceptions.hpp>

#include "export/ReloadCaches.h"
#include "export/SceneScan.h"
#include "export/SkpImporter.h"
#include "host/Arguments.h"
#include "host/Guard.h"
#include "host/Session.h"
#include "support/FreeMemory.h"
#include "support/ModelName.h"
#include "support/TimingLog.h"

using quellix::Guarded;
using quellix::IpcInterface;
using quellix::ReloadCaches;
using quellix::Session;

namespace {

SUModelRef ModelFromHandle(std::uint64_t handle) {
  SUModelRef su_model;
  su_model.ptr = reinterpret_cast<void*>(static_cast<std::uintptr_t>(handle));
  return su_model;
}

// Says while it lives that an export runs. A host lives for a day and exports thousands of times,
// so the process is left no larger than the export found it.
class Exporting {
 public:
  Exporting() { Session::Instance().SetExporting(true); }
  ~Exporting() {
    Session::Instance().SetExporting(false);
    quellix::ReturnFreeMemory();
  }
  Exporting(const Exporting&) = delete;
  Exporting& operator=(const Exporting&) = delete;
};

void Import(IpcInterface& link, SUModelRef su_model, const char* path, bool reload, bool usePbr) {
  // The command in flight, or the export under way, cannot go on before the callback returns.
  if (Session::Instance().Exporting() || link.WouldHold()) {
    throw std::runtime_error(
        "do_import cannot run in a callback that is served during another command; call it after "
        "the callback has returned");
  }
  const Exporting exporting;
  if (!link.IsAlive()) ReloadCaches::Instance().ClearReloadCache();
  quellix::SkpImporter importer(link);
  try {
    importer.Import(su_model, quellix::ModelNameOf(path), reload, usePbr);
  } catch (const boost::interprocess::interprocess_exception& error) {
    ReloadCaches::Instance().ClearReloadCache();
    throw std::runtime_error(std::string("the shared memory for the renderer could not be made: ") +
                             error.what());
  } catch (...) {
    // What was counted as sent may never have been.
    ReloadCaches::Instance().ClearReloadCache();
    throw;
  }
}

template <class Operation>
VALUE OnCaches(Operation operation) {
  return Guarded([operation] {
    Session::Instance().ChangeCaches(operation);
    return Qnil;
  });
}

}  // namespace

extern "C" {

VALUE DoImport(VALUE, VALUE model, VALUE path, VALUE reload, VALUE usePbr) {
  if (Session::Instance().Link() == nullptr) return Qnil;
  const SUModelRef su_model = ModelFromHandle(quellix::UnsignedValue(model));
  VALUE utf8 = quellix::Utf8Text(path);
  const char* text = StringValueCStr(utf8);
  const bool isReload = reload == Qtrue;
  const bool pbr = usePbr == Qtrue;
  const VALUE result = Guarded([su_model, text, isReload, pbr] {
    if (IpcInterface* link = Session::Instance().Link()) {
      Import(*link, su_model, text, isReload, pbr);
    }
    return Qnil;
  });
  RB_GC_GUARD(utf8);
  return result;
}

VALUE _InvalidateMaterialCache(VALUE, VALUE materialId) {
  const std::uint32_t id = quellix::Unsigned32Value(materialId);
  return OnCaches([id](ReloadCaches& caches) { caches.InvalidateMaterial(id); });
}

VALUE _InvalidateLayerCache(VALUE, VALUE layerId) {
  const std::uint64_t id = quellix::UnsignedValue(layerId);
  return OnCaches([id](ReloadCaches& caches) { caches.InvalidateLayerCache(id); });
}

VALUE _InvalidateDefinition(VALUE, VALUE definitionId) {
  const std::uint32_t id = quellix::Unsigned32Value(definitionId);
  return OnCaches([id](ReloadCaches& caches) { caches.InvalidateDefinition(id); });
}

VALUE _InvalidateGeometryCache(VALUE, VALUE ownerId) {
  const std::uint32_t id = quellix::Unsigned32Value(ownerId);
  return OnCaches([id](ReloadCaches& caches) { caches.InvalidateGeometryCache(id); });
}

VALUE _InitChildrenMap(VALUE, VALUE model) {
  const SUModelRef su_model = ModelFromHandle(quellix::UnsignedValue(model));
  return OnCaches([su_model](ReloadCaches& caches) {
    if (caches.childrenMapBuilt) {
      caches.childrenMapBuilt = false;
      quellix::LogLine("InitChildrenMap: skipped (built by unified scan, definitions=%d)",
                       static_cast<int>(caches.childrenMap.size()));
      return;
    }
    const quellix::Stopwatch watch;
    quellix::InitChildrenMap(su_model);
    quellix::LogLine("InitChildrenMap: %.1f ms (definitions=%d)", watch.Ms(),
                     static_cast<int>(caches.childrenMap.size()));
  });
}

VALUE _UpdateInstanceTransform(VALUE, VALUE ownerId, VALUE transform) {
  if (Session::Instance().Link() == nullptr) return Qnil;
  constexpr long kElements = 16;
  const std::uint64_t id = quellix::UnsignedValue(ownerId);
  Check_Type(transform, T_ARRAY);
  if (RARRAY_LEN(transform) != kElements) return Qnil;
  std::array<float, kElements> matrix;
  for (long i = 0; i < kElements; ++i) {
    matrix[static_cast<std::size_t>(i)] = quellix::FloatAt(transform, i);
  }
  return Guarded([id, matrix] {
    const auto send = [id, matrix](ReloadCaches&) {
      if (IpcInterface* link = Session::Instance().Link()) {
        link->UpdateInstanceTransform(id, matrix.data());
      }
    };
    send(ReloadCaches::Instance());
    // The export under way may have read the former place, and send it after this.
    if (Session::Instance().Exporting()) Session::Instance().ChangeCaches(send);
    return Qnil;
  });
}

VALUE _UpdateCacheInfo(VALUE) {
  return OnCaches([](ReloadCaches& caches) { caches.UpdateCacheInfo(); });
}

VALUE ClearReloadCache(VALUE) {
  return OnCaches([](ReloadCaches& caches) { caches.ClearReloadCache(); });
}

}  // extern "C"
