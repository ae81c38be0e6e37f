#ifndef QBPD_CORE_FRM_MSG_INFRM_H_
#define QBPD_CORE_FRM_MSG_INFRM_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string_view>

namespace qbpd {

// The notice at the end of a long online job: a head line (gsInfoHead) and
// a message (gsInfoMessage, may be empty) over an OK button. Callers set the
// two session values and show it modally; it empties them when it goes.
class frmMsgInfrm : public Form {
 public:
  static constexpr std::string_view kName = "frmMsgInfrm";
  explicit frmMsgInfrm(Application& app);

  // The width a message wraps at, and the height of one of its lines.
  static constexpr int kMessageWidth = 4875;
  static constexpr int kLineHeight = 240;
  // Left edge of the head and of a message under a head.
  static constexpr int kMargin = 195;

  // How many lines a message of `width` twips takes when wrapped at
  // kMessageWidth: one more for any remainder; 0 for an empty message.
  static int MessageLines(int width);

  Label lblHead{*this, "lblHead"};
  Label lblMessage{*this, "lblMessage"};
  Line linSeparator{*this, "linSeparator"};
  PictureButton imgOK{*this, "imgOK"};

  // Puts the button back to its normal picture.
  void ShowDefImages();

 protected:
  void Form_Load() override;
  void Form_KeyPress(int& KeyAscii) override;
  void Form_Unload(int& Cancel) override;

 private:
  void imgOK_Click();
  void imgOK_MouseDown();
  void imgOK_MouseUp();
  void imgOK_MouseMove();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_CORE_FRM_MSG_INFRM_H_
