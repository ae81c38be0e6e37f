// The photo on display: its zoom, the zoom menu, following the window's size,
// and stepping to the next and previous photo.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"

#include <array>

namespace qbpd {
namespace {

constexpr std::array<int, 8> kZoomLevels = {25,  50,  75,  100,
                                            125, 150, 175, 200};
constexpr std::string_view kFitCaption = "Fit To Width";

}  // namespace

void frmMainWindow::WireDisplay() {
  mnuVZoom.SetContainer("mnuView");
  mnuVZoom.SetCaption("&Zoom");
  Menu* items[] = {&mnuVZoom25,  &mnuVZoom50,  &mnuVZoom75,  &mnuVZoom100,
                   &mnuVZoom125, &mnuVZoom150, &mnuVZoom175, &mnuVZoom200};
  for (size_t k = 0; k < kZoomLevels.size(); ++k) {
    const int level = kZoomLevels[k];
    items[k]->SetContainer("mnuVZoom");
    items[k]->SetCaption(std::to_string(level) + "%");
    On(items[k]->Name(), "Click",
       [this, level](EventArgs&) { ZoomCommand(level); });
  }
  mnuVZoomFit.SetContainer("mnuVZoom");
  mnuVZoomFit.SetCaption(std::string(kFitCaption));
  On("mnuVZoomFit", "Click", &frmMainWindow::mnuVZoomFit_Click);
  On("imgZoom", "Click", &frmMainWindow::imgZoom_Click);
  On("imgNext", "Click", &frmMainWindow::imgNext_Click);
  On("imgPrev", "Click", &frmMainWindow::imgPrev_Click);
  On("picDisplayImageCont", "Resize",
     &frmMainWindow::picDisplayImageCont_Resize);
  On("ctlDisplayImage", "Click", &frmMainWindow::ctlDisplayImage_Click);
}

Menu& frmMainWindow::ZoomItem(int level) {
  switch (level) {
    case 25:
      return mnuVZoom25;
    case 50:
      return mnuVZoom50;
    case 75:
      return mnuVZoom75;
    case 100:
      return mnuVZoom100;
    case 125:
      return mnuVZoom125;
    case 150:
      return mnuVZoom150;
    case 175:
      return mnuVZoom175;
    default:
      return mnuVZoom200;
  }
}

void frmMainWindow::ShowZoomLevel(int level) {
  for (int each : kZoomLevels) {
    ZoomItem(each).SetChecked(false);
  }
  mnuVZoomFit.SetChecked(false);
  mnuVZoomFit.SetCaption(std::string(kFitCaption));
  const std::string fit_caption =
      std::string(kFitCaption) + "(" + std::to_string(level) + "%)";
  if (mbFitToWidth) {
    mnuVZoomFit.SetChecked(true);
    mnuVZoomFit.SetCaption(fit_caption);
    return;
  }
  for (int each : kZoomLevels) {
    if (each == level) {
      ZoomItem(each).SetChecked(true);
      return;
    }
  }
  // Any other percent can only come from a fit.
  mnuVZoomFit.SetCaption(fit_caption);
  mnuVZoomFit.SetChecked(true);
  mbFitToWidth = true;
}

void frmMainWindow::ZoomCommand(int level) {
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  if (ctlDisplayImage.ZoomTo(level)) {
    mbFitToWidth = false;
    ShowPhotoName(BaseName(s_.gsSelectedImage));
  } else {
    host().MsgBox("Unable to zoom the photo to " + std::to_string(level) + "%",
                  kMbInformation, s_.gsAppTitle);
  }
  // The 25% entry shows its own number rather than the view's.
  ShowZoomLevel(level == 25 ? 25 : ctlDisplayImage.ZoomPercent());
  s_.giCurrentOperation = 0;
}

void frmMainWindow::mnuVZoomFit_Click() {
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  if (ctlDisplayImage.ZoomFitToWidth()) {
    mbFitToWidth = true;
    ShowPhotoName(BaseName(s_.gsSelectedImage));
  } else {
    host().MsgBox("Unable to zoom the photo to Fit to width", kMbInformation,
                  s_.gsAppTitle);
  }
  ShowZoomLevel(ctlDisplayImage.ZoomPercent());
  s_.giCurrentOperation = 0;
}

void frmMainWindow::picDisplayImageCont_Resize() {
  ctlDisplayImage.SetWidth(picDisplayImageCont.Width() - 50);
  ctlDisplayImage.SetHeight(picDisplayImageCont.Height() * 14 / 15);
  if (!mbFirstLoad && ctlDisplayImage.Display() != nullptr &&
      ctlDisplayImage.Display()->HasPhoto()) {
    if (!mbFitToWidth) {
      ctlDisplayImage.ZoomTo(ctlDisplayImage.ZoomPercent());
    } else {
      ctlDisplayImage.ZoomFitToWidth();
    }
    if (ctlDisplayImage.Visible()) {
      ShowZoomLevel(ctlDisplayImage.ZoomPercent());
    }
  }
  picImageText.SetTop(ctlDisplayImage.Height() + 100);
  picImageText.SetWidth(picDisplayImageCont.Width());
  // The whole name is kept in the Tag, so a shortened one grows back.
  if (!txtFileName.Text().empty()) {
    ShowPhotoName(txtFileName.Tag());
  }
}

void frmMainWindow::imgZoom_Click() {
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  PopupMenu(mnuVZoom,
            picManipCont.Left() + imgZoom.Left() + imgZoom.Width() / 2,
            picManipCont.Top());
}

void frmMainWindow::ctlDisplayImage_Click() {
  CommitRename();
}

void frmMainWindow::imgNext_Click() {
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  if (s_.giPhotoCount == 1) {
    return;
  }
  if (s_.giPhotoCount < 2) {
    SetFocusToWindow();
    return;
  }
  const int current = s_.giCurrentPhotoIndex;
  auto visible = [this](int i) { return ThumbnailShowable(i); };
  int found = -1;
  for (int i = current + 1; i <= s_.giNextPhotoIndex; ++i) {
    if (s_.gdicPhotoList.Exists(i) && visible(i)) {
      found = i;
      break;
    }
  }
  if (found < 0) {
    // The wrapping pass looks at the current thumbnail, not the candidate's.
    for (int i = 0; i <= s_.giNextPhotoIndex - 1; ++i) {
      if (s_.gdicPhotoList.Exists(i) && visible(current)) {
        found = i;
        break;
      }
    }
  }
  ClickThumbnail(found >= 0 ? found : current);
  SetFocusToWindow();
}

void frmMainWindow::imgPrev_Click() {
  if (!CommitRename()) {
    return;
  }
  SaveImage();
  if (s_.giPhotoCount < 2) {
    return;
  }
  const int current = miClickedPhoto;
  auto visible = [this](int i) { return ThumbnailShowable(i); };
  int found = -1;
  for (int i = current - 1; i >= 0; --i) {
    if (s_.gdicPhotoList.Exists(i) && visible(i)) {
      found = i;
      break;
    }
  }
  if (found < 0) {
    for (int i = s_.giNextPhotoIndex - 1; i >= 0; --i) {
      if (s_.gdicPhotoList.Exists(i) && visible(i)) {
        found = i;
        break;
      }
    }
  }
  ClickThumbnail(found >= 0 ? found : current);
  SetFocusToWindow();
}

bool frmMainWindow::ThumbnailShowable(int index) const {
  // A photo further down whose control hasn't been loaded yet counts as shown:
  // its control is made when it is clicked.
  return !ctrlQuilImage.Exists(index) || ctrlQuilImage[index].Visible();
}

void frmMainWindow::ClickThumbnail(int index) {
  if (!s_.gdicPhotoList.Exists(index)) {
    return;
  }
  if (!s_.gdicLoadedControls.Exists(index)) {
    Thumbnail& thumb = LoadThumbnailControl(index);
    thumb.SetTag(s_.gdicSelectedPhotos.Exists(index) ? "C" : "U");
    s_.gdicLoadedControls.Add(index, "");
    ShowThumbnailOf(thumb, s_.gdicPhotoList.Item(index));
    PlaceThumbnail(index);
  }
  ctrlQuilImage[index].SelectThumbnail();
}

void frmMainWindow::PrepareNextPhoto() {
  for (int i = s_.giCurrentPhotoIndex + 1; i < s_.giNextPhotoIndex; ++i) {
    if (s_.gdicPhotoList.Exists(i)) {
      ctlDisplayImage.PrepareLoad({s_.gdicPhotoList.Item(i)});
      return;
    }
  }
  ctlDisplayImage.PrepareLoad({});
}

void frmMainWindow::SetFocusToWindow() {
  picImageListCont.SetFocus();
}

}  // namespace qbpd
