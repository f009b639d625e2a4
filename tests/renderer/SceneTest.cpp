#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Bytes.h"
#include "app/Decoder.h"
#include "app/Findings.h"
#include "app/Scene.h"
#include "app/SceneJson.h"

// What the renderer shows after reloads, compared with what a fresh renderer shows after one
// export.

namespace kvapp::test {

using nlohmann::json;

namespace {

constexpr std::uint64_t kFront = 0xffffffff;
constexpr std::uint64_t kBack = 0xfffffffe;
constexpr std::uint64_t kFacing = 0x8000000000000000;

class Renderer {
 public:
  Renderer& Take(const Bytes& bytes) {
    Decoded decoded = Decode(bytes);
    EXPECT_EQ(decoded.problems, std::vector<std::string>{});
    scene_.Apply(std::move(decoded.command), ++commands_, decoded.messageBytes);
    return *this;
  }
  Renderer& Take(const std::vector<Bytes>& messages) {
    for (const Bytes& bytes : messages) Take(bytes);
    return *this;
  }
  // A whole export around the given content.
  Renderer& Export(const std::vector<Bytes>& content, const std::string& name = "House") {
    Take(TextCommand(14, name)).Take(TextCommand(16, "Exporting materials and surfaces..."));
    Take(ProgressCommand(0)).Take(content);
    Take(TextCommand(16, "Exporting lights...")).Take(lights_);
    return Take(TextCommand(16, "")).Take(ProgressCommand(0));
  }
  Renderer& WithLights(std::vector<Bytes> lights) {
    lights_ = std::move(lights);
    return *this;
  }

  json Shown() { return SceneToJson(scene_); }
  Scene& State() { return scene_; }
  std::uint64_t Faults() const { return findings_.FaultCount(); }
  std::uint64_t Notes(const std::string& kind) const {
    const auto found = findings_.NoteCounts().find(kind);
    return found == findings_.NoteCounts().end() ? 0 : found->second;
  }
  std::uint64_t AllNotes() const { return findings_.Notes().size(); }

 private:
  Findings findings_;
  Scene scene_{findings_};
  std::uint64_t commands_ = 0;
  std::vector<Bytes> lights_;
};

const Bytes kFrontMaterial = PlainMaterial(0, kFront, "DefaultFaceFrontColor", {1, 1, 1});
const Bytes kBackMaterial = PlainMaterial(1, kBack, "DefaultFaceBackColor", {0.6f, 0.6f, 0.7f});
const Reference kFrontReference{0, 0, kFront};
const Reference kBackReference{1, 0, kBack};

// Two definitions: 50 placed by owners 7 and 8, 60 by owner 9; red and green.
std::vector<Bytes> FirstExport() {
  return {kFrontMaterial,
          kBackMaterial,
          PlainMaterial(2, 20, "Red", {1, 0, 0}),
          PlainMaterial(3, 30, "Green", {0, 1, 0}),
          TriangleMesh(50, 7, 2, 1),
          Instance(50, 8, 4),
          TriangleMesh(60, 9, 3, 1, 2),
          TriangleMesh(70 | kFacing, 11, 3, 3)};
}

}  // namespace

TEST(Scene, AReloadWithReferencesShowsWhatAFreshExportShows) {
  struct Case {
    const char* name;
    std::vector<Bytes> reload;
    std::vector<Bytes> fresh;
    std::vector<Bytes> before;  // between the two exports
  };
  const std::vector<Bytes> first = FirstExport();
  const Case cases[] = {
      {"nothing changed",
       {TriangleMesh(70 | kFacing, 11, 3, 3),
        CachedMaterials({kFrontReference, kBackReference, {2, 0, 20}, {3, 0, 30}}),
        OwnerBatch({7, 8, 9})},
       first,
       {}},
      {"a material before the others moves all indexes",
       {PlainMaterial(2, 15, "Blue", {0, 0, 1}), TriangleMesh(80, 10, 2, 3),
        TriangleMesh(70 | kFacing, 11, 4, 4), OwnerBatch({7, 8, 9}),
        CachedMaterials({kFrontReference, kBackReference, {3, 0, 20}, {4, 0, 30}})},
       {kFrontMaterial, kBackMaterial, PlainMaterial(2, 15, "Blue", {0, 0, 1}),
        PlainMaterial(3, 20, "Red", {1, 0, 0}), PlainMaterial(4, 30, "Green", {0, 1, 0}),
        TriangleMesh(50, 7, 3, 1), Instance(50, 8, 4), TriangleMesh(60, 9, 4, 1, 2),
        TriangleMesh(80, 10, 2, 3), TriangleMesh(70 | kFacing, 11, 4, 4)},
       {}},
      {"a material gets a new colour, its owners are sent again",
       {PlainMaterial(2, 20, "Red", {0.5f, 0, 0}), TriangleMesh(50, 7, 2, 1), Instance(50, 8, 4),
        TriangleMesh(70 | kFacing, 11, 3, 3), OwnerBatch({9}),
        CachedMaterials({kFrontReference, kBackReference, {3, 0, 30}})},
       {kFrontMaterial, kBackMaterial, PlainMaterial(2, 20, "Red", {0.5f, 0, 0}),
        PlainMaterial(3, 30, "Green", {0, 1, 0}), TriangleMesh(50, 7, 2, 1), Instance(50, 8, 4),
        TriangleMesh(60, 9, 3, 1, 2), TriangleMesh(70 | kFacing, 11, 3, 3)},
       {}},
      {"a light power changed: only the reference says so",
       {TriangleMesh(70 | kFacing, 11, 3, 3), OwnerBatch({7, 8, 9}),
        CachedMaterials({kFrontReference, kBackReference, {2, 0.5f, 20}, {3, 0, 30}})},
       {kFrontMaterial, kBackMaterial, PlainMaterial(2, 20, "Red", {1, 0, 0}).F32(116, {0.5f}),
        PlainMaterial(3, 30, "Green", {0, 1, 0}), TriangleMesh(50, 7, 2, 1), Instance(50, 8, 4),
        TriangleMesh(60, 9, 3, 1, 2), TriangleMesh(70 | kFacing, 11, 3, 3)},
       {}},
      {"an owner moved",
       {TriangleMesh(70 | kFacing, 11, 3, 3), OwnerBatch({7, 8, 9}),
        CachedMaterials({kFrontReference, kBackReference, {2, 0, 20}, {3, 0, 30}})},
       {kFrontMaterial, kBackMaterial, PlainMaterial(2, 20, "Red", {1, 0, 0}),
        PlainMaterial(3, 30, "Green", {0, 1, 0}), TriangleMesh(50, 7, 2, 1), Instance(50, 8, 6),
        TriangleMesh(60, 9, 3, 1, 2), TriangleMesh(70 | kFacing, 11, 3, 3)},
       {MoveOwner(8, 6)}},
      {"an owner moved after the model data were cleared",
       {TriangleMesh(70 | kFacing, 11, 3, 3), OwnerBatch({7, 8, 9}),
        CachedMaterials({kFrontReference, kBackReference, {2, 0, 20}, {3, 0, 30}})},
       {kFrontMaterial, kBackMaterial, PlainMaterial(2, 20, "Red", {1, 0, 0}),
        PlainMaterial(3, 30, "Green", {0, 1, 0}), TriangleMesh(50, 7, 2, 1), Instance(50, 8, 6),
        TriangleMesh(60, 9, 3, 1, 2), TriangleMesh(70 | kFacing, 11, 3, 3)},
       {BareCommand(20), MoveOwner(8, 6)}},
      {"one of two owners of a definition is sent again: the other takes its new mesh",
       {TriangleMesh(50, 7, 3, 1), TriangleMesh(70 | kFacing, 11, 3, 3), OwnerBatch({8, 9}),
        CachedMaterials({kFrontReference, kBackReference, {2, 0, 20}, {3, 0, 30}})},
       {kFrontMaterial, kBackMaterial, PlainMaterial(2, 20, "Red", {1, 0, 0}),
        PlainMaterial(3, 30, "Green", {0, 1, 0}), TriangleMesh(50, 7, 3, 1), Instance(50, 8, 4),
        TriangleMesh(60, 9, 3, 1, 2), TriangleMesh(70 | kFacing, 11, 3, 3)},
       {}},
      {"an owner and a material are gone, a camera-facing placement too",
       {OwnerBatch({7, 8}), CachedMaterials({kFrontReference, kBackReference, {2, 0, 20}})},
       {kFrontMaterial, kBackMaterial, PlainMaterial(2, 20, "Red", {1, 0, 0}),
        TriangleMesh(50, 7, 2, 1), Instance(50, 8, 4)},
       {}},
      {"textures are counted anew: the same material comes under another key",
       {PlainMaterial(2, (4ull << 32) | 20, "Red", {1, 0, 0}), OwnerBatch({7, 8}),
        CachedMaterials({kFrontReference, kBackReference})},
       {kFrontMaterial, kBackMaterial, PlainMaterial(2, (4ull << 32) | 20, "Red", {1, 0, 0}),
        TriangleMesh(50, 7, 2, 1), Instance(50, 8, 4)},
       {}},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    Renderer reloaded, fresh;
    reloaded.WithLights({OmniLight(1, 5), SpotLight()}).Export(first);
    reloaded.Take(test.before).WithLights({OmniLight(2, 5)}).Export(test.reload);
    fresh.WithLights({OmniLight(2, 5)}).Export(test.fresh);
    EXPECT_EQ(reloaded.Shown(), fresh.Shown()) << json::diff(fresh.Shown(), reloaded.Shown());
    EXPECT_EQ(reloaded.Faults() + reloaded.AllNotes(), 0u);
    EXPECT_EQ(fresh.Faults() + fresh.AllNotes(), 0u);
  }
}

TEST(Scene, MaterialsMayComeAfterTheMeshesThatNameThem) {
  Renderer early, late;
  early.Export({kFrontMaterial, kBackMaterial, TriangleMesh(50, 7, 0, 1)});
  late.Export({TriangleMesh(50, 7, 0, 1), kBackMaterial, kFrontMaterial});
  EXPECT_EQ(early.Shown(), late.Shown());
  EXPECT_EQ(late.Faults(), 0u);
}

TEST(Scene, TellsWhatMayDangleFromWhatMayNot) {
  const Bytes image = ClassicMaterial(3, 99);
  struct Case {
    const char* name;
    std::vector<Bytes> content;
    std::uint64_t faults;
    const char* note;
  };
  const std::vector<Bytes> defaults = {kFrontMaterial, kBackMaterial};
  const auto with = [&](std::vector<Bytes> more) {
    more.insert(more.begin(), defaults.begin(), defaults.end());
    return more;
  };
  const Case cases[] = {
      {"a mesh that came out empty", with({Instance(50, 8)}), 0, "danglingMesh"},
      {"an owner that came out empty", with({OwnerBatch({5})}), 0, "danglingOwner"},
      {"an owner without a mesh is moved", with({MoveOwner(5, 1)}), 0, "danglingTransform"},
      {"an unread image, the last of all", with({TriangleMesh(50, 7, 2, 2)}), 0,
       "danglingMaterial"},
      {"an unread image before one that was read", with({image, TriangleMesh(50, 7, 2, 2)}), 0,
       "danglingMaterial"},
      {"definitions that share an id", with({TriangleMesh(50, 7, 0, 0), TriangleMesh(50, 8, 0, 0)}),
       0, "meshIdSentTwice"},
      {"a missing material before others",
       with({PlainMaterial(3, 30, "Green", {0, 1, 0}), TriangleMesh(50, 7, 2, 2)}), 1, nullptr},
      {"no default material", {kFrontMaterial, TriangleMesh(50, 7, 0, 1)}, 1, nullptr},
      {"an index out of all reason", with({TriangleMesh(50, 7, 0, 0xffffffff)}), 1, nullptr},
      {"a material that was never sent", with({CachedMaterials({{2, 0, 20}})}), 1, nullptr},
      {"a key sent twice", with({PlainMaterial(2, kFront, "Again", {1, 1, 1})}), 1, nullptr},
      {"an index given twice", with({PlainMaterial(1, 20, "Red", {1, 0, 0})}), 1, nullptr},
      {"one material under two indexes is no fault",
       with({PlainMaterial(2, 20, "Red", {1, 0, 0}), CachedMaterials({{3, 0, 20}}),
             TriangleMesh(50, 7, 3, 2)}),
       0, nullptr},
      {"an owner sent and referenced is no fault",
       with({TriangleMesh(50, 7, 0, 1), OwnerBatch({7, 7})}), 0, nullptr},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    Renderer renderer;
    renderer.Export(test.content);
    EXPECT_EQ(renderer.Faults(), test.faults);
    EXPECT_EQ(renderer.AllNotes(), test.note != nullptr ? 1u : 0u);
    if (test.note != nullptr) {
      EXPECT_EQ(renderer.Notes(test.note), 1u);
    }
  }
}

TEST(Scene, ShowsNoGhosts) {
  // Owner 7 comes out empty in the second export: nothing is sent for it, and the third names it.
  Renderer renderer;
  renderer.Export(
      {kFrontMaterial, kBackMaterial, TriangleMesh(50, 7, 0, 1), TriangleMesh(60, 9, 0, 1)});
  renderer.Export({CachedMaterials({kFrontReference, kBackReference}), OwnerBatch({9})});
  renderer.Export({CachedMaterials({kFrontReference, kBackReference}), OwnerBatch({9, 7})});
  EXPECT_EQ(renderer.State().PlacementCount(), 1u);
  EXPECT_EQ(renderer.Notes("danglingOwner"), 1u);
  // A mesh id of an earlier export that this one did not send is a mesh that is empty now.
  renderer.Export({CachedMaterials({kFrontReference, kBackReference}), Instance(60, 9, 5)});
  EXPECT_EQ(renderer.State().PlacementCount(), 0u);
  EXPECT_EQ(renderer.Notes("danglingMesh"), 1u);
  // Nothing is left after the model data were cleared, until an export brings it.
  renderer.Export({CachedMaterials({kFrontReference, kBackReference}), TriangleMesh(60, 9, 0, 1)});
  renderer.Take(BareCommand(20));
  EXPECT_EQ(renderer.State().PlacementCount(), 0u);
  EXPECT_EQ(renderer.Faults(), 0u);
}

TEST(Findings, PrintEachFaultOnceAndCountThemAll) {
  Findings findings;
  testing::internal::CaptureStderr();
  for (std::uint64_t command = 1; command <= 3; ++command) {
    findings.SetContext(command, "AppendMesh");
    findings.Fault("an index is wrong");
    findings.Fault("a text is wrong");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "KvApp: command 1 AppendMesh: an index is wrong\n"
            "KvApp: command 1 AppendMesh: a text is wrong\n");
  EXPECT_EQ(findings.FaultCount(), 6u);
  EXPECT_EQ(findings.Faults().size(), 6u);
}

TEST(Scene, KnowsExportsFromWhatScriptsSendBetween) {
  Renderer renderer;
  renderer.WithLights({OmniLight(1, 1)}).Export(FirstExport(), "First");
  const json before = renderer.Shown();
  // A name, messages and progress of a script's own.
  renderer.Take(TextCommand(14, "Renamed")).Take(TextCommand(16, "hello"));
  renderer.Take(TextCommand(16, "")).Take(ProgressCommand(0)).Take(Camera(3));
  json after = renderer.Shown();
  EXPECT_EQ(after["modelName"], "Renamed");
  EXPECT_EQ(after["camera"]["eye"][0], 3);
  after["modelName"] = before["modelName"];
  after["camera"] = before["camera"];
  EXPECT_EQ(after, before);
  ASSERT_EQ(renderer.State().Exports().size(), 1u);
  EXPECT_EQ(renderer.State().Exports()[0].meshesSent, 3u);
  EXPECT_EQ(renderer.State().Exports()[0].placementsSent, 4u);
  EXPECT_EQ(renderer.State().Exports()[0].firstCommand, 1u);

  // An export that broke off keeps what the one before it had, for the next to reference.
  renderer.Take({TextCommand(14, "Second"), TextCommand(16, "Exporting"), ProgressCommand(0),
                 TriangleMesh(60, 9, 3, 1, 3)});
  renderer.Export({TriangleMesh(70 | kFacing, 11, 3, 3), OwnerBatch({7, 8, 9}),
                   CachedMaterials({kFrontReference, kBackReference, {2, 0, 20}, {3, 0, 30}})},
                  "Third");
  EXPECT_EQ(renderer.State().PlacementCount(), 4u);
  EXPECT_EQ(renderer.State().Exports()[1].complete, false);
  EXPECT_EQ(renderer.State().Exports()[2].complete, true);
  EXPECT_EQ(renderer.Faults(), 0u);
}

}  // namespace kvapp::test
