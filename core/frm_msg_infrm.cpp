#include "core/frm_msg_infrm.h"

#include "core/button_pictures.h"
#include "platform/forms/keys.h"

namespace qbpd {
namespace {

constexpr int kFormWidth = 5265;
constexpr int kFormHeight = 2850;
constexpr int kSeparatorY = 1920;
constexpr int kButtonWidth = 1200;
constexpr int kButtonHeight = 390;
constexpr int kButtonTop = 2100;
constexpr std::string_view kOkButton = "26";

}  // namespace

frmMsgInfrm::frmMsgInfrm(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kFormWidth, kFormHeight);
  lblHead.Move(kMargin, kMargin, 0, kLineHeight);
  lblHead.SetFontBold(true);
  lblMessage.Move(kMargin, kMargin + kLineHeight, kMessageWidth, kLineHeight);
  linSeparator.SetX1(0);
  linSeparator.SetX2(kFormWidth);
  linSeparator.SetY1(kSeparatorY);
  linSeparator.SetY2(kSeparatorY);
  imgOK.Move(0, kButtonTop, kButtonWidth, kButtonHeight);
  SetKeyPreview(true);
  On("imgOK", "Click", &frmMsgInfrm::imgOK_Click);
  On("imgOK", "MouseDown", &frmMsgInfrm::imgOK_MouseDown);
  On("imgOK", "MouseUp", &frmMsgInfrm::imgOK_MouseUp);
  On("imgOK", "MouseMove", &frmMsgInfrm::imgOK_MouseMove);
}

int frmMsgInfrm::MessageLines(int width) {
  if (width <= 0) {
    return 0;
  }
  return width / kMessageWidth + (width % kMessageWidth != 0 ? 1 : 0);
}

void frmMsgInfrm::Form_Load() {
  const Session& s = app_.session();
  SetCaption(s.gsAppTitle);
  Move((host().ScreenWidth() - Width()) / 2,
       (host().ScreenHeight() - Height()) / 2, Width(), Height());
  ShowDefImages();
  imgOK.SetLeft((Width() - imgOK.Width()) / 2);

  lblHead.SetCaption(s.gsInfoHead);
  lblHead.SetWidth(host().TextWidth(s.gsInfoHead, lblHead.font()));

  // The label is sized to its text on one line first, which tells how many
  // lines the text takes once it wraps at the fixed width.
  lblMessage.SetWordWrap(false);
  lblMessage.SetCaption(s.gsInfoMessage);
  const int one_line_width =
      host().TextWidth(s.gsInfoMessage, lblMessage.font());
  const int lines = MessageLines(one_line_width);
  lblMessage.SetWordWrap(true);
  lblMessage.SetWidth(kMessageWidth);
  lblMessage.SetHeight(kLineHeight * lines);

  const int separator = linSeparator.Y1();
  if (!s.gsInfoHead.empty()) {
    const int head_bottom = lblHead.Top() + lblHead.Height();
    lblMessage.SetLeft(kMargin);
    lblMessage.SetTop(head_bottom +
                      (separator - head_bottom - lblMessage.Height()) / 2);
  } else {
    lblMessage.SetLeft((Width() - lblMessage.Width()) / 2);
    lblMessage.SetTop((separator - lblMessage.Height()) / 2);
  }
}

void frmMsgInfrm::ShowDefImages() {
  ShowButtonState(app_.session(), imgOK, kOkButton, kPictureNormal);
}

void frmMsgInfrm::Form_KeyPress(int& KeyAscii) {
  if (KeyAscii == kKeyReturn) {
    KeyAscii = 0;
    Unload();
  }
}

void frmMsgInfrm::Form_Unload(int& Cancel) {
  (void)Cancel;
  Session& s = app_.session();
  s.gsInfoHead.clear();
  s.gsInfoMessage.clear();
}

void frmMsgInfrm::imgOK_Click() {
  Unload();
}

void frmMsgInfrm::imgOK_MouseDown() {
  ShowButtonState(app_.session(), imgOK, kOkButton, kPicturePressed);
}

void frmMsgInfrm::imgOK_MouseUp() {
  ShowButtonState(app_.session(), imgOK, kOkButton, kPictureNormal);
}

void frmMsgInfrm::imgOK_MouseMove() {
  ShowButtonState(app_.session(), imgOK, kOkButton, kPictureHover);
}

}  // namespace qbpd
