#ifndef QBPD_PLATFORM_SAVER_PLAYER_H_
#define QBPD_PLATFORM_SAVER_PLAYER_H_

#include "platform/saver_frames.h"

#include <functional>
#include <future>
#include <string>
#include <vector>

namespace qbpd {

// Decodes the photo at `path` upright (its EXIF orientation applied), scaled
// to fit inside `width` x `height` and centred on black. An empty frame when
// the photo can't be read or decoded (bounded as every photo decoding is).
using SaverDecoder =
    std::function<SaverFrame(const std::string& path, int width, int height)>;
SaverFrame DecodeSaverPhoto(const std::string& path, int width, int height);

// What a player plays.
struct SaverShow {
  std::vector<std::string> photos;
  // Seconds from the start of one photo to the start of the next.
  int interval_seconds = 10;
  // The transitions, taken in turn; none changes photos at once.
  std::vector<SaverTransition> transitions;
};

// The player of a screensaver on a screen of `width` x `height`: each photo
// stays up for the interval, and changes to the next (after the last, the
// first) by the next transition. The next photo is decoded ahead on another
// thread while one is on show; should it not be ready in time, the photo on
// show stays until it is (nothing waits on the drawing thread). A photo that
// can't be decoded is left out; with none, the screen stays black.
class SaverPlayer {
 public:
  SaverPlayer(SaverShow show,
              int width,
              int height,
              SaverDecoder decode = DecodeSaverPhoto);
  ~SaverPlayer();
  SaverPlayer(const SaverPlayer&) = delete;
  SaverPlayer& operator=(const SaverPlayer&) = delete;

  // The frame to show `ms` milliseconds after the start (calls come with
  // times that never go back).
  const SaverFrame& FrameAt(long long ms);

  // How long a change of photo takes at this interval.
  int TransitionMs() const { return transition_ms_; }
  // The photo on show (its index in the show), -1 before the first.
  int ShownPhoto() const { return shown_index_; }
  // Whether the last frame was a transition, and which.
  bool InTransition() const { return in_transition_; }
  SaverTransition Transition() const { return transition_; }
  // How many times a change was due while the next photo wasn't decoded.
  int LateCount() const { return late_; }
  // Whether the last frame waited for a photo still being decoded.
  bool Waiting() const { return waiting_; }
  // Blocks until the photo being decoded is ready (for pictures of a given
  // moment of a show; a screen never waits).
  void WaitForDecoding();

 private:
  // Starts decoding the photo after `index` (skipping none yet).
  void DecodeAhead(int index);
  // Takes the decoded photo when it is ready; false when it isn't yet.
  bool TakeDecoded();

  SaverShow show_;
  int width_;
  int height_;
  SaverDecoder decode_;
  int transition_ms_;
  SaverFrame shown_;
  SaverFrame next_;
  SaverFrame mixed_;
  int shown_index_ = -1;
  int next_index_ = -1;
  bool next_ready_ = false;
  std::future<SaverFrame> pending_;
  int pending_index_ = -1;
  // Photos that failed in a row; a whole round of them means none decodes.
  int failures_ = 0;
  long long shown_since_ = 0;
  long long transition_start_ = -1;
  bool in_transition_ = false;
  SaverTransition transition_ = SaverTransition::kFromCentre;
  int transitions_done_ = 0;
  int late_ = 0;
  bool late_counted_ = false;
  bool waiting_ = false;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_SAVER_PLAYER_H_
