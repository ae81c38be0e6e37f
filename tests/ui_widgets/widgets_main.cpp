#include <QApplication>
#include <gtest/gtest.h>

#include <cstdlib>

// The widgets need an application object; they are drawn off screen, so the
// tests run without a display, and at one device pixel to a logical pixel,
// which is what the tests' pixel positions count.
int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", /*overwrite=*/1);
  unsetenv("QT_SCALE_FACTOR");
  unsetenv("QT_SCREEN_SCALE_FACTORS");
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
