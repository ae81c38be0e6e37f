#include "core/quil_mod.h"
#include "platform/forms/user_input.h"
#include "tests/browser/main_window_fixture.h"

#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr char kInvalid[] = "Please enter valid characters for file name";

class NameStripTest : public testing_support::MainWindowTest {
 protected:
  // Starts on `names` (written in this order) and shows the photo named
  // `shown`.
  void StartOn(const std::vector<std::string>& names,
               const std::string& shown) {
    int grey = 30;
    for (const std::string& name : names) {
      WritePhoto(name, 64, 48, grey += 40);
    }
    Start();
    for (int key : session().gdicPhotoList.Keys()) {
      if (FileNamePart(session().gdicPhotoList.Item(key)) == shown) {
        if (key != session().giCurrentPhotoIndex) {
          user::Click(main().ctrlQuilImage[key]);
        }
        index_ = key;
      }
    }
    ASSERT_EQ(FileNamePart(session().gsSelectedImage), shown);
  }
  void OpenName() { user::DblClick(main().lblDisplayImageName); }
  void Type(const std::string& keys) {
    user::TypeKeys(main().txtFileName, keys);
  }
  bool Editing() { return main().txtFileName.Visible(); }
  std::string Photo(const std::string& name) const {
    return (photos() / name).string();
  }
  int index_ = -1;
};

TEST_F(NameStripTest, ANewNameRenamesTheFileAndEveryPlaceThatHoldsIt) {
  StartOn({"p0.jpg", "p1.jpg"}, "p0.jpg");
  user::SetCheck(main().ctrlQuilImage[index_], true);
  OpenName();
  ASSERT_TRUE(Editing());
  EXPECT_EQ(main().txtFileName.Text(), "p0");
  // Ctrl+A selects the whole name, so typing replaces it.
  Type("^abeach{ENTER}");
  EXPECT_TRUE(Messages().empty());
  const std::string renamed = Photo("beach.jpg");
  EXPECT_TRUE(fs::exists(renamed));
  EXPECT_FALSE(fs::exists(Photo("p0.jpg")));
  EXPECT_EQ(session().gsSelectedImage, renamed);
  EXPECT_EQ(session().gdicPhotoList.Item(index_), renamed);
  EXPECT_EQ(session().gdicSelectedPhotos.Item(index_), renamed);
  Thumbnail& thumb = main().ctrlQuilImage[index_];
  EXPECT_EQ(thumb.PhotoPath(), renamed);
  EXPECT_EQ(thumb.ToolTipText(), "beach.jpg");
  EXPECT_EQ(thumb.ToolText(), "beach.jpg");
  EXPECT_EQ(main().lblDisplayImageName.Caption(), "beach");
  EXPECT_FALSE(Editing());
}

TEST_F(NameStripTest, AnotherFilesNameIsRefusedAndBothFilesStay) {
  StartOn({"p0.jpg", "p1.jpg"}, "p0.jpg");
  const std::string p0 = testing::ReadFile(Photo("p0.jpg"));
  const std::string p1 = testing::ReadFile(Photo("p1.jpg"));
  OpenName();
  Answer(kIdOk);
  Type("^ap1{ENTER}");
  ASSERT_EQ(host().MessageBoxes().size(), 1u);
  const MsgBoxCall& box = host().MessageBoxes()[0];
  EXPECT_EQ(box.prompt,
            "Cannot rename p0: A file with the name you specified already "
            "exists.");
  EXPECT_EQ(box.style, kMbStop);
  EXPECT_EQ(box.title, "Quillbay Picture Desk");
  EXPECT_EQ(testing::ReadFile(Photo("p0.jpg")), p0);
  EXPECT_EQ(testing::ReadFile(Photo("p1.jpg")), p1);
  EXPECT_EQ(main().lblDisplayImageName.Caption(), "p0");
  EXPECT_FALSE(Editing());
}

TEST_F(NameStripTest, CaseIsNoRenameButAnotherFileInOtherCaseIsNoClash) {
  StartOn({"p0.jpg", "beach.jpg"}, "p0.jpg");
  // The same name in capitals: nothing happens on disk.
  OpenName();
  Type("^aP0{ENTER}");
  EXPECT_TRUE(Messages().empty());
  EXPECT_TRUE(fs::exists(Photo("p0.jpg")));
  EXPECT_FALSE(fs::exists(Photo("P0.jpg")));
  EXPECT_EQ(session().gsSelectedImage, Photo("p0.jpg"));
  EXPECT_FALSE(Editing());

  // "Beach.jpg" is not "beach.jpg" on this file system: the rename goes on
  // and both photos are there afterwards.
  const std::string beach = testing::ReadFile(Photo("beach.jpg"));
  OpenName();
  Type("^aBeach{ENTER}");
  EXPECT_TRUE(Messages().empty());
  EXPECT_TRUE(fs::exists(Photo("Beach.jpg")));
  EXPECT_EQ(testing::ReadFile(Photo("beach.jpg")), beach);
  EXPECT_FALSE(fs::exists(Photo("p0.jpg")));
}

TEST_F(NameStripTest, TheNineRefusedCharactersAreDroppedAsTheyAreTyped) {
  StartOn({"p0.jpg"}, "p0.jpg");
  OpenName();
  const std::string refused = "/\\|<>:\"?*";
  for (char c : refused) {
    Answer(kIdOk);
    Type(std::string(1, c));
  }
  EXPECT_EQ(Messages(), std::vector<std::string>(refused.size(), kInvalid));
  EXPECT_EQ(main().txtFileName.Text(), "p0");
  // Everything else goes in, dots and blanks included.
  Type("{END} v1.2 & co");
  EXPECT_EQ(main().txtFileName.Text(), "p0 v1.2 & co");
  Type("{ENTER}");
  EXPECT_TRUE(fs::exists(Photo("p0 v1.2 & co.jpg")));
}

TEST_F(NameStripTest, ANameThatCannotBeAFileNameStaysOpenOrIsReset) {
  StartOn({"p0.jpg"}, "p0.jpg");
  OpenName();
  // A pasted name may hold a refused character; the commit finds it.
  main().txtFileName.SetText("a:b");
  Answer(kIdOk);
  Type("{ENTER}");
  EXPECT_EQ(Messages().back(), kInvalid);
  EXPECT_TRUE(Editing());

  main().txtFileName.SetText(".hidden");
  Answer(kIdOk);
  Type("{ENTER}");
  EXPECT_EQ(Messages().back(), "You must type a file name");
  EXPECT_TRUE(Editing());
  EXPECT_FALSE(fs::exists(Photo(".hidden.jpg")));

  main().txtFileName.SetText("   ");
  Answer(kIdOk);
  Type("{ENTER}");
  EXPECT_EQ(Messages().back(),
            "You have not entered file name. The original file name will be "
            "reset");
  EXPECT_FALSE(Editing());
  EXPECT_EQ(main().lblDisplayImageName.Caption(), "p0");
  EXPECT_TRUE(fs::exists(Photo("p0.jpg")));
}

TEST_F(NameStripTest, EscapeBringsBackTheShortenedNameNotTheTypedOne) {
  const std::string base(90, 'n');
  StartOn({base + ".jpg"}, base + ".jpg");
  const std::string shown = main().lblDisplayImageName.Caption();
  ASSERT_LT(shown.size(), base.size());
  ASSERT_EQ(shown.substr(shown.size() - 3), "...");

  OpenName();
  EXPECT_EQ(main().txtFileName.Text(), base);
  Type("{BACKSPACE 5}typed");
  Type("{ESC}");
  EXPECT_FALSE(Editing());
  EXPECT_TRUE(main().lblDisplayImageName.Visible());
  EXPECT_EQ(main().lblDisplayImageName.Caption(), shown);
  EXPECT_EQ(main().txtFileName.Text(), shown);
  EXPECT_EQ(main().txtFileName.Tag(), base);
  EXPECT_TRUE(fs::exists(Photo(base + ".jpg")));
  EXPECT_TRUE(Messages().empty());
}

TEST_F(NameStripTest, AFolderThatRefusesWritesRefusesToOpenTheName) {
  if (::geteuid() == 0) {
    GTEST_SKIP() << "the superuser may write into any folder";
  }
  StartOn({"p0.jpg"}, "p0.jpg");
  fs::permissions(photos(), fs::perms::owner_read | fs::perms::owner_exec);
  Answer(kIdOk);
  OpenName();
  fs::permissions(photos(), fs::perms::owner_all);
  EXPECT_EQ(Messages(),
            std::vector<std::string>{
                "Cannot rename p0: Access is denied. \r\n\r\nMake sure the "
                "disk is not full or write-protected \r\nand that the file is "
                "not currently in use."});
  EXPECT_FALSE(Editing());
}

}  // namespace
}  // namespace qbpd
