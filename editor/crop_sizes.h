#ifndef QBPD_EDITOR_CROP_SIZES_H_
#define QBPD_EDITOR_CROP_SIZES_H_

#include <array>
#include <string>

namespace qbpd {

// One print size of the crop tool: its option and menu entry, the caption,
// and the aspect terms handed to the photo view for a horizontal and a
// vertical box. The terms stand as the print is named and are not reduced
// (the wallet set is 3 : 2, the same proportion as 4 x 6).
struct CropSize {
  const char* option;
  const char* menu;
  const char* caption;
  int horizontal_x;
  int horizontal_y;
  int vertical_x;
  int vertical_y;
};

// By preset number: 0 is 4 x 6, 1 is 5 x 7, 2 is 8 x 10, 3 is Wallets.
inline constexpr std::array<CropSize, 4> kCropSizes = {{
    {"opt4x6", "mnuPCrop4x6", "4 x 6", 6, 4, 4, 6},
    {"opt5x7", "mnuPCrop5x7", "5 x 7", 7, 5, 5, 7},
    {"opt8x10", "mnuPCrop8x10", "8 x 10", 10, 8, 8, 10},
    {"optWallet", "mnuPCropWallet", "Wallets", 3, 2, 2, 3},
}};

// The preset that the ExpressPrints setting names, read by containment: 1
// when it holds "5x7", else 2 for "8x10", else 3 when its lower-cased text
// holds "wallet", else 0. A trailing NUL is cut first.
int CropPresetFromExpressPrints(std::string value);

}  // namespace qbpd

#endif  // QBPD_EDITOR_CROP_SIZES_H_
