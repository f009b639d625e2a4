#include <gtest/gtest.h>

#include "Bytes.h"
#include "PageModel.h"
#include "app/Decoder.h"
#include "app/Findings.h"
#include "app/Scene.h"
#include "view/Feed.h"
#include "view/Mirror.h"
#include "view/PageState.h"

// The hand-over from the channel's thread to the server's, without either thread.

namespace kvapp::test {

namespace {

class Renderer {
 public:
  Renderer() : feed(scene_, findings_, [this] { ++wakes; }) {
    scene_.WatchBy(&feed);
    scene_.OnExportEnd([this](std::uint64_t) { feed.ExportEnded(); });
  }

  void Take(const Bytes& bytes) {
    Decoded decoded = Decode(bytes);
    for (const std::string& problem : decoded.problems) findings_.Fault(problem);
    const bool sound = decoded.problems.empty();
    if (sound) scene_.Apply(std::move(decoded.command), ++commands_, decoded.messageBytes);
    feed.Commit(commands_, static_cast<quellix::wire::CommandId>(decoded.id));
  }
  void HandOver() {
    for (view::Step& step : feed.Take()) mirror.Apply(std::move(step));
  }
  // What a page sees that connects now.
  nlohmann::json Seen() const {
    PageModel model;
    view::PageState page(mirror);
    while (const auto frame = page.Next()) {
      std::string bytes = frame->head;
      for (const auto& part : frame->body) {
        bytes.append(reinterpret_cast<const char*>(part.data()), part.size());
      }
      frame->text ? model.TakeText(bytes) : model.TakeBinary(std::as_bytes(std::span(bytes)));
    }
    nlohmann::json seen = model.Seen();
    seen.erase("lastExport");  // it has a time
    return seen;
  }

 private:
  Findings findings_;
  Scene scene_{findings_};
  std::uint64_t commands_ = 0;

 public:
  int wakes = 0;
  view::Feed feed;
  view::Mirror mirror;
};

}  // namespace

// A server that takes nothing for long has a bounded queue, and misses nothing in the end: in the
// middle of an export, and at rest.
TEST(Feed, WhatFoundNoRoomIsMadeGood) {
  Renderer prompt, late;
  const auto both = [&](const Bytes& command) {
    prompt.Take(command);
    prompt.HandOver();
    late.Take(command);
  };
  const auto open = [&] {
    both(TextCommand(14, "House"));
    both(TextCommand(16, "Exporting materials and surfaces..."));
    both(ProgressCommand(0));
    both(PlainMaterial(0, 0xffffffff, "Front", {1, 1, 1}));
    both(PlainMaterial(1, 0xfffffffe, "Back", {1, 1, 1}));
  };
  const auto close = [&] {
    both(TextCommand(16, "Exporting lights..."));
    both(OmniLight(1, 10));
    both(TextCommand(16, ""));
    both(ProgressCommand(0));
  };
  const auto overflow = [&] {
    for (std::size_t i = 0; i < view::Feed::kMostSteps; ++i)
      both(MoveOwner(7, static_cast<float>(i)));
  };
  open();
  both(TriangleMesh(50, 7, 0, 1));
  both(TriangleMesh(51, 8, 0, 1));
  close();
  open();
  both(TriangleMesh(52, 7, 0, 2));
  overflow();
  both(ClassicMaterial(2, 70));
  both(ProgressCommand(3));
  both(Instance(52, 9));
  EXPECT_EQ(late.wakes, 1);
  late.HandOver();
  EXPECT_NE(late.Seen(), prompt.Seen()) << "the queue held it all; the test is none";
  late.feed.AtRest();
  EXPECT_EQ(late.wakes, 2);
  late.HandOver();
  EXPECT_EQ(late.Seen(), prompt.Seen());
  EXPECT_TRUE(prompt.Seen()["owners"].contains("8")) << "it is there until the export ends";

  overflow();
  both(TriangleMesh(53, 10, 2, 1));
  close();
  late.HandOver();
  both(Camera(5));
  late.HandOver();
  EXPECT_EQ(late.Seen(), prompt.Seen());
  EXPECT_FALSE(prompt.Seen()["owners"].contains("8"));
}

}  // namespace kvapp::test
