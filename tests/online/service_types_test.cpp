#include "online/service_types.h"

#include "platform/forms/runtime_error.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

TEST(TextGridTest, CellsAreReadAndWrittenByRowAndColumn) {
  TextGrid grid(4, 3);
  EXPECT_EQ(grid.Rows(), 4);
  EXPECT_EQ(grid.Columns(), 3);
  grid(3, 2) = "0.58";
  EXPECT_EQ(grid(3, 2), "0.58");
  EXPECT_EQ(grid(0, 0), "");
  EXPECT_EQ(grid.ToRows()[3], (std::vector<std::string>{"", "", "0.58"}));
}

TEST(TextGridTest, ASubscriptOutOfRangeIsErrorNine) {
  TextGrid grid(2, 1);
  const TextGrid empty;
  struct Case {
    const TextGrid* grid;
    int row, column;
  };
  const Case cases[] = {
      {&grid, 2, 0}, {&grid, 0, 1}, {&grid, -1, 0}, {&empty, 0, 0}};
  for (const Case& c : cases) {
    try {
      (void)(*c.grid)(c.row, c.column);
      ADD_FAILURE() << c.row << "," << c.column << " was accepted";
    } catch (const RuntimeError& e) {
      EXPECT_EQ(e.number(), kErrSubscript);
    }
  }
}

TEST(TextGridTest, RowsOfDifferentLengthArePaddedAndReDimKeepsWhatFits) {
  TextGrid grid = TextGrid::FromRows({{"a"}, {"b", "c", "d"}});
  EXPECT_EQ(grid.Columns(), 3);
  EXPECT_EQ(grid(0, 2), "");
  grid.ReDim(3, 2, /*preserve=*/true);
  EXPECT_EQ(grid(1, 1), "c");
  EXPECT_EQ(grid(2, 1), "");
  grid.ReDim(3, 2, /*preserve=*/false);
  EXPECT_EQ(grid(1, 1), "");
  grid.ReDim(0, 5, /*preserve=*/false);
  EXPECT_TRUE(grid.IsEmpty());
}

TEST(CompareVersionsTest, PartsCompareAsNumbers) {
  struct Case {
    const char* a;
    const char* b;
    int sign;
  };
  const Case cases[] = {
      {"1.1", "1.1.0", 0},   {"1.1.0", "1.1.1", -1}, {"1.9", "1.10", -1},
      {"2", "1.99.99", 1},   {"1.0.1", "1", 1},      {"", "0.0", 0},
      {"1.2beta", "1.2", 0}, {"10.0", "9.9", 1},
  };
  for (const Case& c : cases) {
    int result = CompareVersions(c.a, c.b);
    int sign = (result > 0) - (result < 0);
    EXPECT_EQ(sign, c.sign) << c.a << " vs " << c.b;
  }
}

}  // namespace
}  // namespace qbpd
