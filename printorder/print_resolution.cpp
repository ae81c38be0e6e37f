#include "printorder/print_resolution.h"

#include <algorithm>

namespace qbpd {
namespace {

struct Threshold {
  int short_side;
  int long_side;
};
constexpr Threshold kThresholds[] = {{600, 900},
                                     {600, 900},
                                     {1024, 1280},
                                     {279, 419}};

}  // namespace

bool MeetsPrintSize(PhotoSize size, int row) {
  if (row < 0 || row > 3) {
    return false;
  }
  const int short_side = std::min(size.width, size.height);
  const int long_side = std::max(size.width, size.height);
  return short_side >= kThresholds[row].short_side &&
         long_side >= kThresholds[row].long_side;
}

}  // namespace qbpd
