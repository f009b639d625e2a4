#include "app/Report.h"

#include "app/Fnv.h"

namespace kvapp {

using nlohmann::json;

json FindingToJson(const Finding& finding) {
  return {{"command", finding.command}, {"name", finding.name}, {"text", finding.text}};
}

json ExportToJson(const ExportSummary& summary) {
  return {{"n", summary.number},
          {"modelName", summary.modelName},
          {"complete", summary.complete},
          {"firstCommand", summary.firstCommand},
          {"lastCommand", summary.lastCommand},
          {"bytes", summary.bytes},
          {"materialsSent", summary.materialsSent},
          {"materialsReferenced", summary.materialsReferenced},
          {"meshesSent", summary.meshesSent},
          {"placementsSent", summary.placementsSent},
          {"ownersReferenced", summary.ownersReferenced},
          {"lightsSent", summary.lightsSent},
          {"verticesSent", summary.verticesSent},
          {"trianglesSent", summary.trianglesSent}};
}

namespace {

json ToJson(const std::vector<Finding>& findings) {
  json list = json::array();
  for (const Finding& finding : findings) list.push_back(FindingToJson(finding));
  return list;
}

json CommandCounts(const CommandLog& log) {
  json counts = json::object();
  for (const auto& [name, count] : log.Counts()) {
    counts[name] = {{"count", count.commands}, {"bytes", count.bytes}};
  }
  return counts;
}

json Digests(const CommandLog& log) {
  json digests = json::object();
  for (const auto& [name, digest] : log.Digests()) {
    digests[name] = {{"n", digest.count}, {"xor", DigestText(digest.value)}};
  }
  return digests;
}

std::size_t TextureCount(const Material& material) {
  std::size_t count = 0;
  for (const Texture* texture : {&material.colorTexture, &material.pbr.metallicTexture,
                                 &material.pbr.roughnessTexture, &material.pbr.normalTexture}) {
    count += texture->HasPixels() ? 1 : 0;
  }
  return count;
}

json SceneCounts(const Scene& scene) {
  std::uint64_t vertices = 0;
  std::uint64_t triangles = 0;
  std::uint64_t placedTriangles = 0;
  std::size_t textures = 0;
  const auto meshes = scene.PlacedMeshes();
  for (const auto& mesh : meshes) {
    vertices += mesh->geometry.vertexCount;
    triangles += mesh->geometry.triangleCount;
  }
  for (const auto& [owner, placements] : scene.Placements()) {
    for (const Placement& placement : placements) {
      placedTriangles += placement.mesh->geometry.triangleCount;
    }
  }
  for (const auto& [key, material] : scene.Materials()) textures += TextureCount(*material);
  return {{"materials", scene.Materials().size()},
          {"textures", textures},
          {"meshes", meshes.size()},
          {"placements", scene.PlacementCount()},
          {"vertices", vertices},
          {"triangles", triangles},
          {"placedTriangles", placedTriangles},
          {"lights", scene.Lights().size()}};
}

template <class Value>
json OrNull(const std::optional<Value>& value) {
  return value ? json(*value) : json(nullptr);
}

}  // namespace

json MakeReport(const RunResult& result) {
  const Scene& scene = result.scene;
  json report = SceneCounts(scene);
  json exports = json::array();
  for (const ExportSummary& summary : scene.Exports()) exports.push_back(ExportToJson(summary));
  report.update(
      {{"exitReason", result.exitReason},
       {"modelName", scene.ModelName()},
       {"lastMessage", scene.LastMessage()},
       {"lastProgress", scene.LastProgress()},
       {"preparedForReload", OrNull(scene.PreparedForReload())},
       {"cameraLinked", OrNull(scene.Linked())},
       {"hasCamera", scene.Camera().has_value()},
       {"hasBackground", scene.BackgroundSettings().has_value()},
       {"commandCount", result.log.Commands()},
       {"bytesReceived", result.log.Bytes()},
       {"commands", CommandCounts(result.log)},
       {"digests", Digests(result.log)},
       {"exports", exports},
       {"requests",
        {{"posted", result.requests.posted}, {"acknowledged", result.requests.acknowledged}}},
       {"faultCount", result.findings.FaultCount()},
       {"faults", ToJson(result.findings.Faults())},
       {"noteCounts", result.findings.NoteCounts()},
       {"notes", ToJson(result.findings.Notes())},
       {"outputTroubles", result.troubles}});
  return report;
}

}  // namespace kvapp
