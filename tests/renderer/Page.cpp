#include "Page.h"

#include <chrono>
#include <stdexcept>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http.hpp>

namespace kvapp::test {

namespace beast = boost::beast;
namespace http = beast::http;
namespace net = boost::asio;
using boost::system::error_code;
using net::ip::tcp;
using nlohmann::json;

namespace {

constexpr std::chrono::seconds kPatience{20};

tcp::endpoint Loopback(std::uint16_t port) {
  return {net::ip::address_v4::loopback(), port};
}

}  // namespace

HttpAnswer AskHttp(std::uint16_t port, const std::string& request) {
  net::io_context context;
  tcp::socket socket(context);
  socket.connect(Loopback(port));
  error_code error;
  net::write(socket, net::buffer(request), error);
  beast::flat_buffer buffer;
  http::response_parser<http::string_body> parser;
  if (request.starts_with("HEAD")) parser.skip(true);
  http::read(socket, buffer, parser, error);
  if (error) return {};
  auto& answer = parser.get();
  const auto type = answer[http::field::content_type];
  return {answer.result_int(), {type.data(), type.size()}, answer.body()};
}

Page::Page(const json& address) : stream_(context_) {
  const std::string host = "127.0.0.1:" + std::to_string(address["port"].get<unsigned>());
  beast::get_lowest_layer(stream_).connect(Loopback(address["port"]));
  stream_.set_option(
      beast::websocket::stream_base::decorator([host](beast::websocket::request_type& request) {
        request.set(http::field::origin, "http://" + host);
      }));
  stream_.read_message_max(0);
  stream_.handshake(host, "/" + address["token"].get<std::string>() + "/socket");
}

void Page::Await(const bool& done) {
  context_.restart();
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!done && std::chrono::steady_clock::now() < deadline) context_.run_one_until(deadline);
  if (!done) throw std::runtime_error("the renderer sent nothing for 20 seconds");
}

bool Page::Read() {
  bool done = false;
  error_code result;
  stream_.async_read(buffer_, [&](error_code error, std::size_t) {
    done = true;
    result = error;
  });
  Await(done);
  if (result) return false;
  const auto bytes = buffer_.data();
  const std::span<const std::byte> content(static_cast<const std::byte*>(bytes.data()),
                                           bytes.size());
  if (stream_.got_text()) {
    model.TakeText({reinterpret_cast<const char*>(content.data()), content.size()});
  } else {
    model.TakeBinary(content);
  }
  buffer_.consume(buffer_.size());
  return true;
}

void Page::ReadTo(std::uint64_t sequence) {
  while (model.Sequence() < sequence) {
    if (!Read()) throw std::runtime_error("the renderer closed the socket");
  }
}

json Page::ReadOther() {
  auto& others = model.Others();
  while (others.empty()) {
    if (!Read()) return nullptr;
  }
  json first = others.front();
  others.erase(others.begin());
  return first;
}

void Page::Send(const std::string& text, bool binary) {
  stream_.binary(binary);
  error_code ignored;
  stream_.write(net::buffer(text), ignored);
}

}  // namespace kvapp::test
