#include "core/help.h"

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/scripted_host.h"
#include "platform/forms/user_input.h"
#include "platform/places.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

// A form with a help topic and a "help" label that presses F1 for the user,
// as the program's dialogs do.
class frmHelpful : public Form {
 public:
  static constexpr std::string_view kName = "frmHelpful";
  explicit frmHelpful(Host& host) : Form(host, std::string(kName)) {
    On("lblHelp", "Click",
       [this](EventArgs&) { this->host().SendKeys("{F1}"); });
  }
  Label lblHelp{*this, "lblHelp"};
  TextBox txtName{*this, "txtName"};
};

class HelpTest : public ::testing::Test {
 protected:
  HelpTest() {
    auto host = std::make_unique<ScriptedHost>();
    host_ = host.get();
    auto launcher = MakeRecordingLauncher();
    launcher_ = launcher.get();
    PlatformServices services;
    services.resources = FindResourcesFolder(FindPlaces());
    services.launcher = std::move(launcher);
    app_ = std::make_unique<Application>(
        std::move(host), std::move(services), [](Application& app) {
          Host* h = &app.host();
          app.forms().Register<frmHelpful>(
              [h] { return std::make_unique<frmHelpful>(*h); });
        });
  }

  frmHelpful& form() { return app_->forms().Get<frmHelpful>(); }
  std::string PagePath(std::string_view page) {
    return (fs::path(app_->resources_folder()) / "help" / std::string(page))
        .string();
  }

  ScriptedHost* host_;
  RecordingLauncher* launcher_;
  std::unique_ptr<Application> app_;
};

TEST_F(HelpTest, F1OpensThePageOfTheFormsContext) {
  ASSERT_FALSE(app_->resources_folder().empty());
  form().SetHelpContextID(kHelpShare);
  form().Show();
  user::PressKeys(form(), "{F1}");
  // Typed into a text box, F1 still reaches the form's help, and types
  // nothing.
  form().SetProperty("HelpContextID", 7);
  user::TypeKeys(form().txtName, "{F1}");
  EXPECT_EQ(form().txtName.Text(), "");
  // A number without a topic opens the contents.
  form().SetHelpContextID(4242);
  user::PressKeys(form(), "{F1}");
  // A KeyDown handler that drops the key keeps the help shut.
  form().On("txtName", "KeyDown", [](EventArgs& e) { e.KeyCode = 0; });
  user::TypeKeys(form().txtName, "{F1}");
  EXPECT_EQ(launcher_->Opened(),
            (std::vector<std::string>{PagePath("share.html"),
                                      PagePath("cropping.html"),
                                      PagePath("index.html")}));
}

TEST_F(HelpTest, SentF1ArrivesAtTheNextPumpOnTheActiveForm) {
  form().SetHelpContextID(kHelpOrderPrints);
  form().Show();
  user::Click(form().lblHelp);
  EXPECT_TRUE(launcher_->Opened().empty());  // not before the pump
  host_->DoEvents();
  EXPECT_EQ(launcher_->Opened(),
            (std::vector<std::string>{PagePath("order-prints.html")}));
}

TEST(HelpMapTest, OperationGivesTheMainWindowsTopic) {
  struct Case {
    int operation;
    int context;
  };
  const Case cases[] = {
      {1, 7}, {4, 8}, {5, 9}, {0, 6}, {2, 6}, {3, 6}, {6, 6}, {13, 6}, {-1, 6},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(HelpContextForOperation(c.operation), c.context) << c.operation;
  }
}

TEST(HelpMapTest, EveryTopicHasItsPageAndTheContentsLinkToIt) {
  const fs::path help = fs::path(FindResourcesFolder(FindPlaces())) / "help";
  const std::string contents = testing::ReadFile(help / "index.html");
  ASSERT_FALSE(contents.empty());
  std::set<int> contexts;
  std::set<std::string_view> pages;
  for (const HelpTopic& topic : HelpTopics()) {
    EXPECT_TRUE(contexts.insert(topic.context).second) << topic.context;
    EXPECT_TRUE(pages.insert(topic.page).second) << topic.page;
    const std::string page = testing::ReadFile(help / std::string(topic.page));
    EXPECT_NE(page.find("<title>"), std::string::npos) << topic.page;
    if (topic.context != kHelpContents) {
      EXPECT_NE(contents.find("href=\"" + std::string(topic.page) + "\""),
                std::string::npos)
          << topic.page;
    }
  }
  for (int context : {6, 7, 8, 9}) {
    EXPECT_EQ(contexts.count(context), 1u) << context;
  }
}

TEST(HelpMapTest, AMissingHelpFolderOpensNothingAndSaysSo) {
  testing::TempDir dir;
  auto launcher = MakeRecordingLauncher();
  RecordingLauncher* recorded = launcher.get();
  PlatformServices services;
  services.resources = dir.path().string();  // no help folder in it
  services.launcher = std::move(launcher);
  Application app(std::make_unique<ScriptedHost>(), std::move(services),
                  nullptr);
  LaunchResult result = ShowHelp(app, kHelpBrowsing);
  EXPECT_FALSE(result.ok);
  EXPECT_NE(result.error.find("browsing-photos.html"), std::string::npos);
  EXPECT_TRUE(recorded->Opened().empty());
}

}  // namespace
}  // namespace qbpd
