#include "app/RequestSender.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <nlohmann/json.hpp>

#include "app/Fnv.h"

namespace kvapp {

namespace wire = quellix::wire;

namespace {

constexpr std::size_t kHeader = sizeof(wire::RequestHeader);
constexpr auto kCodeTooLarge = static_cast<std::uint32_t>(wire::RequestCode::ReplyTooLarge);

wire::RequestHeader ReadHeader(std::span<const std::byte> segment) {
  wire::RequestHeader header;
  std::memcpy(&header, segment.data(), sizeof header);
  return header;
}

}  // namespace

RequestSender::RequestSender(std::size_t segmentBytes, const std::filesystem::path& folder,
                             Findings& findings)
    // The plug-in opens the events first, so the segment must be there before they are.
    : segment_(SharedSegment::Create(wire::kToPluginSegment, segmentBytes)),
      ready_(EventPeer::Create(wire::kRequestReady)),
      done_(EventPeer::Create(wire::kRequestDone)),
      findings_(findings) {
  if (!folder.empty()) file_.open(folder / "requests.jsonl", std::ios::trunc);
}

void RequestSender::Post(Request request) {
  waiting_.push_back(std::move(request));
  Poll();
}

void RequestSender::PostNow(Request request) {
  const auto bytes = segment_.Bytes();
  std::memset(bytes.data(), request.fill.value_or(0), bytes.size());
  wire::RequestHeader header{};
  header.code = request.code;
  header.capacity = request.capacity.value_or(bytes.size());
  std::memcpy(bytes.data(), &header, sizeof header);
  const std::size_t dataBytes = std::min(request.data.size(), bytes.size() - kHeader);
  std::memcpy(bytes.data() + kHeader, request.data.data(), dataBytes);

  current_ = Current();
  current_->capacity = header.capacity;
  current_->command = command_;
  current_->written.assign(bytes.begin(), bytes.end());
  current_->request = std::move(request);
  current_->posted = std::chrono::steady_clock::now();
  ++posted_;
  if (!ready_.Set()) findings_.Fault("requestReady could not be set: its mutex is held");
}

void RequestSender::Poll() {
  if (current_ && done_.Wait(std::chrono::milliseconds(0)) == EventPeer::Outcome::Signaled) {
    done_.Reset();
    TakeAnswer();
  }
  if (!current_ && !waiting_.empty()) {
    Request next = std::move(waiting_.front());
    waiting_.pop_front();
    PostNow(std::move(next));
  }
}

bool RequestSender::WaitUntilIdle(std::chrono::milliseconds timeout,
                                  const std::function<bool()>& stop) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    Poll();
    if (Idle()) return true;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0 || stop()) return false;
    done_.Wait(std::min(left, std::chrono::milliseconds(10)));
  }
}

void RequestSender::TakeAnswer() {
  ++acknowledged_;
  const auto bytes = segment_.Bytes();
  const std::vector<std::byte> now(bytes.begin(), bytes.end());
  const wire::RequestHeader header = ReadHeader(now);
  std::uint64_t answerEnd = kHeader;
  if (header.code == kCodeTooLarge) {
    if (header.required <= current_->capacity) {
      findings_.Fault("request " + std::to_string(current_->request.code) +
                      " was answered as too large for " + std::to_string(current_->capacity) +
                      " bytes, but requires " + std::to_string(header.required));
    }
  } else if (header.required > 0) {
    answerEnd = header.required;
    if (answerEnd < kHeader || answerEnd > current_->capacity || answerEnd > now.size()) {
      findings_.Fault("the answer to request " + std::to_string(current_->request.code) +
                      " ends at " + std::to_string(answerEnd) + ", wanted 24 to " +
                      std::to_string(std::min<std::uint64_t>(current_->capacity, now.size())));
      answerEnd = std::clamp<std::uint64_t>(answerEnd, kHeader, now.size());
    }
  }
  CheckUntouched(now, answerEnd);
  const auto answer =
      std::span(now).subspan(kHeader, static_cast<std::size_t>(answerEnd) - kHeader);
  Log(true, header.code, header.required, answer);
  if (const auto& answered = current_->request.answered) {
    answered({true, header.code, header.required, answer});
  }
  current_.reset();
}

void RequestSender::CheckUntouched(std::span<const std::byte> now, std::uint64_t answerEnd) {
  const auto& before = current_->written;
  const auto differs = [&](std::size_t from, std::size_t to) {
    return std::memcmp(now.data() + from, before.data() + from, to - from) != 0;
  };
  const std::uint32_t code = ReadHeader(now).code;
  const bool codeChanged = code != current_->request.code && code != kCodeTooLarge;
  // capacity lies at 8 to 16, required after it.
  if (codeChanged || differs(8, 16) || differs(static_cast<std::size_t>(answerEnd), now.size())) {
    findings_.Fault("answering request " + std::to_string(current_->request.code) +
                    " changed bytes of the segment outside of the answer");
  }
}

void RequestSender::Log(bool acknowledged, std::uint32_t result, std::uint64_t required,
                        std::span<const std::byte> answer) {
  if (!file_.is_open()) return;
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - current_->posted;
  nlohmann::json line = {{"n", posted_},
                         {"code", current_->request.code},
                         {"capacity", current_->capacity},
                         {"command", current_->command},
                         {"acknowledged", acknowledged},
                         {"ms", elapsed.count()}};
  if (acknowledged) {
    line["result"] = result;
    line["required"] = required;
    line["answer"] = HexText(answer);
  }
  file_ << line.dump() << std::endl;
}

void RequestSender::Finish() {
  Poll();
  if (current_) {
    Log(false, 0, 0, {});
    if (current_->request.answered) current_->request.answered({});
  }
  current_.reset();
  waiting_.clear();
}

void RequestSender::RemoveNames() {
  ready_.RemoveName();
  done_.RemoveName();
  segment_.RemoveName();
}

}  // namespace kvapp
