#include "platform/drive_tokens.h"

#include "platform/mount_table.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

TEST(MountTableTest, RemovableMediaAreTheUsersMountsUnderMedia) {
  const std::vector<MountEntry> table = ParseMountTable(
      "/dev/vda / ext4 rw 0 0\n"
      "proc /proc proc rw 0 0\n"
      "/dev/sdb1 /media/ann/CANON\\040CARD vfat rw 0 0\n"
      "/dev/sdc1 /run/media/bob/SD vfat rw 0 0\n"
      "tmpfs /media/ram tmpfs rw 0 0\n"
      "broken\n");
  ASSERT_EQ(table.size(), 5u);
  EXPECT_EQ(table[2].folder, "/media/ann/CANON CARD");
  EXPECT_EQ(
      RemovableMediaFolders(table),
      (std::vector<std::string>{"/media/ann/CANON CARD", "/run/media/bob/SD"}));
}

TEST(DriveTokensTest, TokensStayWithTheirFolderAndAreGivenOutAgain) {
  testing::TempDir dir;
  const std::string table = (dir / kDriveTableName).string();
  std::vector<DriveToken> tokens;
  ASSERT_TRUE(AssignDriveTokens(table, {"/media/a", "/media/b"}, tokens));
  ASSERT_EQ(tokens.size(), 2u);
  EXPECT_EQ(tokens[0].token, "D:");
  EXPECT_EQ(tokens[1].token, "E:");
  EXPECT_EQ(DriveTokenFolder(table, "e:"), "/media/b");
  // /media/a went: /media/b keeps "E:", a new card gets the free "D:".
  ASSERT_TRUE(AssignDriveTokens(table, {"/media/b", "/media/c"}, tokens));
  EXPECT_EQ(tokens[0].token, "E:");
  EXPECT_EQ(tokens[1].token, "D:");
  EXPECT_EQ(DriveTokenFolder(table, "D:"), "/media/c");
  EXPECT_EQ(DriveTokenFolder(table, "F:"), "");
  EXPECT_TRUE(IsDriveText("D:"));
  EXPECT_FALSE(IsDriveText("Canon (usb:001,002)"));
}

TEST(DriveTokensTest, TwentyThreeLettersAtMost) {
  testing::TempDir dir;
  std::vector<std::string> folders;
  for (int i = 0; i < 30; ++i) {
    folders.push_back("/media/u/card" + std::to_string(i));
  }
  std::vector<DriveToken> tokens;
  ASSERT_TRUE(
      AssignDriveTokens((dir / kDriveTableName).string(), folders, tokens));
  ASSERT_EQ(tokens.size(), 23u);
  EXPECT_EQ(tokens.back().token, "Z:");
}

}  // namespace
}  // namespace qbpd
