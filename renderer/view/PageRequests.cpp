#include "view/PageRequests.h"

#include <algorithm>
#include <utility>

namespace kvapp::view {

using quellix::wire::RequestCode;

namespace {

bool Is(const PageRequest& message, RequestCode code) {
  return message.request.code == static_cast<std::uint32_t>(code);
}

}  // namespace

void PageRequests::Poll() {
  const auto now = Clock::now();
  for (Inbound& inbound : view_.TakeRequests()) Accept(std::move(inbound));
  GiveUp(now);
  PostNext(now);
}

void PageRequests::Accept(Inbound inbound) {
  Waiting next{inbound.socket, std::move(inbound.message), Clock::now() + kPatience, false};
  if (Is(next.message, RequestCode::CameraChanged)) {
    const auto last = std::find_if(waiting_.rbegin(), waiting_.rend(), [&](const Waiting& waiting) {
      return waiting.socket == next.socket;
    });
    if (last != waiting_.rend() && Is(last->message, RequestCode::CameraChanged)) {
      Refuse(*last, "a newer camera took its place");
      *last = std::move(next);
      return;
    }
  }
  waiting_.push_back(std::move(next));
}

void PageRequests::GiveUp(Clock::time_point now) {
  constexpr char kWhy[] = "the plug-in did not answer within 10 seconds";
  if (posted_ && !posted_->answered && now >= posted_->deadline) {
    Refuse(*posted_, kWhy);
    // A window that is closed closes, whether its host listens or not.
    if (Is(posted_->message, RequestCode::RendererQuit)) quit_ = false;
  }
  std::erase_if(waiting_, [&](Waiting& waiting) {
    if (now < waiting.deadline) return false;
    Refuse(waiting, kWhy);
    if (Is(waiting.message, RequestCode::RendererQuit)) quit_ = false;
    return true;
  });
}

void PageRequests::PostNext(Clock::time_point now) {
  if (posted_ || waiting_.empty() || !sender_.Idle()) return;
  if (Is(waiting_.front().message, RequestCode::CameraChanged)) {
    if (now < nextCamera_) return;
    nextCamera_ = now + kCameraInterval;
  }
  posted_ = std::move(waiting_.front());
  waiting_.pop_front();
  Request request = std::move(posted_->message.request);
  posted_->message.request.code = request.code;
  request.answered = [this](const RequestResult& result) { TakeResult(result); };
  sender_.Post(std::move(request));
}

void PageRequests::TakeResult(const RequestResult& result) {
  const std::uint32_t code = posted_->message.request.code;
  if (!posted_->answered) {
    view_.Answer(posted_->socket, AnswerText(posted_->message.id, code, result));
  }
  if (result.acknowledged && Is(posted_->message, RequestCode::RendererQuit)) quit_ = true;
  posted_.reset();
}

void PageRequests::Refuse(Waiting& request, const std::string& why) {
  request.answered = true;
  view_.Answer(request.socket, RefusalText(request.message.id, request.message.request.code, why));
}

void PageRequests::Finish() {
  for (Inbound& inbound : view_.TakeRequests()) Accept(std::move(inbound));
  for (Waiting& waiting : waiting_) Refuse(waiting, "the session ended");
  waiting_.clear();
}

}  // namespace kvapp::view
