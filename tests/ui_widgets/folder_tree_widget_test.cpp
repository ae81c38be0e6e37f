#include "ui/qt/folder_tree_widget.h"

#include "platform/forms/controls.h"
#include "tests/support/temp_dir.h"
#include "tests/ui_widgets/widget_test_form.h"

#include <QTest>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace qbpd::testing {
namespace {

namespace fs = std::filesystem;

class FolderTreeWidgetTest : public ::testing::Test {
 protected:
  FolderTreeWidgetTest() : form_(host_) {
    // home/ with a desktop inside it, as on a real machine, and a medium.
    for (const char* folder :
         {"home/Desktop/Trip", "home/pictures/2024/summer", "home/Pictures",
          "home/alpha", "media/STICK/DCIM"}) {
      fs::create_directories(dir_ / folder);
    }
    dir_.WriteFile("home/photo.jpg", "not a folder");
    tree().Move(0, 0, 250 * kTwipsPerPixel, 300 * kTwipsPerPixel);
  }

  FolderTree& tree() { return form_.ExpTreeView; }
  QString Path(const std::string& relative) const {
    return QString::fromStdString((dir_ / relative).string());
  }

  FolderTreeWidget& Show() {
    widget_ = std::make_unique<FolderTreeWidget>(
        tree(),
        std::vector<FolderRoot>{{"Desktop", Path("home/Desktop"), "Desktop"},
                                {"Home", Path("home"), Path("home")},
                                {"/media", Path("media"), Path("media")}},
        nullptr);
    widget_->resize(250, 300);
    widget_->show();
    return *widget_;
  }

  // The names under a folder as the tree lists them.
  std::vector<std::string> Children(FolderTreeWidget& w, const QString& path) {
    const QModelIndex parent = w.IndexOf(path);
    if (w.model()->canFetchMore(parent)) {
      w.model()->fetchMore(parent);
    }
    std::vector<std::string> names;
    for (int row = 0; row < w.model()->rowCount(parent); ++row) {
      names.push_back(
          w.model()->index(row, 0, parent).data().toString().toStdString());
    }
    return names;
  }

  void ClickOn(FolderTreeWidget& w, const QModelIndex& index) {
    const QRect row = w.visualRect(index);
    ASSERT_TRUE(row.isValid());
    QTest::mouseClick(w.viewport(), Qt::LeftButton, {}, row.center());
  }

  ScriptedHost host_;
  frmWidgets form_;
  TempDir dir_;
  std::unique_ptr<FolderTreeWidget> widget_;
};

TEST_F(FolderTreeWidgetTest, ListsFoldersOnlyByNameWithoutCase) {
  FolderTreeWidget& w = Show();
  EXPECT_EQ(
      Children(w, Path("home")),
      (std::vector<std::string>{"alpha", "Desktop", "pictures", "Pictures"}));
  ASSERT_EQ(w.model()->rowCount({}), 3);
  EXPECT_EQ(w.model()->index(0, 0, {}).data().toString(), "Desktop");
  // A folder is read when it is opened; an empty one has no arrow.
  EXPECT_TRUE(w.model()->hasChildren(w.IndexOf(Path("media/STICK"))));
  EXPECT_FALSE(w.model()->hasChildren(w.IndexOf(Path("home/alpha"))));
}

TEST_F(FolderTreeWidgetTest, ClickRaisesMouseDownFolderClickMouseUp) {
  FolderTreeWidget& w = Show();
  const QModelIndex media = w.IndexOf(Path("media"));
  w.expand(media);
  ClickOn(w, w.IndexOf(Path("media/STICK")));
  ASSERT_EQ(form_.events.size(), 3u);
  EXPECT_EQ(form_.events[0].rfind("ExpTreeView.MouseDown 1 ", 0), 0u);
  EXPECT_EQ(form_.events[1],
            "ExpTreeView.FolderClick " + Path("media/STICK").toStdString());
  EXPECT_EQ(form_.events[2].rfind("ExpTreeView.MouseUp 1 ", 0), 0u);
  EXPECT_EQ(tree().SelectedFolder(), Path("media/STICK").toStdString());
  EXPECT_EQ(form_.ActiveControl(), &tree());

  // The desktop entry is chosen as the word "Desktop".
  form_.events.clear();
  ClickOn(w, w.model()->index(0, 0, {}));
  EXPECT_EQ(tree().SelectedFolder(), "Desktop");
  ASSERT_EQ(form_.events.size(), 3u);
  EXPECT_EQ(form_.events[1], "ExpTreeView.FolderClick Desktop");

  // A click on the folder already chosen chooses nothing new.
  form_.events.clear();
  ClickOn(w, w.model()->index(0, 0, {}));
  for (const std::string& e : form_.events) {
    EXPECT_EQ(e.find("FolderClick"), std::string::npos);
  }
}

TEST_F(FolderTreeWidgetTest, ArrowKeysRaiseKeyDownFolderClickKeyUp) {
  FolderTreeWidget& w = Show();
  ClickOn(w, w.model()->index(0, 0, {}));
  form_.events.clear();
  QTest::keyClick(&w, Qt::Key_Down);
  EXPECT_EQ(form_.events,
            (std::vector<std::string>{
                "ExpTreeView.KeyDown 40",
                "ExpTreeView.FolderClick " + Path("home").toStdString(),
                "ExpTreeView.KeyUp 40"}));
}

TEST_F(FolderTreeWidgetTest, SyncShowsTheProgramsFolderWithoutEvents) {
  FolderTreeWidget& w = Show();
  // The program's own choice raises the control's FolderClick once (the
  // control does that); the widget follows without raising anything more.
  tree().SetSelectedFolder(Path("home/pictures/2024/summer").toStdString() +
                           "/");
  widget_->Sync();
  EXPECT_EQ(form_.events.size(), 1u);
  const QModelIndex current = w.currentIndex();
  EXPECT_EQ(w.SelectionOf(current), Path("home/pictures/2024/summer"));
  EXPECT_TRUE(w.isExpanded(w.IndexOf(Path("home/pictures/2024"))));
  EXPECT_TRUE(w.isExpanded(w.IndexOf(Path("home"))));
  // Inside the desktop folder, the Desktop entry is the closer root.
  tree().SetSelectedFolder(Path("home/Desktop/Trip").toStdString());
  widget_->Sync();
  EXPECT_EQ(w.currentIndex().parent(), w.model()->index(0, 0, {}));
  tree().SetSelectedFolder("Desktop");
  widget_->Sync();
  EXPECT_EQ(w.currentIndex(), w.model()->index(0, 0, {}));
  // A folder that went away: the deepest one still there.
  tree().SetSelectedFolder(Path("media/STICK/gone/deeper").toStdString());
  widget_->Sync();
  EXPECT_EQ(w.SelectionOf(w.currentIndex()), Path("media/STICK"));
  // Outside every root: nothing chosen.
  tree().SetSelectedFolder("/nowhere/at/all");
  widget_->Sync();
  EXPECT_FALSE(w.currentIndex().isValid());
  EXPECT_EQ(form_.events.size(), 5u);
  for (const std::string& e : form_.events) {
    EXPECT_EQ(e.rfind("ExpTreeView.FolderClick", 0), 0u) << e;
  }
  SavePicture(w.grab().toImage(), "folder_tree");
}

TEST_F(FolderTreeWidgetTest, RefreshReadsTheDiskAgain) {
  FolderTreeWidget& w = Show();
  tree().SetSelectedFolder(Path("home/alpha").toStdString());
  widget_->Sync();
  fs::create_directories(dir_ / "home/beta");
  fs::remove_all(dir_ / "home/pictures");
  // Unchanged until the program asks for a refresh.
  EXPECT_EQ(
      Children(w, Path("home")),
      (std::vector<std::string>{"alpha", "Desktop", "pictures", "Pictures"}));
  tree().Refresh();
  form_.events.clear();
  widget_->Sync();
  EXPECT_EQ(Children(w, Path("home")),
            (std::vector<std::string>{"alpha", "beta", "Desktop", "Pictures"}));
  EXPECT_EQ(w.SelectionOf(w.currentIndex()), Path("home/alpha"));
  EXPECT_TRUE(form_.events.empty());
}

TEST(FolderRootsTest, DesktopFirstFileSystemLast) {
  const std::vector<FolderRoot> roots = DefaultFolderRoots();
  ASSERT_GE(roots.size(), 3u);
  EXPECT_EQ(roots.front().label, "Desktop");
  EXPECT_EQ(roots.front().selection, "Desktop");
  EXPECT_TRUE(roots.front().path.startsWith('/'));
  EXPECT_EQ(roots[1].label, "Home");
  EXPECT_EQ(roots.back().path, "/");
  for (const FolderRoot& root : roots) {
    EXPECT_TRUE(root.path == "/" || !root.path.endsWith('/'))
        << root.path.toStdString();
  }
}

}  // namespace
}  // namespace qbpd::testing
