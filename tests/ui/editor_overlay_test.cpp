// Which part of the crop box the pointer is over, and the pointer it gets.
#include "ui/qt/editor_overlay.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

TEST(EditorOverlayTest, CornersComeBeforeEdgesAndEdgesBeforeTheInside) {
  const QRectF box(100, 100, 200, 100);  // right 300, bottom 200
  struct Case {
    QPointF at;
    CropHandle handle;
  };
  const Case cases[] = {
      {{100, 100}, CropHandle::kTopLeft},
      {{305, 96}, CropHandle::kTopRight},
      {{95, 205}, CropHandle::kBottomLeft},
      {{300, 200}, CropHandle::kBottomRight},
      {{100, 150}, CropHandle::kLeft},
      {{304, 150}, CropHandle::kRight},
      {{200, 98}, CropHandle::kTop},
      {{200, 203}, CropHandle::kBottom},
      {{200, 150}, CropHandle::kInside},
      // Beyond the reach: outside.
      {{89, 150}, CropHandle::kNone},
      {{200, 215}, CropHandle::kNone},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(CropHandleAt(box, c.at, 8), c.handle)
        << c.at.x() << "," << c.at.y();
  }
  EXPECT_EQ(CropHandleAt(QRectF(), QPointF(0, 0), 8), CropHandle::kNone);
}

TEST(EditorOverlayTest, EachPartHasItsPointer) {
  EXPECT_EQ(CursorFor(CropHandle::kTopLeft), Qt::SizeFDiagCursor);
  EXPECT_EQ(CursorFor(CropHandle::kBottomRight), Qt::SizeFDiagCursor);
  EXPECT_EQ(CursorFor(CropHandle::kTopRight), Qt::SizeBDiagCursor);
  EXPECT_EQ(CursorFor(CropHandle::kBottomLeft), Qt::SizeBDiagCursor);
  EXPECT_EQ(CursorFor(CropHandle::kLeft), Qt::SizeHorCursor);
  EXPECT_EQ(CursorFor(CropHandle::kTop), Qt::SizeVerCursor);
  EXPECT_EQ(CursorFor(CropHandle::kInside), Qt::SizeAllCursor);
}

}  // namespace
}  // namespace qbpd
