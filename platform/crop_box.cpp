#include "platform/crop_box.h"

#include <algorithm>
#include <cmath>

namespace qbpd {
namespace {

// The print sizes' minimum boxes, landscape: the long side, the short side.
struct PrintRule {
  int aspect_long;
  int aspect_short;
  double long_side;
  double short_side;
};
constexpr PrintRule kPrintRules[] = {
    {6, 4, 900, 600},     // 4 x 6
    {7, 5, 900, 600},     // 5 x 7
    {10, 8, 1280, 1024},  // 8 x 10
    {3, 2, 419, 279},     // wallets
};
constexpr PrintRule kSmallestPrint = kPrintRules[0];

// A box may miss its size by a rounding of its sides.
constexpr double kSlack = 1e-6;

}  // namespace

CropMinimum MinimumCropSize(int aspect_x, int aspect_y) {
  const bool landscape = aspect_x >= aspect_y;
  const int long_term = landscape ? aspect_x : aspect_y;
  const int short_term = landscape ? aspect_y : aspect_x;
  PrintRule rule = kSmallestPrint;
  for (const PrintRule& candidate : kPrintRules) {
    if (candidate.aspect_long == long_term &&
        candidate.aspect_short == short_term) {
      rule = candidate;
    }
  }
  return landscape ? CropMinimum{rule.long_side, rule.short_side}
                   : CropMinimum{rule.short_side, rule.long_side};
}

bool CropBoxTool::Start(int photo_w, int photo_h, int aspect_x, int aspect_y) {
  Reset();
  if (photo_w <= 0 || photo_h <= 0 || aspect_x <= 0 || aspect_y <= 0) {
    return false;
  }
  photo_w_ = photo_w;
  photo_h_ = photo_h;
  aspect_ = static_cast<double>(aspect_x) / aspect_y;
  minimum_ = MinimumCropSize(aspect_x, aspect_y);
  const double w = std::min(photo_w_, photo_h_ * aspect_);
  const double h = w / aspect_;
  if (w + kSlack < minimum_.w || h + kSlack < minimum_.h) {
    return false;
  }
  box_ = {(photo_w_ - w) / 2, (photo_h_ - h) / 2, w, h};
  active_ = true;
  return true;
}

void CropBoxTool::Reset() {
  active_ = false;
  box_ = {};
  grip_ = CropGrip::kNone;
}

CropGrip CropBoxTool::GripAt(double x, double y, double grip) const {
  if (!active_) {
    return CropGrip::kNone;
  }
  const double left = box_.x;
  const double top = box_.y;
  const double right = box_.x + box_.w;
  const double bottom = box_.y + box_.h;
  if (x < left - grip || x > right + grip || y < top - grip ||
      y > bottom + grip) {
    return CropGrip::kNone;
  }
  // On a small box the grips must not cover its whole inside.
  grip = std::min(grip, std::min(box_.w, box_.h) / 4);
  const bool near_left = std::fabs(x - left) <= grip;
  const bool near_right = std::fabs(x - right) <= grip;
  const bool near_top = std::fabs(y - top) <= grip;
  const bool near_bottom = std::fabs(y - bottom) <= grip;
  if (near_top && near_left) {
    return CropGrip::kTopLeft;
  }
  if (near_top && near_right) {
    return CropGrip::kTopRight;
  }
  if (near_bottom && near_left) {
    return CropGrip::kBottomLeft;
  }
  if (near_bottom && near_right) {
    return CropGrip::kBottomRight;
  }
  if (near_left) {
    return CropGrip::kLeft;
  }
  if (near_right) {
    return CropGrip::kRight;
  }
  if (near_top) {
    return CropGrip::kTop;
  }
  if (near_bottom) {
    return CropGrip::kBottom;
  }
  if (x > left && x < right && y > top && y < bottom) {
    return CropGrip::kMove;
  }
  return CropGrip::kNone;
}

bool CropBoxTool::Press(double x, double y, double grip) {
  grip_ = GripAt(x, y, grip);
  start_box_ = box_;
  start_x_ = x;
  start_y_ = y;
  return grip_ != CropGrip::kNone;
}

CropRect CropBoxTool::Anchored(double ax,
                               double ay,
                               int dir_x,
                               int dir_y,
                               double w) const {
  const double h = w / aspect_;
  CropRect box{0, 0, w, h};
  box.x = dir_x > 0 ? ax : dir_x < 0 ? ax - w : ax - w / 2;
  box.y = dir_y > 0 ? ay : dir_y < 0 ? ay - h : ay - h / 2;
  // A side that grows both ways stays on the photo by sliding.
  box.x = std::clamp(box.x, 0.0, std::max(0.0, photo_w_ - w));
  box.y = std::clamp(box.y, 0.0, std::max(0.0, photo_h_ - h));
  return box;
}

bool CropBoxTool::Drag(double x, double y) {
  if (!active_ || grip_ == CropGrip::kNone) {
    return false;
  }
  const CropRect& b = start_box_;
  if (grip_ == CropGrip::kMove) {
    box_.x = std::clamp(b.x + (x - start_x_), 0.0, photo_w_ - b.w);
    box_.y = std::clamp(b.y + (y - start_y_), 0.0, photo_h_ - b.h);
    return false;
  }
  // The side or corner held follows the pointer; the opposite one stays.
  // A side held alone keeps the box centred across it.
  int dir_x = 0;
  int dir_y = 0;
  switch (grip_) {
    case CropGrip::kLeft:
      dir_x = -1;
      break;
    case CropGrip::kRight:
      dir_x = 1;
      break;
    case CropGrip::kTop:
      dir_y = -1;
      break;
    case CropGrip::kBottom:
      dir_y = 1;
      break;
    case CropGrip::kTopLeft:
      dir_x = -1;
      dir_y = -1;
      break;
    case CropGrip::kTopRight:
      dir_x = 1;
      dir_y = -1;
      break;
    case CropGrip::kBottomLeft:
      dir_x = -1;
      dir_y = 1;
      break;
    case CropGrip::kBottomRight:
      dir_x = 1;
      dir_y = 1;
      break;
    case CropGrip::kNone:
    case CropGrip::kMove:
      return false;
  }
  const double ax = dir_x > 0 ? b.x : dir_x < 0 ? b.x + b.w : b.x + b.w / 2;
  const double ay = dir_y > 0 ? b.y : dir_y < 0 ? b.y + b.h : b.y + b.h / 2;
  // The width the pointer asks for, from each direction that is held.
  double wanted = 0;
  if (dir_x != 0) {
    wanted = std::max(wanted, (x - ax) * dir_x);
  }
  if (dir_y != 0) {
    wanted = std::max(wanted, (y - ay) * dir_y * aspect_);
  }
  const double room_x = dir_x > 0 ? photo_w_ - ax : dir_x < 0 ? ax : photo_w_;
  const double room_y = dir_y > 0 ? photo_h_ - ay : dir_y < 0 ? ay : photo_h_;
  const double most = std::min(room_x, room_y * aspect_);
  const double least = std::max(minimum_.w, minimum_.h * aspect_);
  const bool too_small = wanted + kSlack < least;
  const double w = std::clamp(wanted, std::min(least, most), most);
  box_ = Anchored(ax, ay, dir_x, dir_y, w);
  return too_small;
}

}  // namespace qbpd
