#include "view/Socket.h"

#include <array>
#include <utility>

#include <boost/asio/buffer.hpp>

#include "view/PageMessage.h"

namespace kvapp::view {

namespace beast = boost::beast;
namespace net = boost::asio;
namespace websocket = beast::websocket;
using boost::system::error_code;

namespace {

constexpr std::chrono::seconds kHandshakeTime{10};
constexpr std::chrono::seconds kSilence{120};
constexpr std::size_t kMostTold = 1024;

}  // namespace

Socket::Socket(Server& server, beast::tcp_stream stream, std::shared_ptr<void> ticket)
    : server_(server),
      number_(server.NextSocket()),
      ticket_(std::move(ticket)),
      stream_(std::move(stream)) {}

void Socket::Open(Server::Text request) {
  beast::get_lowest_layer(stream_).expires_never();
  stream_.set_option(websocket::stream_base::timeout{kHandshakeTime, kSilence, true});
  stream_.read_message_max(kMostMessageBytes);
  // A frame is written as it lies in memory, without a copy.
  stream_.auto_fragment(false);
  auto shared = std::make_shared<Server::Text>(std::move(request));
  stream_.async_accept(*shared, [self = shared_from_this(), shared](error_code error) {
    if (error) return;
    self->page_.emplace(self->server_.Shown());
    self->answers_.push_back(R"({"type":"hello","format":1,"session":")" + self->server_.Session() +
                             "\"}");
    self->server_.Add(self);
    self->Read();
    self->Pump();
  });
}

std::optional<Frame> Socket::NextFrame() {
  if (!answers_.empty()) {
    Frame frame{true, std::move(answers_.front()), nullptr, {}};
    answers_.pop_front();
    return frame;
  }
  auto frame = page_->Next();
  if (frame && page_->Sequence() > lastTold_) {
    lastTold_ = page_->Sequence();
    told_.push_back({lastTold_, server_.Shown().Taken()});
    if (told_.size() > kMostTold) told_.pop_front();
  }
  return frame;
}

void Socket::Pump() {
  if (writing_ || closing_) return;
  writing_ = NextFrame();
  if (!writing_) {
    if (ending_) Close(websocket::close_code::going_away);
    return;
  }
  stream_.text(writing_->text);
  const std::array<net::const_buffer, 3> buffers = {
      net::buffer(writing_->head), net::buffer(writing_->body[0].data(), writing_->body[0].size()),
      net::buffer(writing_->body[1].data(), writing_->body[1].size())};
  stream_.async_write(buffers, [self = shared_from_this()](error_code error, std::size_t) {
    self->writing_.reset();
    // The reader learns of it too.
    if (!error) self->Pump();
  });
}

void Socket::Read() {
  stream_.async_read(buffer_, [self = shared_from_this()](error_code error, std::size_t) {
    if (error) return self->server_.Remove(self->number_);
    if (!self->stream_.got_text()) {
      self->Close(websocket::close_code::unknown_data);
    } else {
      self->TakeMessage();
    }
    self->buffer_.consume(self->buffer_.size());
    self->Read();
  });
}

void Socket::TakeMessage() {
  if (closing_) return;
  const auto bytes = buffer_.data();
  PageMessage message = ParsePageMessage({static_cast<const char*>(bytes.data()), bytes.size()});
  std::visit([this](auto& taken) { Take(taken); }, message);
  Pump();
}

void Socket::Take(const PageAck& ack) {
  if (ack.sequence > lastTold_) return Take(PageFault{{}, "this sequence was not sent"});
  while (!told_.empty() && told_.front().sequence <= ack.sequence) {
    if (told_.front().sequence == ack.sequence) {
      server_.Calls().acknowledged(number_, ack, told_.front().taken);
    }
    told_.pop_front();
  }
}

void Socket::Take(PageRequest& message) {
  if (++requests_ > kMostRequests) {
    return Answer(
        RefusalText(message.id, message.request.code, "64 requests of this page wait already"));
  }
  server_.Calls().request(number_, std::move(message));
}

void Socket::Take(const PageFault& fault) {
  answers_.push_back(FaultText(fault));
  if (++faults_ >= kMostFaults) Close(websocket::close_code::policy_error);
}

void Socket::Answer(std::string text) {
  --requests_;
  answers_.push_back(std::move(text));
  Pump();
}

void Socket::End() {
  ending_ = true;
  Pump();
}

void Socket::Close(websocket::close_code code) {
  if (std::exchange(closing_, true)) return;
  stream_.async_close(code, [self = shared_from_this()](error_code) {});
}

}  // namespace kvapp::view
