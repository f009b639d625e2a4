#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "app/Scene.h"
#include "view/Feed.h"
#include "view/PageMessage.h"

namespace kvapp::view {

struct ViewSettings {
  std::uint16_t port = 0;              // 0: any free one
  std::string token;                   // empty: a random one
  std::filesystem::path pageFolder;    // what is served
  std::filesystem::path outputFolder;  // of view.json and acks.jsonl; empty: they are not written
};

// What a page asks of the plug-in.
struct Inbound {
  std::uint64_t socket = 0;
  PageRequest message;
};

// The renderer's window: a server on a thread of its own, for pages that show what it is fed. Its
// methods are called by one thread, the channel's, and never wait for a page or the server, except
// Join.
class View {
 public:
  // Begins to listen. Throws std::exception with one sentence.
  View(ViewSettings settings, const Scene& scene, const Findings& findings);
  ~View();
  View(const View&) = delete;
  View& operator=(const View&) = delete;

  Feed& Changes();
  // Whether a page is connected.
  bool Watched() const;
  // What pages asked since the last call, in the order in which it came.
  std::vector<Inbound> TakeRequests();
  // Sends the answer to a request, and makes room for another one of that page.
  void Answer(std::uint64_t socket, std::string text);
  // The session has ended: pages are told, and nobody can connect any more.
  void Finish(const std::string& reason);
  // Waits until the pages have what they were sent, a second at most, and ends the server.
  void Join();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace kvapp::view
