#include "printorder/print_resolution.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

TEST(MeetsPrintSize, ThresholdsBySizeRow) {
  struct Case {
    PhotoSize size;
    int row;
    bool meets;
  } cases[] = {
      {{900, 600}, 0, true},     // 4 x 6 exactly
      {{899, 600}, 0, false},    // one pixel short on the long side
      {{600, 900}, 0, true},     // upright counts the same
      {{900, 600}, 1, true},     // 5 x 7 has the 4 x 6 thresholds
      {{1000, 800}, 1, true},    //
      {{1000, 800}, 2, false},   // 8 x 10 wants 1024 x 1280
      {{1280, 1024}, 2, true},   //
      {{419, 279}, 3, true},     // wallets
      {{418, 279}, 3, false},    //
      {{0, 0}, 3, false},        // an unreadable photo fails every size
      {{5000, 4000}, 4, false},  // no such row
  };
  for (const Case& c : cases) {
    EXPECT_EQ(MeetsPrintSize(c.size, c.row), c.meets)
        << c.size.width << "x" << c.size.height << " row " << c.row;
  }
}

}  // namespace
}  // namespace qbpd
