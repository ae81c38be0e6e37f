#include "tests/browser/main_window_fixture.h"

namespace qbpd {
namespace {

class GridTest : public testing_support::MainWindowTest {};

TEST_F(GridTest, StartsOnTheFolderWithOneControlPerPhoto) {
  for (int i = 0; i < 3; ++i)
    WritePhoto("p" + std::to_string(i) + ".jpg");
  Start();
  EXPECT_EQ(session().gdicPhotoList.Count(), 3);
  EXPECT_EQ(main().ctrlQuilImage[1].Left(), 1585);
}

}  // namespace
}  // namespace qbpd
