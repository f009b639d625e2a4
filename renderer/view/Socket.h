#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/websocket/stream.hpp>

#include "view/PageState.h"
#include "view/Server.h"

namespace kvapp::view {

// One page's WebSocket: sends what the page lacks, one message after the other, and reads what it
// asks. What it has still to send is no more than a list of names, so a page that does not read
// costs nothing. The server's thread.
class Socket : public std::enable_shared_from_this<Socket> {
 public:
  static constexpr std::size_t kMostRequests = 64;
  static constexpr std::size_t kMostFaults = 100;

  // `ticket` is held as long as the connection is there.
  Socket(Server& server, boost::beast::tcp_stream stream, std::shared_ptr<void> ticket);

  void Open(Server::Text request);
  std::uint64_t Number() const { return number_; }
  void Mark(const std::vector<Part>& parts) { page_->Mark(parts); }
  // Sends what there is to send, if nothing is on its way.
  void Pump();
  void Answer(std::string text);
  // Closes once the page has everything.
  void End();

 private:
  void Read();
  void TakeMessage();
  void Take(const PageAck& ack);
  void Take(PageRequest& request);
  void Take(const PageFault& fault);
  std::optional<Frame> NextFrame();
  void Close(boost::beast::websocket::close_code code);

  struct Told {
    std::uint64_t sequence = 0;
    std::chrono::steady_clock::time_point taken;
  };

  Server& server_;
  std::uint64_t number_;
  std::shared_ptr<void> ticket_;
  boost::beast::websocket::stream<boost::beast::tcp_stream> stream_;
  boost::beast::flat_buffer buffer_;
  std::optional<PageState> page_;
  std::deque<std::string> answers_;
  std::deque<Told> told_;  // and not acknowledged
  std::uint64_t lastTold_ = 0;
  std::optional<Frame> writing_;
  std::size_t requests_ = 0;  // not answered yet, or whose answer is not sent yet
  std::size_t faults_ = 0;
  bool ending_ = false;
  bool closing_ = false;
};

}  // namespace kvapp::view
