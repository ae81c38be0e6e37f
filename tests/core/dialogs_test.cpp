#include "core/application.h"
#include "core/frm_about_us.h"
#include "core/frm_msg_infrm.h"
#include "core/settings.h"
#include "platform/forms/scripted_host.h"
#include "platform/forms/user_input.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace qbpd {
namespace {

// The notice and the about box on a scripted host, with the branded
// resources made as the start-up makes them.
class DialogsTest : public ::testing::Test {
 protected:
  DialogsTest() {
    auto host = std::make_unique<ScriptedHost>();
    host_ = host.get();
    PlatformServices services;
    services.resources = "/res";
    app_ = std::make_unique<Application>(
        std::move(host), std::move(services), [](Application& app) {
          Application* a = &app;
          app.forms().Register<frmMsgInfrm>(
              [a] { return std::make_unique<frmMsgInfrm>(*a); });
          app.forms().Register<frmAboutUs>(
              [a] { return std::make_unique<frmAboutUs>(*a); });
        });
    host_->SetIdleHook([this] { app_->forms().CollectGarbage(); });
    Session& s = session();
    s.gsAppTitle = "Quillbay Picture Desk";
    s.goResources = std::make_unique<Resources>("/res");
  }

  Session& session() { return app_->session(); }
  // Every text measures `width` twips, whatever its content.
  void MeasureEveryTextAs(int width) {
    host_->SetTextMetric(
        [width](std::string_view, const Font&) { return width; });
  }
  frmMsgInfrm& Notice(const std::string& head, const std::string& message) {
    session().gsInfoHead = head;
    session().gsInfoMessage = message;
    return app_->forms().Get<frmMsgInfrm>();
  }
  std::string Button(const std::string& name) {
    return "/res/pictures/button/" + name + ".png";
  }

  ScriptedHost* host_;
  std::unique_ptr<Application> app_;
};

TEST_F(DialogsTest, MessageTakesOneLineUpToTheWrapWidthAndOneMorePerPart) {
  struct Case {
    int width;
    int lines;
  };
  const Case cases[] = {
      {1, 1}, {4875, 1}, {4876, 2}, {9750, 2}, {9751, 3},
  };
  for (const Case& c : cases) {
    MeasureEveryTextAs(c.width);
    frmMsgInfrm& form = Notice("Head", "some message");
    EXPECT_EQ(form.lblMessage.Height(), 240 * c.lines) << c.width;
    EXPECT_EQ(form.lblMessage.Width(), 4875) << c.width;
    EXPECT_TRUE(form.lblMessage.WordWrap());
    form.Unload();
    app_->forms().CollectGarbage();
  }
  EXPECT_EQ(frmMsgInfrm::MessageLines(0), 0);
}

TEST_F(DialogsTest, MessageUnderAHeadSitsAtTheMarginBetweenHeadAndLine) {
  MeasureEveryTextAs(3000);
  frmMsgInfrm& form = Notice("Upload finished", "All photos are online.");
  EXPECT_EQ(form.lblHead.Caption(), "Upload finished");
  EXPECT_EQ(form.lblHead.Width(), 3000);  // sized to its text
  EXPECT_EQ(form.lblMessage.Left(), frmMsgInfrm::kMargin);
  const int head_bottom = form.lblHead.Top() + form.lblHead.Height();
  const int space_above = form.lblMessage.Top() - head_bottom;
  const int space_below = form.linSeparator.Y1() -
                          (form.lblMessage.Top() + form.lblMessage.Height());
  EXPECT_GT(space_above, 0);
  EXPECT_LE(std::abs(space_above - space_below), 1);
}

TEST_F(DialogsTest, MessageWithoutAHeadIsCentredAboveTheLine) {
  MeasureEveryTextAs(6000);  // two lines
  frmMsgInfrm& form =
      Notice("", "Sorry, Uploading Photo(s) has been cancelled.");
  const int height = form.lblMessage.Height();
  ASSERT_EQ(height, 480);
  const int space_above = form.lblMessage.Top();
  const int space_below = form.linSeparator.Y1() - (space_above + height);
  EXPECT_LE(std::abs(space_above - space_below), 1);
  const int left = form.lblMessage.Left();
  const int right = form.Width() - (left + form.lblMessage.Width());
  EXPECT_LE(std::abs(left - right), 1);
}

TEST_F(DialogsTest, NoticeShowsTitleAndCentredButtonAndEnterClosesIt) {
  frmMsgInfrm& form = Notice("Sorry", "Your Order has been cancelled.");
  EXPECT_EQ(form.Caption(), "Quillbay Picture Desk");
  EXPECT_EQ(form.imgOK.Picture(), Button("26N"));
  const int left = form.imgOK.Left();
  const int right = form.Width() - (left + form.imgOK.Width());
  EXPECT_LE(std::abs(left - right), 1);

  host_->Queue("enter", [this] {
    user::PressKeys(*app_->forms().Find<frmMsgInfrm>(), "{ENTER}");
  });
  form.Show(/*modal=*/true);
  EXPECT_EQ(app_->forms().Find<frmMsgInfrm>(), nullptr);
  EXPECT_EQ(session().gsInfoHead, "");
  EXPECT_EQ(session().gsInfoMessage, "");
}

TEST_F(DialogsTest, NoticeButtonShowsHoverPressedNormalAndClosesOnClick) {
  frmMsgInfrm& form = Notice("Done", "");
  form.Show();
  user::MouseMove(form.imgOK, 10, 10);
  EXPECT_EQ(form.imgOK.Picture(), Button("26O"));
  user::MouseDown(form.imgOK, 1, 10, 10);
  EXPECT_EQ(form.imgOK.Picture(), Button("26D"));
  user::MouseUp(form.imgOK, 1, 10, 10);
  EXPECT_EQ(form.imgOK.Picture(), Button("26N"));
  user::MouseMove(form.imgOK, 10, 10);
  form.ShowDefImages();
  EXPECT_EQ(form.imgOK.Picture(), Button("26N"));

  user::Click(form.imgOK);
  app_->forms().CollectGarbage();
  EXPECT_EQ(app_->forms().Find<frmMsgInfrm>(), nullptr);
  EXPECT_EQ(session().gsInfoHead, "");
}

TEST_F(DialogsTest, AboutBoxShowsTitleVersionAndClosesOnEnterOrEscape) {
  ASSERT_TRUE(
      app_->settings().Write(kRootKey, "Version", std::string("2.4.1") + '\0'));
  for (const char* key : {"{ENTER}", "{ESC}"}) {
    frmAboutUs& form = app_->forms().Get<frmAboutUs>();
    EXPECT_EQ(form.Caption(), "About Quillbay Picture Desk");
    EXPECT_EQ(form.lblVersion.Caption(), "Version 2.4.1");
    EXPECT_EQ(form.imgLogo.Picture(), Button("G10"));
    EXPECT_EQ(form.imgOK.Picture(), Button("26N"));
    form.Show();
    user::PressKeys(form, key);
    app_->forms().CollectGarbage();
    EXPECT_EQ(app_->forms().Find<frmAboutUs>(), nullptr) << key;
  }
}

}  // namespace
}  // namespace qbpd
