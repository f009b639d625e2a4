#include "export/SkpImporter.h"

#include <wx/string.h>
#include <wx/translation.h>

#include "cw/Layer.h"
#include "cw/Model.h"
#include "export/GeometryWalk.h"
#include "export/LayerVisibility.h"
#include "export/Lists.h"
#include "export/MaterialExport.h"
#include "export/SceneScan.h"
#include "export/WorkerThreads.h"
#include "geometry/GeometryTimings.h"
#include "geometry/TessValidation.h"
#include "link/IpcDigest.h"
#include "link/IpcStats.h"
#include "support/Gates.h"
#include "support/Platform.h"
#include "support/Switches.h"
#include "support/ThreadName.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

// While the workers run, the renderer gets an answer from Ruby within this time.
constexpr std::chrono::milliseconds kServeSlice{10};

// A text of the driver through the host's translations, in the locale's encoding.
std::string Translated(const char* text) {
  const wxTranslations* translations = wxTranslations::Get();
  const wxString original = wxString::FromUTF8(text);
  const wxString* found =
      translations == nullptr ? nullptr : translations->GetTranslatedString(original);
  const wxString& translated = found == nullptr ? original : *found;
  std::string narrow(translated.mb_str());
  // A locale that lacks a character cannot carry the text at all.
  return narrow.empty() ? std::string(translated.utf8_str()) : narrow;
}

}  // namespace

SkpImporter::SkpImporter(IpcInterface& rendererLink, unsigned geometryThreads)
    : link(rendererLink),
      rendererAtStart(rendererLink.IsAlive()),
      unifiedScan(UnifiedScanEnabled()),
      meshPerPaint(MeshPerPaintEnabled()),
      progress(rendererLink),
      geometry(rendererLink, progress, geometryThreads) {}

SkpImporter::~SkpImporter() {
  if (SUIsValid(textureWriter)) SUTextureWriterRelease(&textureWriter);
}

void SkpImporter::Import(SUModelRef su_modelToExport, const std::string& modelName,
                         bool reloadExport, bool pbr) {
  model = su_modelToExport;
  reload = reloadExport;
  usePbr = pbr;
  link.SetModelName(modelName);
  ExportModel();
}

bool SkpImporter::Abandoned() {
  link.EndIfInterrupted();
  if (rendererAtStart && !link.IsAlive()) abandoned = true;
  return abandoned;
}

bool SkpImporter::Abandoned(std::uint32_t& steps) {
  constexpr std::uint32_t kStepsPerLook = 64;
  if (++steps % kStepsPerLook == 0) return Abandoned();
  link.EndIfInterrupted();
  return abandoned || link.Ended();
}

bool SkpImporter::ExportModel() {
  const BusyCursor cursor;
  try {
    RunPhases();
  } catch (...) {
    try {
      SendClosing();
    } catch (const std::exception& error) {
      LogLine("the end of the failed export was not sent: %s", error.what());
    }
    throw;
  }
  SendClosing();
  return true;
}

void SkpImporter::RunPhases() {
  const Stopwatch whole;
  ResetDiagnostics();

  SUTextureWriterCreate(&textureWriter);
  CollectHiddenLayers();
  SendText("Exporting materials and surfaces...");
  link.SetProgress(0.0f);

  const Stopwatch scan;
  std::vector<MaterialEntry> entries;
  CollectSceneInfo(*this, entries);
  LogLine("PreExportMaterials: %.1f ms (entries=%d)", scan.Ms(), static_cast<int>(entries.size()));

  RunWorkers(entries);

  SendLights();
  WriteSummary(whole);
  DigestDump(reload);
  WriteValidationSummary(reload);
}

// Nothing goes on any more, for whoever looks at the renderer.
void SkpImporter::SendClosing() {
  SendText("");
  link.SetProgress(0.0f);
}

void SkpImporter::ResetDiagnostics() {
  DigestReset();
  ResetValidation();
  geometry.collector.Clear();
  if (!PerfLogEnabled()) return;
  StatsReset();
  ResetGateStats();
  ResetGeometryTimings();
  LogLine("=== ExportModel begin (reload=%d) ===", reload ? 1 : 0);
}

void SkpImporter::CollectHiddenLayers() {
  scene.hiddenLayers.clear();
  for (const CW::Layer& layer : CW::Model(model).layers()) {
    if (!IsLayerVisible(layer.ref())) scene.hiddenLayers.insert(layer.ref());
  }
}

void SkpImporter::RunWorkers(const std::vector<MaterialEntry>& entries) {
  WorkerThreads workers;
  workers.Start([this, &entries] {
    NameThreadOnce("thMat");
    const Stopwatch watch;
    ExportMaterials(*this, entries);
    LogLine("thMat ExportMaterials: %.1f ms", watch.Ms());
  });
  workers.Start([this] {
    NameThreadOnce("thGeo");
    const Stopwatch watch;
    GeometryWalk(*this).Export();
    LogLine("thGeo ExportGeometry: %.1f ms", watch.Ms());
  });
  workers.Wait(kServeSlice, [this] {
    link.PollToPlugin();
    link.EndIfInterrupted();
  });
}

void SkpImporter::SendLights() {
  SendText("Exporting lights...");
  const Stopwatch watch;
  if (unifiedScan) {
    SendPendingLights(link, pendingLights);
  } else {
    InheritanceManager manager(textureWriter);
    ExportLights(link, scene.hiddenLayers, RootEntitiesOf(model), manager);
  }
  LogLine("ExportLights%s: %.1f ms", unifiedScan ? " (send only)" : "", watch.Ms());
}

void SkpImporter::WriteSummary(const Stopwatch& whole) {
  if (!PerfLogEnabled()) return;
  DumpGeometryTimings();
  StatsDump();
  DumpGateStats();
  LogLine("=== ExportModel end (reload=%d): total %.1f ms ===", reload ? 1 : 0, whole.Ms());
}

void SkpImporter::SendText(const char* text) {
  link.SetMessage(Translated(text));
}

}  // namespace quellix
