#ifndef QBPD_SCREENSAVER_THUMBNAIL_STRIP_H_
#define QBPD_SCREENSAVER_THUMBNAIL_STRIP_H_

#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"

#include <string>
#include <vector>

namespace qbpd {

class Application;

// The strip of a screensaver's photos in its dialogs: thumbnails two a row
// in `inner`, which moves inside `outer` as `scroll` says. Member i of
// `thumbs` shows photo i with PhotoIndex i. A thumbnail is made (size 85,
// quality 70) into the thumbnail folder under the photo's file name +
// ".jpg", unless a file of that name is there.
class ThumbnailStrip {
 public:
  ThumbnailStrip(PictureBox& outer,
                 PictureBox& inner,
                 ControlArray<Thumbnail>& thumbs,
                 ScrollBar& scroll);
  // Places the parts in the form, at `left`, `top` with the given size.
  void Place(int left, int top, int width, int height);
  // Shows `photos` (paths), every check box clear.
  void Show(Application& app, const std::vector<std::string>& photos);
  // Follows the scroll bar.
  void Scrolled();
  int Count() const { return count_; }

 private:
  PictureBox& outer_;
  PictureBox& inner_;
  ControlArray<Thumbnail>& thumbs_;
  ScrollBar& scroll_;
  int count_ = 0;
};

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_THUMBNAIL_STRIP_H_
