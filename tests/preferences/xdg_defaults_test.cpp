#include "platform/default_viewer.h"
#include "platform/session_autostart.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::TempDir;

constexpr char kProgram[] = "quillbay-picture-desk.desktop";

// A user's mimeapps.list with other associations around the JPEG one.
constexpr char kList[] =
    "[Default Applications]\n"
    "text/plain=org.gnome.TextEditor.desktop\n"
    "image/jpeg=org.gnome.eog.desktop;\n"
    "image/png=org.gnome.eog.desktop;\n"
    "\n"
    "[Added Associations]\n"
    "image/jpeg=org.gnome.eog.desktop;gimp.desktop;\n";

class XdgDefaultViewerTest : public ::testing::Test {
 protected:
  XdgDefaultViewerTest() {
    // The desktop entries xdg-mime looks for; their programs must exist.
    for (const char* entry : {kProgram, "org.gnome.eog.desktop",
                              "org.gnome.TextEditor.desktop", "gimp.desktop"}) {
      dir_.WriteFile(std::string("data/applications/") + entry,
                     "[Desktop Entry]\nType=Application\nName=x\nExec=sh "
                     "%f\n");
    }
    fs::create_directories(dir_ / "config");
    fs::create_directories(dir_ / "system");
    viewer_ = MakeXdgDefaultViewer(Config(), kProgram,
                                   (dir_ / "config/qbpd/before").string());
  }

  std::string Config() const { return (dir_ / "config").string(); }
  std::string List() const { return ReadFile(dir_ / "config/mimeapps.list"); }

  // What xdg-mime says the default of `type` is, in this private setting.
  std::string Query(const std::string& type) const {
    const std::string command =
        "env -i PATH=/usr/bin:/bin HOME='" + dir_.path().string() +
        "' XDG_CONFIG_HOME='" + Config() + "' XDG_CONFIG_DIRS='" +
        (dir_ / "system").string() + "' XDG_DATA_HOME='" +
        (dir_ / "data").string() + "' XDG_DATA_DIRS='" +
        (dir_ / "system").string() + "' xdg-mime query default " + type;
    std::string out;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
      char buffer[256];
      while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
        out += buffer;
      }
      ::pclose(pipe);
    }
    while (!out.empty() && out.back() == '\n') {
      out.pop_back();
    }
    return out;
  }

  void SetUp() override {
    if (std::system("command -v xdg-mime >/dev/null 2>&1") != 0) {
      GTEST_SKIP() << "xdg-mime (xdg-utils) is not installed";
    }
  }

  TempDir dir_;
  std::unique_ptr<DefaultViewer> viewer_;
};

TEST_F(XdgDefaultViewerTest, RoundTripGivesTheTypeBackAndKeepsTheRest) {
  dir_.WriteFile("config/mimeapps.list", kList);
  ASSERT_EQ(Query("image/jpeg"), "org.gnome.eog.desktop");
  EXPECT_FALSE(viewer_->IsDefault());

  EXPECT_EQ(viewer_->SetDefault(true), "");
  EXPECT_EQ(Query("image/jpeg"), kProgram);
  EXPECT_TRUE(viewer_->IsDefault());
  EXPECT_EQ(Query("text/plain"), "org.gnome.TextEditor.desktop");
  EXPECT_EQ(Query("image/png"), "org.gnome.eog.desktop");
  std::string expected = kList;
  expected.replace(expected.find("image/jpeg=org.gnome.eog.desktop;\n"),
                   std::string("image/jpeg=org.gnome.eog.desktop;").size(),
                   std::string("image/jpeg=") + kProgram + ";");
  EXPECT_EQ(List(), expected);

  // Ticking again remembers nothing new.
  EXPECT_EQ(viewer_->SetDefault(true), "");
  EXPECT_EQ(viewer_->SetDefault(false), "");
  EXPECT_EQ(Query("image/jpeg"), "org.gnome.eog.desktop");
  EXPECT_EQ(List(), kList);
}

TEST_F(XdgDefaultViewerTest, WithoutAHandlerBeforeTheTypeGoesBackToNone) {
  const std::string list =
      "[Default Applications]\ntext/plain=org.gnome.TextEditor.desktop\n";
  dir_.WriteFile("config/mimeapps.list", list);
  ASSERT_EQ(Query("image/jpeg"), "");
  EXPECT_EQ(viewer_->SetDefault(true), "");
  EXPECT_EQ(Query("image/jpeg"), kProgram);
  EXPECT_EQ(viewer_->SetDefault(false), "");
  EXPECT_EQ(Query("image/jpeg"), "");
  EXPECT_EQ(List(), list);
}

TEST_F(XdgDefaultViewerTest, ANewFileGetsTheSection) {
  EXPECT_EQ(viewer_->SetDefault(true), "");
  EXPECT_EQ(List(), std::string("[Default Applications]\nimage/jpeg=") +
                        kProgram + ";\n");
  EXPECT_EQ(Query("image/jpeg"), kProgram);
  // A file without the section and without a last line feed keeps its text.
  dir_.WriteFile("config/mimeapps.list",
                 "[Added Associations]\nimage/png=gimp.desktop;");
  EXPECT_EQ(viewer_->SetDefault(true), "");
  EXPECT_EQ(List(), std::string("[Added Associations]\nimage/png=gimp."
                                "desktop;\n\n[Default Applications]\n"
                                "image/jpeg=") +
                        kProgram + ";\n");
  EXPECT_EQ(Query("image/jpeg"), kProgram);
}

TEST_F(XdgDefaultViewerTest, BlanksAroundTheEqualsSignAreRead) {
  dir_.WriteFile("config/mimeapps.list",
                 std::string("[Default Applications]\nimage/jpeg = ") +
                     kProgram + " ; gimp.desktop;\n");
  EXPECT_TRUE(viewer_->IsDefault());
  // Unticked with nothing remembered: the line goes.
  EXPECT_EQ(viewer_->SetDefault(false), "");
  EXPECT_EQ(List(), "[Default Applications]\n");
}

TEST_F(XdgDefaultViewerTest, AChoiceMadeSinceIsLeftAlone) {
  dir_.WriteFile("config/mimeapps.list", kList);
  EXPECT_EQ(viewer_->SetDefault(true), "");
  // The user picks another viewer with the desktop's own tool.
  const std::string list = List();
  dir_.WriteFile(
      "config/mimeapps.list",
      list.substr(0, list.find("image/jpeg=")) + "image/jpeg=gimp.desktop;" +
          list.substr(list.find(";\n", list.find("image/jpeg=")) + 1));
  ASSERT_EQ(Query("image/jpeg"), "gimp.desktop");
  EXPECT_EQ(viewer_->SetDefault(false), "");
  EXPECT_EQ(Query("image/jpeg"), "gimp.desktop");
}

TEST_F(XdgDefaultViewerTest, AListThatCantBeWrittenChangesNothing) {
  // A folder where the file should be: neither read nor replaced.
  fs::create_directories(dir_ / "config/mimeapps.list");
  EXPECT_NE(viewer_->SetDefault(true), "");
  EXPECT_TRUE(fs::is_directory(dir_ / "config/mimeapps.list"));
  EXPECT_FALSE(viewer_->IsDefault());
}

TEST(NoDefaultViewerTest, EveryChangeFails) {
  auto viewer = MakeNoDefaultViewer();
  EXPECT_FALSE(viewer->IsDefault());
  EXPECT_NE(viewer->SetDefault(true), "");
}

TEST(XdgAutostartTest, TheEntryTurnsOnAndOff) {
  TempDir dir;
  auto autostart =
      MakeXdgAutostart(dir.path().string(), "/opt/qbpd dir/qbpd-devmon");
  // No entry of the user's own: the installed one starts.
  EXPECT_TRUE(autostart->DeviceMonitorStarts());
  EXPECT_EQ(autostart->SetDeviceMonitorStarts(false), "");
  const std::string off = ReadFile(dir / "autostart/qbpd-devmon.desktop");
  EXPECT_NE(off.find("\nHidden=true\n"), std::string::npos);
  EXPECT_NE(off.find("\nExec=\"/opt/qbpd dir/qbpd-devmon\"\n"),
            std::string::npos);
  EXPECT_FALSE(autostart->DeviceMonitorStarts());
  EXPECT_EQ(autostart->SetDeviceMonitorStarts(true), "");
  const std::string on = ReadFile(dir / "autostart/qbpd-devmon.desktop");
  EXPECT_NE(on.find("\nHidden=false\n"), std::string::npos);
  EXPECT_NE(on.find("\nX-GNOME-Autostart-enabled=true\n"), std::string::npos);
  EXPECT_TRUE(autostart->DeviceMonitorStarts());
}

TEST(XdgAutostartTest, AFolderThatCantBeMadeFails) {
  TempDir dir;
  dir.WriteFile("autostart", "a file in the way");
  auto autostart = MakeXdgAutostart(dir.path().string(), "/usr/bin/qbpd");
  EXPECT_NE(autostart->SetDeviceMonitorStarts(false), "");
  EXPECT_EQ(ReadFile(dir / "autostart"), "a file in the way");
  EXPECT_NE(MakeNoAutostart()->SetDeviceMonitorStarts(true), "");
}

}  // namespace
}  // namespace qbpd
