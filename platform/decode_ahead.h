#ifndef QBPD_PLATFORM_DECODE_AHEAD_H_
#define QBPD_PLATFORM_DECODE_AHEAD_H_

#include "platform/forms/display_control.h"
#include "platform/rgb_picture.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qbpd {

// A photo view model that can decode the photos likely to come next on a
// thread of its own, so that showing one of them takes no decoding. It
// behaves as the model it is made over in every observable way: a photo
// decoded ahead is used only when its file is unchanged (the same
// FileIdentity) when it is asked for, and only when it loaded;
// anything else loads on the spot as the plain model would. Nothing is
// written; work for photos no longer wanted is thrown away.
class DecodeAheadDisplay : public DisplayControl {
 public:
  // The photos to have ready, most wanted first, fitted to the view's width
  // at the view size of now. Replaces the previous wish: photos no longer in
  // it are dropped (one already being decoded finishes and is then
  // dropped). Returns at once.
  virtual void DecodeAhead(std::vector<std::string> paths) = 0;
  // Waits until every wished photo is decoded (for tests and benchmarks).
  virtual void WaitUntilReady() = 0;
  // How many loads were served from a photo decoded ahead.
  virtual int LoadsDecodedAhead() const = 0;
};

// How the caller's thread waits for a decoding on another thread: it calls
// `done` until it answers true (Host::WaitUnnoticed in the desktop program).
// None blocks the thread plainly.
using DecodeWait = std::function<void(const std::function<bool()>& done)>;

// Runs `work` on a thread of its own while the caller waits through `wait`
// (plainly without one), and returns once it has run; on the caller's
// thread when no thread can be had. `work` must not throw.
void RunApart(const std::function<void()>& work, const DecodeWait& wait);

// A small picture that may stand in for the photo at `path` while it is
// decoded, only when the photo is certain to decode (see
// ImageOperations::CachedStandIn); nothing otherwise.
using StandInLookup =
    std::function<std::optional<RgbPicture>(const std::string& path)>;

// `make` makes the plain models: one for the view, one per photo decoded
// ahead and one per LoadPhoto (called on worker threads). LoadPhoto decodes
// on a thread of its own too, while the caller waits through `wait`: until
// it returns, the view keeps the photo it had, whole, and answers for it
// (a paint meanwhile shows the old photo, never part of the new one). With
// `stand_in`, a photo that has a stand-in loads at once: the stand-in is
// shown while the photo is decoded on the worker, and the decoded photo
// replaces it on the first call after it is there (Refining tells a
// widget to paint again); whatever needs the photo's own pixels waits for
// it. Every answer is the one a plain load would give. Null when `make`
// gives nothing.
std::unique_ptr<DecodeAheadDisplay> MakeDecodeAheadDisplay(
    std::function<std::shared_ptr<DisplayControl>()> make,
    DecodeWait wait = {},
    StandInLookup stand_in = {});

}  // namespace qbpd

#endif  // QBPD_PLATFORM_DECODE_AHEAD_H_
