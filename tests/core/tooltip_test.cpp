#include "core/tooltip.h"

#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/scripted_host.h"

#include <gtest/gtest.h>

#include <vector>

namespace qbpd {
namespace {

// A form with a strip of picture buttons, one of them in a container.
class frmButtons : public Form {
 public:
  explicit frmButtons(Host& host) : Form(host, "frmButtons") {
    imgUpload.Move(150, 300, 600, 450);
    imgUpload.SetTag("Upload photos");
    imgShare.Move(907, 300, 600, 450);  // not on whole pixels
    imgShare.SetTag("Share photos");
    imgPlain.Move(2000, 300, 600, 450);  // no Tag, no tip
    imgTrash.Move(30, 45, 300, 300);
    imgTrash.SetTag("Delete");
    imgTrash.SetContainer("picTrash");
  }
  PictureButton imgUpload{*this, "imgUpload"};
  PictureButton imgShare{*this, "imgShare"};
  PictureButton imgPlain{*this, "imgPlain"};
  PictureBox picTrash{*this, "picTrash"};
  PictureButton imgTrash{*this, "imgTrash"};
};

TEST(ToolTipTest, ButtonsGetTheirTagOverTheirRectangleInPixels) {
  ScriptedHost host;
  frmButtons form(host);
  cToolTip tips;
  const std::vector<const Control*> buttons = {&form.imgUpload, &form.imgShare,
                                               &form.imgPlain, &form.imgTrash};
  SetToolTips(tips, buttons);

  ASSERT_EQ(tips.Tools().size(), 3u);
  const ToolTipTool& upload = tips.Tools()[0];
  EXPECT_EQ(upload.window, "");
  EXPECT_EQ(upload.text, "Upload photos");
  EXPECT_EQ(upload.rect, (PixelRect{10, 20, 50, 50}));
  // 907 twips is 60.47 pixels: the pixel the edge falls in.
  EXPECT_EQ(tips.Tools()[1].rect, (PixelRect{60, 20, 100, 50}));
  // A button inside a container gets its tip on the container.
  EXPECT_EQ(tips.Tools()[2].window, "picTrash");
  EXPECT_EQ(tips.Tools()[2].rect, (PixelRect{2, 3, 22, 23}));

  EXPECT_EQ(tips.ToolAt("", 10, 20)->text, "Upload photos");
  EXPECT_EQ(tips.ToolAt("", 49, 49)->text, "Upload photos");
  EXPECT_EQ(tips.ToolAt("", 50, 20), nullptr);   // right edge is outside
  EXPECT_EQ(tips.ToolAt("", 140, 30), nullptr);  // imgPlain
  EXPECT_EQ(tips.ToolAt("picTrash", 5, 5)->text, "Delete");
  EXPECT_EQ(tips.ToolAt("", 5, 5), nullptr);
}

TEST(ToolTipTest, SetToolTipsAgainMovesEachButtonsTipInsteadOfAddingOne) {
  ScriptedHost host;
  frmButtons form(host);
  cToolTip tips;
  const std::vector<const Control*> buttons = {&form.imgUpload, &form.imgShare,
                                               &form.imgPlain, &form.imgTrash};
  SetToolTips(tips, buttons);
  const int upload_id = tips.Tools()[0].id;

  form.imgUpload.Move(1500, 300, 600, 450);
  form.imgShare.SetTag("Share with friends");
  SetToolTips(tips, buttons);
  ASSERT_EQ(tips.Tools().size(), 3u);
  EXPECT_EQ(tips.Tools()[0].id, upload_id);
  EXPECT_EQ(tips.Tools()[0].rect, (PixelRect{100, 20, 140, 50}));
  EXPECT_EQ(tips.ToolAt("", 10, 20), nullptr);
  EXPECT_EQ(tips.ToolAt("", 100, 20)->text, "Upload photos");
  EXPECT_EQ(tips.ToolAt("", 60, 20)->text, "Share with friends");
}

TEST(ToolTipTest, ItemRectMovesAndWholeWindowTipIsTheFallback) {
  ScriptedHost host;
  frmButtons form(host);
  cToolTip tips;
  EXPECT_EQ(tips.MaxTipWidth(), 300);
  EXPECT_EQ(tips.InitialDelay(), 500);
  EXPECT_EQ(tips.PopUpTime(), 2000);

  const int whole = tips.SetToolTipObj(form.picTrash, "Trash");
  EXPECT_EQ(tips.SetToolTipObj(form.picTrash, "Drop photos here"), whole);
  const int item = tips.SetToolTipItem("picTrash", 0, 0, 10, 10, "Corner");
  EXPECT_NE(item, whole);

  EXPECT_EQ(tips.ToolAt("picTrash", 5, 5)->text, "Corner");
  EXPECT_EQ(tips.ToolAt("picTrash", 15, 15)->text, "Drop photos here");

  EXPECT_TRUE(tips.AjustItemRect("picTrash", 10, 10, 20, 20, item));
  EXPECT_EQ(tips.ToolAt("picTrash", 5, 5)->text, "Drop photos here");
  EXPECT_EQ(tips.ToolAt("picTrash", 15, 15)->text, "Corner");
  EXPECT_EQ(tips.FindTool("picTrash", item)->rect, (PixelRect{10, 10, 20, 20}));

  // Another window's id, or the whole-window tip, can't be moved.
  EXPECT_FALSE(tips.AjustItemRect("", 0, 0, 5, 5, item));
  EXPECT_FALSE(tips.AjustItemRect("picTrash", 0, 0, 5, 5, whole));
  EXPECT_EQ(tips.FindTool("picTrash", item)->rect, (PixelRect{10, 10, 20, 20}));
}

TEST(ToolTipTest, TipShowsAfterTheDelayForThePopUpTime) {
  cToolTip tips;
  tips.SetToolTipItem("", 0, 0, 10, 10, "A");
  tips.SetToolTipItem("", 20, 0, 30, 10, "B");

  tips.PointerAt("", 5, 5, 1000);
  EXPECT_EQ(tips.ShownTip(1499), nullptr);
  EXPECT_EQ(tips.ShownTip(1500)->text, "A");
  // Moving inside the same tool doesn't start over.
  tips.PointerAt("", 6, 6, 2000);
  EXPECT_EQ(tips.ShownTip(3499)->text, "A");
  EXPECT_EQ(tips.ShownTip(3500), nullptr);

  // Another tool waits its own delay.
  tips.PointerAt("", 25, 5, 4000);
  EXPECT_EQ(tips.ShownTip(4400), nullptr);
  EXPECT_EQ(tips.ShownTip(4500)->text, "B");
  // Off every tool, or off the form, nothing shows.
  tips.PointerAt("", 15, 5, 4600);
  EXPECT_EQ(tips.ShownTip(5200), nullptr);
  tips.PointerAt("", 5, 5, 6000);
  tips.PointerGone();
  EXPECT_EQ(tips.ShownTip(6600), nullptr);
}

}  // namespace
}  // namespace qbpd
