#ifndef QBPD_PRESENTATION_FRM_SLIDE_SHOW_H_
#define QBPD_PRESENTATION_FRM_SLIDE_SHOW_H_

#include "core/application.h"
#include "core/tooltip.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <memory>
#include <string>
#include <string_view>

namespace qbpd {

class DecodeAheadDisplay;

// The photos of the current folder one at a time on black, fitted to the
// width, with four buttons at the top (previous, play or pause, next, exit)
// and the photo's name at the bottom. gsSlideShowMode "S" plays from the
// photo on display; "F" (Full Screen) opens paused. A tick of tmrPlay shows
// the next photo whose file still exists, forgetting the photos whose files
// went, and goes round for ever; Next and Previous step over missing files
// (forgetting nothing) and wrap. Exit (the button or Esc) clicks the main
// window's thumbnail of the photo shown last, so that the main window shows
// it. The window covers the screen without a border.
class frmSlideShow : public Form {
 public:
  static constexpr std::string_view kName = "frmSlideShow";
  explicit frmSlideShow(Application& app);
  ~frmSlideShow() override;

  // How many characters of the name the label shows before "...".
  static constexpr int kNameCharacters = 40;
  static constexpr char kPauseTip[] = "pause the slideshow";
  static constexpr char kPlayTip[] = "play the slideshow";

  PictureBox picBackground{*this, "picBackground"};
  PhotoView ctlDisplayImage{*this, "ctlDisplayImage"};
  Frame fraButtonContainer{*this, "fraButtonContainer"};
  PictureButton imgPrevious{*this, "imgPrevious"};
  PictureButton imgPlayPause{*this, "imgPlayPause"};
  PictureButton imgNext{*this, "imgNext"};
  PictureButton imgExit{*this, "imgExit"};
  Frame fraImageName{*this, "fraImageName"};
  Label lblImageName{*this, "lblImageName"};
  Timer tmrPlay{*this, "tmrPlay"};

  std::string ToolTipAt(std::string_view window, int x, int y) const override;

 protected:
  void Form_Load() override;
  void Form_Resize() override;
  void Form_KeyDown(int& KeyCode, int Shift) override;

 private:
  // Lays the buttons out the first time the form comes up.
  void FirstLayout();
  void ShowPhoto();
  // Asks the view to have the photos of the next and previous steps ready.
  void DecodeNeighboursAhead();
  // The next index from `from` (exclusive) up to the last index, or down to
  // 0, whose photo is listed and whose file exists; -1 for none.
  int FindUp(int from) const;
  int FindDown(int from) const;
  bool FileExists(int index) const;
  void SetPlaying(bool playing);
  void tmrPlay_Timer();
  void imgPlayPause_Click();
  void imgNext_Click();
  void imgPrevious_Click();
  void imgExit_Click();
  void Step(int direction);

  Application& app_;
  Session& s_;
  std::unique_ptr<cToolTip> moToolTip;
  DecodeAheadDisplay* mpDecodeAhead = nullptr;
  int miCurrentIndex = 0;
  bool mbPlaying = false;
  bool mbBusy = false;
  bool mbLaidOut = false;
  int miLastIndex = 0;
  int miPlayTip = 0;
};

}  // namespace qbpd

#endif  // QBPD_PRESENTATION_FRM_SLIDE_SHOW_H_
