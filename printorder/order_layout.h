#ifndef QBPD_PRINTORDER_ORDER_LAYOUT_H_
#define QBPD_PRINTORDER_ORDER_LAYOUT_H_

#include <string_view>

// The geometry of the order dialog in twips and the pictures of its
// buttons, shared by its step files.
namespace qbpd::order_layout {

inline constexpr int kFormWidth = 11400;
inline constexpr int kFormHeight = 8400;
inline constexpr int kFrameY = 600;
inline constexpr int kFrameHeight = 7500;
inline constexpr int kLeftFrameX = 120;
inline constexpr int kLeftFrameWidth = 3480;
inline constexpr int kRightFrameX = 3720;
inline constexpr int kRightFrameWidth = 7560;

// Step 1's slots: a slot is four rows high; the photo on its left.
inline constexpr int kSlotTop = 360;
inline constexpr int kRowHeight = 360;
inline constexpr int kSlotHeight = 4 * kRowHeight + 120;
inline constexpr int kSlotLeft = 120;
inline constexpr int kSlotWidth = 6960;
inline constexpr int kPhotoWidth = 1620;
inline constexpr int kBoxInset = 90;
inline constexpr int kRemoveHeight =
    300;  // the picture sits 90 inside the slot
inline constexpr int kSummaryTop = kSlotTop + 2 * kSlotHeight + 480;
inline constexpr int kSummaryGap = 60;
inline constexpr int kLineHeight = 195;

// The button pictures: the numbered ones of the picture set, and words
// for the buttons the set has no picture of (the desktop shows the word).
inline constexpr std::string_view kCancelButton = "25";
inline constexpr std::string_view kBuyNowButton = "36";
inline constexpr std::string_view kContinueButton = "continue";
inline constexpr std::string_view kBackButton = "back";
inline constexpr std::string_view kUpdateButton = "update total";
inline constexpr std::string_view kClearButton = "clear sizes";
inline constexpr std::string_view kEditInfoButton = "edit info";
inline constexpr std::string_view kRemoveButton = "remove";
inline constexpr std::string_view kUpButton = "+";
inline constexpr std::string_view kDownButton = "-";

// The shading of a slot: back colour, line colour, marker picture.
struct Shading {
  long back;
  long lines;
  std::string_view marker;
};
inline constexpr Shading kLight{0xd8d8d8, 0xc2c2c2, "G8"};
inline constexpr Shading kDark{0xcecece, 0xb9b9b9, "G9"};

}  // namespace qbpd::order_layout

#endif  // QBPD_PRINTORDER_ORDER_LAYOUT_H_
