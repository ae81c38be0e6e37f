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

TEST(EditorOverlayTest, HandlesStayWholeInTheViewAndWhereThePointerFindsThem) {
  const CropHandle order[] = {CropHandle::kTopLeft,  CropHandle::kTop,
                              CropHandle::kTopRight, CropHandle::kLeft,
                              CropHandle::kRight,    CropHandle::kBottomLeft,
                              CropHandle::kBottom,   CropHandle::kBottomRight};
  const QRectF view(0, 0, 400, 300);
  // A box in the middle: every handle centred on its point.
  const QRectF middle(100, 100, 200, 100);
  const std::vector<QRectF> centred = CropHandleRects(middle, view);
  ASSERT_EQ(centred.size(), 8U);
  EXPECT_EQ(centred[0].center(), middle.topLeft());
  EXPECT_EQ(centred[7].center(), middle.bottomRight());
  // A box as large as the view (a photo fitted to it, the box at its
  // edges), and one past the view's right and bottom edges: every handle
  // whole inside the view, and the pointer over it finds that handle.
  for (const QRectF& box : {QRectF(0, 0, 400, 300), QRectF(150, 120, 250, 180),
                            QRectF(200, 150, 260, 200)}) {
    const std::vector<QRectF> handles = CropHandleRects(box, view);
    ASSERT_EQ(handles.size(), 8U);
    for (std::size_t i = 0; i < handles.size(); ++i) {
      const QRectF& handle = handles[i];
      EXPECT_TRUE(view.contains(handle))
          << i << ": " << handle.x() << "," << handle.y();
      EXPECT_DOUBLE_EQ(handle.width(), kHandleSize);
      if (box.right() <= view.right() && box.bottom() <= view.bottom()) {
        EXPECT_EQ(CropHandleAt(box, handle.center(), kHandleReach), order[i])
            << i;
      }
    }
  }
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
