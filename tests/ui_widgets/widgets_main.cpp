#include <QApplication>
#include <gtest/gtest.h>

#include <cstdlib>

// The widgets need an application object; they are drawn off screen, so the
// tests run without a display.
int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", /*overwrite=*/1);
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
