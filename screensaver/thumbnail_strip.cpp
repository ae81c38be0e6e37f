#include "screensaver/thumbnail_strip.h"

#include "core/application.h"
#include "core/quil_mod.h"

#include <filesystem>

namespace qbpd {
namespace {

constexpr int kThumbSide = 1500;
constexpr int kGap = 90;
constexpr int kScrollWidth = 255;
constexpr int kThumbnailSize = 85;
constexpr int kThumbnailQuality = 70;

}  // namespace

ThumbnailStrip::ThumbnailStrip(PictureBox& outer,
                               PictureBox& inner,
                               ControlArray<Thumbnail>& thumbs,
                               ScrollBar& scroll)
    : outer_(outer), inner_(inner), thumbs_(thumbs), scroll_(scroll) {}

void ThumbnailStrip::Place(int left, int top, int width, int height) {
  outer_.Move(left, top, width - kScrollWidth, height);
  inner_.SetContainer(outer_.Name());
  inner_.Move(0, 0, width - kScrollWidth, height);
  thumbs_[0].SetContainer(inner_.Name());
  thumbs_[0].Move(kGap, kGap, kThumbSide, kThumbSide);
  thumbs_[0].SetVisible(false);
  scroll_.Move(left + width - kScrollWidth, top, kScrollWidth, height);
  scroll_.SetVertical(true);
}

void ThumbnailStrip::Show(Application& app,
                          const std::vector<std::string>& photos) {
  const Session& s = app.session();
  for (int i = 1; i < count_; ++i) {
    if (thumbs_.Exists(i)) {
      thumbs_.Unload(i);
    }
  }
  count_ = static_cast<int>(photos.size());
  thumbs_[0].SetVisible(false);
  thumbs_[0].SetCheck(false, /*raise_event=*/false);
  thumbs_[0].LoadThumbnail("");
  const int column_width =
      (static_cast<int>(outer_.Width()) - kThumbSide * 2) / 3;
  for (int i = 0; i < count_; ++i) {
    Thumbnail& thumb = i == 0 ? thumbs_[0] : thumbs_.Load(i);
    thumb.Move(column_width + (i % 2) * (kThumbSide + column_width),
               kGap + (i / 2) * (kThumbSide + kGap), kThumbSide, kThumbSide);
    thumb.SetPhotoIndex(i);
    thumb.SetPhotoPath(photos[i]);
    thumb.SetToolTipText(FileNamePart(photos[i]));
    thumb.SetCheck(false, /*raise_event=*/false);
    const std::string file = PhotoThumbnailFile(s.gsThumbnailFolder, photos[i]);
    std::error_code error;
    if (std::filesystem::exists(file, error) ||
        app.images().GenerateThumbnailExt(photos[i], file, kThumbnailSize,
                                          kThumbnailQuality) == 1) {
      thumb.LoadThumbnail(file);
    } else {
      thumb.LoadThumbnail("");
    }
    thumb.SetVisible(true);
  }
  const int rows = (count_ + 1) / 2;
  const int height = rows * (kThumbSide + kGap) + kGap;
  inner_.SetHeight(std::max(height, static_cast<int>(outer_.Height())));
  inner_.SetTop(0);
  const int visible_rows =
      std::max(1, static_cast<int>(outer_.Height()) / (kThumbSide + kGap));
  const int extra = std::max(0, rows - visible_rows);
  scroll_.SetMin(0);
  scroll_.SetValue(0);
  scroll_.SetMax(extra);
  scroll_.SetLargeChange(visible_rows);
  scroll_.SetEnabled(extra > 0);
}

void ThumbnailStrip::Scrolled() {
  inner_.SetTop(-scroll_.Value() * (kThumbSide + kGap));
}

}  // namespace qbpd
