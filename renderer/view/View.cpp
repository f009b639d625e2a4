#include "view/View.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/post.hpp>

#include "app/Fnv.h"
#include "app/Paths.h"
#include "view/PageFiles.h"
#include "view/Server.h"

namespace kvapp::view {

namespace net = boost::asio;
using nlohmann::json;

namespace {

constexpr std::chrono::seconds kEndTime{1};

std::string RandomDigits(std::size_t bytes) {
  std::random_device random;
  std::string text;
  while (text.size() < bytes * 2) {
    const std::uint32_t value = random();
    text += HexText(std::as_bytes(std::span(&value, 1)));
  }
  text.resize(bytes * 2);
  return text;
}

double Seconds(std::chrono::steady_clock::time_point time) {
  return std::chrono::duration<double>(time.time_since_epoch()).count();
}

}  // namespace

class View::Implementation {
 public:
  Implementation(ViewSettings settings, const Scene& scene, const Findings& findings)
      : token_(settings.token.empty() ? RandomDigits(16) : std::move(settings.token)),
        session_(RandomDigits(8)),
        server_(context_, settings.port, token_, session_, ReadPageFiles(settings.pageFolder),
                MakeHandlers()),
        endTimer_(context_),
        feed_(scene, findings, [this] { Post([this] { server_.Apply(feed_.Take()); }); }) {
    WriteAddress(settings.outputFolder);
    thread_ = std::thread([this] { Run(); });
  }

  ~Implementation() { Join(); }

  Feed& Changes() { return feed_; }
  bool Watched() const { return socketCount_ > 0; }

  std::vector<Inbound> TakeRequests() {
    const std::lock_guard lock(mutex_);
    return std::exchange(requests_, {});
  }

  void Answer(std::uint64_t socket, std::string text) {
    Post([this, socket, text = std::move(text)]() mutable {
      server_.Answer(socket, std::move(text));
    });
  }

  void Finish(const std::string& reason) {
    feed_.SessionEnded(reason);
    Post([this] { server_.StopListening(); });
  }

  void Join() {
    if (!thread_.joinable()) return;
    Post([this] {
      ending_ = true;
      endTimer_.expires_after(kEndTime);
      endTimer_.async_wait([this](boost::system::error_code) { context_.stop(); });
      server_.StopListening();
      server_.Apply(feed_.Take());
      server_.End();
    });
    thread_.join();
  }

 private:
  template <class Work>
  void Post(Work work) {
    net::post(context_, std::move(work));
  }

  Server::Handlers MakeHandlers() {
    return {[this](std::uint64_t socket, PageRequest message) {
              const std::lock_guard lock(mutex_);
              requests_.push_back({socket, std::move(message)});
            },
            [this](std::uint64_t socket, const PageAck& ack,
                   std::chrono::steady_clock::time_point taken) {
              if (!acks_.is_open()) return;
              acks_ << json({{"socket", socket},
                             {"sequence", ack.sequence},
                             {"taken", Seconds(taken)},
                             {"acknowledged", Seconds(std::chrono::steady_clock::now())}})
                           .dump()
                    << std::endl;
            },
            [this](std::size_t sockets) {
              socketCount_ = sockets;
              if (sockets == 0 && ending_) context_.stop();
            }};
  }

  void WriteAddress(const std::filesystem::path& folder) {
    const std::string address =
        "http://127.0.0.1:" + std::to_string(server_.Port()) + "/" + token_ + "/";
    std::fprintf(stderr, "KvApp: the page is at %s\n", address.c_str());
    if (folder.empty()) return;
    acks_.open(folder / "acks.jsonl", std::ios::trunc);
    const auto part = folder / "view.json.part";
    std::ofstream stream(part, std::ios::trunc);
    std::filesystem::permissions(
        part, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    stream << json({{"address", address},
                    {"port", server_.Port()},
                    {"token", token_},
                    {"session", session_}})
                  .dump()
           << '\n';
    stream.close();
    std::filesystem::rename(part, folder / "view.json");
  }

  // A handler that throws has met its limit of memory; the others go on.
  void Run() {
    for (;;) {
      try {
        context_.run();
        return;
      } catch (const std::exception& error) {
        std::fprintf(stderr, "KvApp: the page's server: %s\n", error.what());
      }
    }
  }

  std::string token_;
  std::string session_;
  std::mutex mutex_;
  std::vector<Inbound> requests_;
  std::atomic<std::size_t> socketCount_{0};
  bool ending_ = false;  // the server's thread
  std::ofstream acks_;
  net::io_context context_{1};
  net::executor_work_guard<net::io_context::executor_type> work_{context_.get_executor()};
  Server server_;
  net::steady_timer endTimer_;
  Feed feed_;
  std::thread thread_;
};

View::View(ViewSettings settings, const Scene& scene, const Findings& findings) {
  const std::uint16_t port = settings.port;
  try {
    implementation_ = std::make_unique<Implementation>(std::move(settings), scene, findings);
  } catch (const boost::system::system_error& error) {
    throw std::runtime_error("the page cannot be served at port " + std::to_string(port) + ": " +
                             error.code().message());
  }
}

View::~View() = default;

Feed& View::Changes() {
  return implementation_->Changes();
}

bool View::Watched() const {
  return implementation_->Watched();
}

std::vector<Inbound> View::TakeRequests() {
  return implementation_->TakeRequests();
}

void View::Answer(std::uint64_t socket, std::string text) {
  implementation_->Answer(socket, std::move(text));
}

void View::Finish(const std::string& reason) {
  implementation_->Finish(reason);
}

void View::Join() {
  implementation_->Join();
}

}  // namespace kvapp::view
