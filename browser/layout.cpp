// The main window's layout, in twips: a column of command buttons on the
// left, then the folder pane above the grid of thumbnails (with the splitter
// between them and the selection buttons below), then the photo on display,
// which takes the rest, with its name strip and a row of photo tools under
// it.
#include "browser/frm_main_window.h"

#include <algorithm>

namespace qbpd {
namespace {

constexpr int kGap = 100;
// The window's frame and caption strip, and its menu bar.
constexpr int kBorderWidth = 240;
constexpr int kChromeHeight = 900;
// The column of command buttons.
constexpr int kButtonColumnLeft = 85;
// The command buttons carry their label: 120 x 30 pixels.
constexpr int kButtonColumnWidth = 1900;
constexpr int kCommandButtonWidth = 1800;
constexpr int kCommandButtonHeight = 450;
// The folder pane and the grid: two columns of thumbnails and a scroll bar.
constexpr int kListWidth = 3300;
constexpr int kScrollWidth = 255;
constexpr int kHeadHeight = 300;
constexpr int kPaneTitleHeight = 420;
constexpr int kSplitHeight = 90;
constexpr int kSelectRowHeight = 400;
constexpr int kCaptionHeight = 300;
// The photo tools under the display.
constexpr int kToolHeight = 600;
constexpr int kToolSize = 500;

}  // namespace

void frmMainWindow::InitFrameArrange() {
  // The folder pane starts with about two fifths of the column.
  miSplitTop = 0;
  FrameReArrange();
}

void frmMainWindow::FrameReArrange() {
  const int width = std::max(Width(), kMinWidth) - kBorderWidth;
  const int height = std::max(Height(), kMinHeight) - kChromeHeight;

  // The command buttons, one under the other.
  int top = kGap;
  for (PictureButton* b :
       {&imgUpload, &imgShare, &imgOrdPrints, &imgSlideShow, &imgScrSaver}) {
    b->Move(kButtonColumnLeft, top, kCommandButtonWidth, kCommandButtonHeight);
    top += kCommandButtonHeight + kGap;
  }

  // The left column: selection buttons and caption at the bottom.
  const int list_left = kButtonColumnLeft + kButtonColumnWidth;
  const int select_top = height - kSelectRowHeight - kGap;
  imgSelectAll.Move(list_left, select_top, kListWidth / 2 - kGap / 2,
                    kSelectRowHeight);
  imgClear.Move(list_left + kListWidth / 2 + kGap / 2, select_top,
                kListWidth / 2 - kGap / 2, kSelectRowHeight);
  lblPhotosSelect.Move(list_left, select_top - kCaptionHeight - kGap / 2,
                       kListWidth, kCaptionHeight);
  ArrangeLeftColumn();

  // The display takes the rest.
  const int display_left = list_left + kListWidth + kGap;
  const int display_width = std::max(width - display_left - kGap, 3000);
  const int tools_top = height - kToolHeight - kGap;
  picDisplayImageCont.Move(display_left, kGap, display_width,
                           tools_top - 2 * kGap);
  // picDisplayImageCont_Resize places the photo and its name strip.

  // The photo tools: the manipulation buttons, previous and next, the trash.
  PictureButton* tools[] = {&imgZoom, &imgLeftRotate, &imgRightRotate,
                            &imgCrop, &imgRedeye,     &imgAutocolor,
                            &imgInfo, &imgWallpaper};
  const int step = kToolSize + kGap / 2;
  const int manip_width = step * static_cast<int>(std::size(tools));
  const int flow_width = 2 * step;
  const int trash_width = step;
  const int tools_width = manip_width + flow_width + trash_width + 4 * kGap;
  int x = display_left + std::max(0, (display_width - tools_width) / 2);
  picManipCont.Move(x, tools_top, manip_width, kToolHeight);
  for (size_t i = 0; i < std::size(tools); ++i) {
    tools[i]->Move(static_cast<int>(i) * step, (kToolHeight - kToolSize) / 2,
                   kToolSize, kToolSize);
  }
  x += manip_width + 2 * kGap;
  picImageFlow.Move(x, tools_top, flow_width, kToolHeight);
  imgPrev.Move(0, (kToolHeight - kToolSize) / 2, kToolSize, kToolSize);
  imgNext.Move(step, (kToolHeight - kToolSize) / 2, kToolSize, kToolSize);
  x += flow_width + 2 * kGap;
  picTrash.Move(x, tools_top, trash_width, kToolHeight);
  imgTrash.Move(0, (kToolHeight - kToolSize) / 2, kToolSize, kToolSize);
  // The edit panel's strip stands where the tools stand.
  picCropCont.Move(display_left, tools_top, display_width, kToolHeight);
  imgApplyChanges.Move(display_width / 2 - 2 * kToolSize - kGap, 0,
                       2 * kToolSize, kToolSize);
  imgCancel.Move(display_width / 2 + kGap, 0, 2 * kToolSize, kToolSize);

  // Browse mode shows the photo tools, edit mode the edit panel's strip.
  picDisplayImageCont.SetVisible(true);
  const int op = s_.giCurrentOperation;
  const bool editing = op == 1 || op == 4 || op == 5;
  picCropCont.SetVisible(editing);
  picManipCont.SetVisible(!editing);
  picImageFlow.SetVisible(!editing);
  picTrash.SetVisible(!editing);

  ArrangeEditPanels(list_left, kGap, kListWidth, height - 2 * kGap);

  if (s_.gdicPhotoList.Count() > 0) {
    setscrollBar();
    LoadVisibleThumbnails(ctrlImageListVScroll.Value());
  }
}

void frmMainWindow::ArrangeLeftColumn() {
  const int list_left = kButtonColumnLeft + kButtonColumnWidth;
  const int column_top = kGap;
  const int column_bottom = lblPhotosSelect.Top() - kGap / 2;
  const int inner_width = kListWidth - kScrollWidth;

  picExplorerCont.SetLeft(list_left);
  picExplorerCont.SetWidth(kListWidth);
  lblExpFolderPath.Move(kGap, kGap, kListWidth - 600, kPaneTitleHeight - kGap);
  imgBrowseClose.Move(kListWidth - 420, 60, 300, 300);

  int list_top = 0;
  if (mbExplorerOpen) {
    if (miSplitTop <= 0) {
      miSplitTop = column_top + (column_bottom - column_top) * 2 / 5;
    }
    picExplorerCont.Move(list_left, column_top, kListWidth, 0);
    const int split_top = ClampSplit(miSplitTop);
    picExplorerCont.SetHeight(split_top - column_top);
    ExpTreeView.Move(
        0, kPaneTitleHeight, kListWidth,
        std::max<Twips>(0, picExplorerCont.Height() - kPaneTitleHeight));
    imgHorzSplit.Move(list_left, split_top, kListWidth, kSplitHeight);
    list_top = split_top + kSplitHeight;
  } else {
    // Closed, the pane shows only its title strip.
    picExplorerCont.Move(list_left, column_top, kListWidth, kPaneTitleHeight);
    list_top = column_top + kPaneTitleHeight + kGap / 2;
  }

  picImageListCont.Move(list_left, list_top, kListWidth,
                        std::max(kHeadHeight, column_bottom - list_top));
  cmdImageListHead.Move(0, 0, kListWidth, kHeadHeight);
  picImagelistInnerCont.Move(0, picImagelistInnerCont.Top(), inner_width,
                             picImagelistInnerCont.Height());
  ctrlImageListVScroll.Move(inner_width, kHeadHeight, kScrollWidth,
                            picImageListCont.Height() - kHeadHeight);
}

}  // namespace qbpd
