#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include <boost/asio/io_context.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <nlohmann/json.hpp>

#include "PageModel.h"

namespace kvapp::test {

struct HttpAnswer {
  unsigned status = 0;
  std::string type;
  std::string body;
};

// Sends one request as it is given and returns the answer; status 0: the connection was closed
// without one.
HttpAnswer AskHttp(std::uint16_t port, const std::string& request);

// A page as the renderer sees it: a WebSocket that takes messages when it is told to. Every wait
// ends; a wait in vain throws std::runtime_error.
class Page {
 public:
  // `address` is what view.json holds.
  explicit Page(const nlohmann::json& address);

  // Takes the next message. False when the renderer closed the socket.
  bool Read();
  // Takes messages until the page has what the command of that number brought.
  void ReadTo(std::uint64_t sequence);
  // Takes messages until one that is no update comes, and returns it; null when the socket closed.
  nlohmann::json ReadOther();
  void Send(const std::string& text, bool binary = false);
  void Send(const nlohmann::json& message) { Send(message.dump()); }

  PageModel model;

 private:
  void Await(const bool& done);

  boost::asio::io_context context_;
  boost::beast::websocket::stream<boost::beast::tcp_stream> stream_;
  boost::beast::flat_buffer buffer_;
};

}  // namespace kvapp::test
