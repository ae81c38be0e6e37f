#include "platform/saver_player.h"

#include <algorithm>
#include <chrono>

namespace qbpd {
namespace {

// A change of photo takes this long, or half the interval when that is
// shorter.
constexpr int kTransitionMs = 1500;
constexpr int kMsPerSecond = 1000;

}  // namespace

SaverPlayer::SaverPlayer(SaverShow show,
                         int width,
                         int height,
                         SaverDecoder decode)
    : show_(std::move(show)),
      width_(std::max(1, width)),
      height_(std::max(1, height)),
      decode_(std::move(decode)) {
  show_.interval_seconds = std::max(1, show_.interval_seconds);
  transition_ms_ =
      std::min(kTransitionMs, show_.interval_seconds * kMsPerSecond / 2);
  shown_ = SaverFrame::Black(width_, height_);
  if (!show_.photos.empty()) {
    DecodeAhead(-1);
  }
}

SaverPlayer::~SaverPlayer() {
  if (pending_.valid()) {
    pending_.wait();
  }
}

void SaverPlayer::DecodeAhead(int index) {
  const int count = static_cast<int>(show_.photos.size());
  pending_index_ = (index + 1) % count;
  pending_ =
      std::async(std::launch::async,
                 [decode = decode_, path = show_.photos[pending_index_],
                  w = width_, h = height_] { return decode(path, w, h); });
}

bool SaverPlayer::TakeDecoded() {
  if (next_ready_) {
    return true;
  }
  while (pending_.valid() && pending_.wait_for(std::chrono::seconds(0)) ==
                                 std::future_status::ready) {
    SaverFrame frame = pending_.get();
    const int index = pending_index_;
    if (!frame.empty()) {
      failures_ = 0;
      next_ = std::move(frame);
      next_index_ = index;
      next_ready_ = true;
      return true;
    }
    // Left out; the one after it is tried, unless a whole round failed.
    if (++failures_ >= static_cast<int>(show_.photos.size())) {
      return false;
    }
    DecodeAhead(index);
  }
  return false;
}

void SaverPlayer::WaitForDecoding() {
  if (pending_.valid()) {
    pending_.wait();
  }
}

const SaverFrame& SaverPlayer::FrameAt(long long ms) {
  in_transition_ = false;
  waiting_ = false;
  if (shown_index_ < 0) {
    // The first photo comes in as soon as it is decoded, by a plain cut.
    waiting_ = pending_.valid();
    if (TakeDecoded()) {
      waiting_ = false;
      std::swap(shown_, next_);
      shown_index_ = next_index_;
      next_ready_ = false;
      shown_since_ = ms;
      if (show_.photos.size() > 1) {
        DecodeAhead(shown_index_);
      }
    }
    return shown_;
  }
  if (show_.photos.size() < 2) {
    return shown_;
  }
  const int tms = show_.transitions.empty() ? 0 : transition_ms_;
  const long long due =
      shown_since_ + show_.interval_seconds * kMsPerSecond - tms;
  if (ms < due) {
    return shown_;
  }
  if (transition_start_ < 0) {
    if (!TakeDecoded()) {
      waiting_ = pending_.valid();
      if (!late_counted_) {
        ++late_;
        late_counted_ = true;
      }
      return shown_;
    }
    late_counted_ = false;
    transition_start_ = ms;
    if (!show_.transitions.empty()) {
      transition_ =
          show_.transitions[transitions_done_ % show_.transitions.size()];
    }
  }
  const double progress =
      tms > 0 ? static_cast<double>(ms - transition_start_) / tms : 1.0;
  if (progress >= 1.0) {
    std::swap(shown_, next_);
    shown_index_ = next_index_;
    next_ready_ = false;
    shown_since_ = transition_start_ + tms;
    transition_start_ = -1;
    ++transitions_done_;
    DecodeAhead(shown_index_);
    return shown_;
  }
  in_transition_ = true;
  DrawSaverTransition(transition_, shown_, next_, progress, mixed_);
  return mixed_;
}

}  // namespace qbpd
