#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/http.hpp>

#include "view/Mirror.h"
#include "view/PageFiles.h"
#include "view/PageMessage.h"

namespace kvapp::view {

class Socket;

// Listens on the loopback address, serves the page's files, and keeps its sockets. All of it runs
// on the thread of its context, except the constructor.
class Server {
 public:
  using Text = boost::beast::http::request<boost::beast::http::string_body>;
  using Response = boost::beast::http::response<boost::beast::http::string_body>;

  static constexpr std::size_t kMostConnections = 32;
  static constexpr std::size_t kMostSockets = 8;

  struct Handlers {
    std::function<void(std::uint64_t socket, PageRequest message)> request;
    std::function<void(std::uint64_t socket, const PageAck& ack,
                       std::chrono::steady_clock::time_point taken)>
        acknowledged;
    std::function<void(std::size_t sockets)> counted;
  };

  // Throws boost::system::system_error when the port cannot be had.
  Server(boost::asio::io_context& context, std::uint16_t port, std::string token,
         std::string session, std::map<std::string, PageFile> files, Handlers handlers);
  ~Server();

  std::uint16_t Port() const { return port_; }

  void Apply(std::vector<Step> steps);
  void Answer(std::uint64_t socket, std::string text);
  // Nobody can connect any more.
  void StopListening();
  // Sockets close as soon as their pages have everything; `counted` tells how many are left.
  void End();

  // For connections.
  const Mirror& Shown() const { return mirror_; }
  const std::string& Session() const { return session_; }
  const Handlers& Calls() const { return handlers_; }
  // What a request is answered; the status is 101 for one that becomes a socket.
  Response Respond(const Text& request) const;
  bool TakesSocket() const { return sockets_.size() < kMostSockets && !ending_; }
  void Add(const std::shared_ptr<Socket>& socket);
  void Remove(std::uint64_t socket);
  std::uint64_t NextSocket() { return ++lastSocket_; }

 private:
  void Accept();
  bool OwnHost(std::string_view host) const;

  boost::asio::ip::tcp::acceptor acceptor_;
  boost::asio::steady_timer pause_;
  std::uint16_t port_ = 0;
  std::string token_;
  std::string session_;
  std::map<std::string, PageFile> files_;
  Handlers handlers_;
  Mirror mirror_;
  std::map<std::uint64_t, std::shared_ptr<Socket>> sockets_;
  std::shared_ptr<std::size_t> connections_;  // outlives the server in pending handlers
  std::uint64_t lastSocket_ = 0;
  bool ending_ = false;
};

}  // namespace kvapp::view
