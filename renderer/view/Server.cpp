#include "view/Server.h"

#include <utility>

#include <boost/asio/ip/address_v4.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include "app/Platform.h"
#include "view/Socket.h"

namespace kvapp::view {

namespace beast = boost::beast;
namespace http = beast::http;
namespace net = boost::asio;
using boost::system::error_code;
using net::ip::tcp;

namespace {

constexpr std::chrono::seconds kRequestTime{10};
constexpr std::chrono::milliseconds kAcceptPause{100};
constexpr std::uint32_t kMostHeaderBytes = 8 << 10;
constexpr std::uint64_t kMostBodyBytes = 1 << 10;

// Reads one request of HTTP, and answers it or becomes a socket.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(Server& server, tcp::socket socket, std::shared_ptr<void> ticket)
      : server_(server), ticket_(std::move(ticket)), stream_(std::move(socket)) {
    parser_.header_limit(kMostHeaderBytes);
    parser_.body_limit(kMostBodyBytes);
  }

  void Run() {
    stream_.expires_after(kRequestTime);
    http::async_read(stream_, buffer_, parser_,
                     [self = shared_from_this()](error_code error, std::size_t) {
                       if (!error) self->Respond();
                     });
  }

 private:
  void Respond() {
    response_ = server_.Respond(parser_.get());
    if (response_.result() == http::status::switching_protocols) {
      std::make_shared<Socket>(server_, std::move(stream_), std::move(ticket_))
          ->Open(parser_.release());
      return;
    }
    stream_.expires_after(kRequestTime);
    http::async_write(stream_, response_, [self = shared_from_this()](error_code, std::size_t) {
      error_code ignored;
      self->stream_.socket().shutdown(tcp::socket::shutdown_send, ignored);
    });
  }

  Server& server_;
  std::shared_ptr<void> ticket_;
  beast::tcp_stream stream_;
  beast::flat_buffer buffer_{kMostHeaderBytes + kMostBodyBytes};
  http::request_parser<http::string_body> parser_;
  Server::Response response_;
};

// Takes the same time wherever the two differ.
bool SameSecret(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    difference |= static_cast<unsigned>(static_cast<unsigned char>(a[i] ^ b[i]));
  }
  return difference == 0;
}

Server::Response Refusal(http::status status) {
  Server::Response response(status, 11);
  response.set(http::field::content_type, "text/plain; charset=utf-8");
  response.body() = std::string(http::obsolete_reason(status)) + "\n";
  return response;
}

std::string_view View(beast::string_view text) {
  return {text.data(), text.size()};
}

}  // namespace

Server::Server(net::io_context& context, std::uint16_t port, std::string token, std::string session,
               std::map<std::string, PageFile> files, Handlers handlers)
    : acceptor_(context),
      pause_(context),
      token_(std::move(token)),
      session_(std::move(session)),
      files_(std::move(files)),
      handlers_(std::move(handlers)),
      connections_(std::make_shared<std::size_t>(0)) {
  const tcp::endpoint endpoint(net::ip::address_v4::loopback(), port);
  acceptor_.open(endpoint.protocol());
#ifndef _WIN32
  // There the option would let others take the port away.
  acceptor_.set_option(tcp::acceptor::reuse_address(true));
#endif
  KeepFromChildren(static_cast<std::intptr_t>(acceptor_.native_handle()));
  acceptor_.bind(endpoint);
  acceptor_.listen();
  port_ = acceptor_.local_endpoint().port();
  Accept();
}

Server::~Server() = default;

void Server::Accept() {
  acceptor_.async_accept([this](error_code error, tcp::socket socket) {
    if (error == net::error::operation_aborted || !acceptor_.is_open()) return;
    if (!error) {
      KeepFromChildren(static_cast<std::intptr_t>(socket.native_handle()));
      if (*connections_ < kMostConnections) {
        ++*connections_;
        const std::shared_ptr<void> ticket(connections_.get(),
                                           [count = connections_](void*) { --*count; });
        std::make_shared<Connection>(*this, std::move(socket), ticket)->Run();
      }
      return Accept();
    }
    // Without descriptors left the same error would come again at once.
    pause_.expires_after(kAcceptPause);
    pause_.async_wait([this](error_code cancelled) {
      if (!cancelled) Accept();
    });
  });
}

bool Server::OwnHost(std::string_view host) const {
  const std::size_t colon = host.find(':');
  if (colon == host.npos || host.substr(colon + 1) != std::to_string(port_)) return false;
  const std::string_view name = host.substr(0, colon);
  return name == "127.0.0.1" || name == "localhost";
}

Server::Response Server::Respond(const Text& request) const {
  const auto plain = [&] {
    if (request.count(http::field::host) != 1 || !OwnHost(View(request[http::field::host]))) {
      return Refusal(http::status::forbidden);
    }
    const std::string_view origin = View(request[http::field::origin]);
    const bool upgrade = beast::websocket::is_upgrade(request);
    constexpr std::string_view kScheme = "http://";
    if ((upgrade || request.count(http::field::origin) > 0) &&
        !(origin.starts_with(kScheme) && OwnHost(origin.substr(kScheme.size())))) {
      return Refusal(http::status::forbidden);
    }
    std::string_view target = View(request.target());
    target = target.substr(0, target.find('?'));
    if (target.size() < token_.size() + 2 || target[0] != '/' || target[token_.size() + 1] != '/' ||
        !SameSecret(target.substr(1, token_.size()), token_)) {
      return Refusal(http::status::forbidden);
    }
    if (request.method() != http::verb::get && request.method() != http::verb::head) {
      return Refusal(http::status::method_not_allowed);
    }
    const std::string name(target.substr(token_.size() + 2));
    if (name == "socket") {
      if (!upgrade) return Refusal(http::status::upgrade_required);
      return Refusal(TakesSocket() ? http::status::switching_protocols
                                   : http::status::service_unavailable);
    }
    const auto file = files_.find(name.empty() ? "index.html" : name);
    if (file == files_.end()) return Refusal(http::status::not_found);
    Response response(http::status::ok, 11);
    response.set(http::field::content_type, file->second.type);
    response.body() = file->second.content;
    return response;
  };
  Response response = plain();
  response.set(http::field::cache_control, "no-store");
  response.set("X-Content-Type-Options", "nosniff");
  response.set("Referrer-Policy", "no-referrer");
  response.set("Content-Security-Policy",
               "default-src 'self' data: blob:; script-src 'self' 'unsafe-inline'; "
               "style-src 'self' 'unsafe-inline'; frame-ancestors 'none'; base-uri 'none'");
  response.keep_alive(false);
  response.content_length(response.body().size());
  if (request.method() == http::verb::head) response.body().clear();
  return response;
}

void Server::Apply(std::vector<Step> steps) {
  for (Step& step : steps) mirror_.Apply(std::move(step));
  const std::vector<Part> changed = mirror_.TakeChanged();
  for (const auto& [number, socket] : sockets_) {
    socket->Mark(changed);
    socket->Pump();
  }
}

void Server::Answer(std::uint64_t socket, std::string text) {
  const auto found = sockets_.find(socket);
  if (found != sockets_.end()) found->second->Answer(std::move(text));
}

void Server::Add(const std::shared_ptr<Socket>& socket) {
  sockets_[socket->Number()] = socket;
  handlers_.counted(sockets_.size());
}

void Server::Remove(std::uint64_t socket) {
  sockets_.erase(socket);
  handlers_.counted(sockets_.size());
}

void Server::StopListening() {
  error_code ignored;
  acceptor_.close(ignored);
  pause_.cancel();
}

void Server::End() {
  ending_ = true;
  handlers_.counted(sockets_.size());
  for (const auto& [number, socket] : sockets_) socket->End();
}

}  // namespace kvapp::view
