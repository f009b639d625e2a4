#include "geometry/FaceExporter.h"

#include "geometry/FaceProbe.h"
#include "geometry/GeometryTimings.h"
#include "geometry/HostMesh.h"
#include "geometry/MeshBuilder.h"
#include "geometry/TessValidation.h"
#include "geometry/Tessellation.h"
#include "support/PerThread.h"
#include "support/Gates.h"
#include "support/Switches.h"

namespace quellix {

namespace {

// Buffers that would otherwise be allocated for every face.
struct Scratch {
  TessMesh own;
  TessMesh host;
  UvList frontUv;
  UvList backUv;
  FaceTransform transform;
};

UvHelpers MakeUvHelpers(SUFaceRef su_face, const FaceContext& context) {
  if (!context.front.textured && !context.back.textured) return {};
  const ScopedTiming timing(Timings().uvHelper);
  return UvHelpers(su_face, context);
}

// Two clock reads per face only where a helper is made.
void MakeHostMesh(SUFaceRef su_face, MeshHelper& helper) {
  const ScopedTiming timing(Timings().meshHelperCreate);
  helper.Create(su_face);
}

void AppendChosen(const TessMesh& mesh, const UvHelpers& uvHelpers, const FaceContext& context,
                  Scratch& scratch, MeshBuffer& buffer) {
  scratch.frontUv.clear();
  scratch.backUv.clear();
  if (uvHelpers.HasAny()) {
    const ScopedTiming timing(Timings().uvHelper);
    uvHelpers.Evaluate(mesh.positions, scratch.frontUv, scratch.backUv);
  }
  scratch.transform.Set(context.transform);
  AppendFace({mesh.positions, mesh.normals, mesh.indexes, scratch.frontUv, scratch.backUv,
              context.front.index, context.back.index},
             scratch.transform, buffer);
}

}  // namespace

void ExportFaceSerial(FaceCollector& collector, SUFaceRef su_face, const FaceContext& context,
                      MeshBuffer& buffer) {
  static PerThread<Scratch> perThread;
  Scratch& scratch = perThread.Get();
  const ScopedTiming timing(Timings().collectFace);
  UvHelpers uvHelpers = MakeUvHelpers(su_face, context);

  bool ownMade = false;
  if (OwnTessEnabled() || TessValidationEnabled()) {
    const std::uint32_t face = collector.CollectSmoothingGroup(su_face);
    ownMade = TessellateFace(collector, face, scratch.own);
  }
  const bool useOwn = OwnTessEnabled() && ownMade;
  MeshHelper helper;
  if (!useOwn || TessValidationEnabled()) MakeHostMesh(su_face, helper);
  helper.Read(scratch.host);
  const bool hostMade = !scratch.host.positions.empty();
  if (TessValidationEnabled() && ownMade && hostMade) {
    ValidateTessellation(su_face, scratch.own, scratch.host);
  }

  const TessMesh& mesh = useOwn ? scratch.own : scratch.host;
  if (!mesh.positions.empty()) AppendChosen(mesh, uvHelpers, context, scratch, buffer);
  if (FaceProbeEnabled() && hostMade) ProbeFace(su_face, scratch.host);

  if (!helper.Empty() || uvHelpers.HasAny()) {
    const GateGuard gate = GateAcquire(Gate::MeshHelper);
    helper.Release();
    uvHelpers.Release();
  }
}

}  // namespace quellix
