// A folder read once for the grid: its plain files (links counting as what
// they point to), with the stale temporary files of killed writes removed
// on the way; and the early answer to whether a folder holds a photo.

#include "platform/folder_listing.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

enum class Kind {
  kFile,
  kFolder,
  kLinkToFile,
  kLinkToFolder,
  kDanglingLink,
  kPipe,
  kStaleTemporary,  // left by a killed write: no writer holds it
  kHeldTemporary,   // a writer holds its lock
};

struct Entry {
  const char* name;
  Kind kind;
  bool listed;  // whether ListPlainFiles gives it
  bool kept;    // whether it is still there afterwards
};

// Makes `entry` in `folder`; a held temporary's lock stays with `held`.
void Make(const TempDir& folder, const Entry& entry, std::vector<int>& held) {
  const fs::path path = folder / entry.name;
  switch (entry.kind) {
    case Kind::kFile:
    case Kind::kStaleTemporary:
      folder.WriteFile(entry.name, "data");
      break;
    case Kind::kHeldTemporary: {
      folder.WriteFile(entry.name, "being written");
      const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
      ASSERT_GE(fd, 0);
      ASSERT_EQ(::flock(fd, LOCK_EX), 0);
      held.push_back(fd);
      break;
    }
    case Kind::kFolder:
      fs::create_directory(path);
      break;
    case Kind::kLinkToFile:
      folder.WriteFile("target-file.dat", "data");
      fs::create_symlink(folder / "target-file.dat", path);
      break;
    case Kind::kLinkToFolder:
      fs::create_directories(folder / "target-folder");
      fs::create_symlink(folder / "target-folder", path);
      break;
    case Kind::kDanglingLink:
      fs::create_symlink(folder / "nowhere", path);
      break;
    case Kind::kPipe:
      ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
      break;
  }
}

TEST(FolderListingTest, ListsThePlainFilesAndRemovesStaleTemporaries) {
  const std::vector<Entry> entries = {
      {"b.jpg", Kind::kFile, true, true},
      {"A.JPG", Kind::kFile, true, true},
      {"notes.txt", Kind::kFile, true, true},
      {".hidden.png", Kind::kFile, true, true},
      {"sub.jpg", Kind::kFolder, false, true},
      {"link.jpg", Kind::kLinkToFile, true, true},
      {"folder-link.jpg", Kind::kLinkToFolder, false, true},
      {"gone.jpg", Kind::kDanglingLink, false, true},
      {"pipe.jpg", Kind::kPipe, false, true},
      {".photo.jpg.qbpd-AbC123", Kind::kStaleTemporary, false, false},
      {".other.jpg.qbpd-XyZ789", Kind::kHeldTemporary, true, true},
      // Not the program's temporary naming: an ordinary file.
      {"photo.jpg.qbpd-AbC123", Kind::kFile, true, true},
  };
  TempDir folder;
  std::vector<int> held;
  for (const Entry& entry : entries) {
    Make(folder, entry, held);
  }
  std::vector<std::string> expected = {"target-file.dat"};
  for (const Entry& entry : entries) {
    if (entry.listed) {
      expected.push_back(entry.name);
    }
  }
  // Given with and without the separator at its end.
  for (const std::string& given :
       {folder.path().string(), folder.path().string() + "/"}) {
    std::vector<std::string> names = ListPlainFiles(given);
    std::sort(names.begin(), names.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(names, expected) << given;
  }
  for (const Entry& entry : entries) {
    std::error_code error;
    EXPECT_EQ(fs::exists(fs::symlink_status(folder / entry.name, error)),
              entry.kept)
        << entry.name;
  }
  for (const int fd : held) {
    ::close(fd);
  }
}

TEST(FolderListingTest, AFolderThatCannotBeReadListsNothing) {
  TempDir temp;
  temp.WriteFile("file.jpg", "data");
  for (const fs::path& folder :
       {temp / "missing", temp / "file.jpg", fs::path()}) {
    EXPECT_TRUE(ListPlainFiles(folder.string()).empty()) << folder;
    EXPECT_FALSE(HoldsPlainFile(folder.string(), [](std::string_view) {
      return true;
    })) << folder;
  }
}

bool IsJpg(std::string_view name) {
  return name.size() > 4 && name.substr(name.size() - 4) == ".jpg";
}

TEST(FolderListingTest, HoldsAFileOnlyForAPlainFileTheNameTestAccepts) {
  struct Case {
    const char* what;
    std::vector<Entry> entries;
    bool holds;
  };
  const std::vector<Case> cases = {
      {"empty", {}, false},
      {"a photo", {{"a.jpg", Kind::kFile, true, true}}, true},
      {"only other names", {{"a.tif", Kind::kFile, true, true}}, false},
      {"a folder of that name", {{"a.jpg", Kind::kFolder, false, true}}, false},
      {"a link to a photo", {{"a.jpg", Kind::kLinkToFile, true, true}}, true},
      {"a link to a folder",
       {{"a.jpg", Kind::kLinkToFolder, false, true}},
       false},
      {"a dangling link", {{"a.jpg", Kind::kDanglingLink, false, true}}, false},
      {"a pipe", {{"a.jpg", Kind::kPipe, false, true}}, false},
      {"a photo among others",
       {{"x.tif", Kind::kFile, true, true},
        {"y.jpg", Kind::kFolder, false, true},
        {"z.jpg", Kind::kFile, true, true}},
       true},
  };
  for (const Case& c : cases) {
    TempDir folder;
    std::vector<int> held;
    for (const Entry& entry : c.entries) {
      Make(folder, entry, held);
    }
    EXPECT_EQ(HoldsPlainFile(folder.path().string(), IsJpg), c.holds) << c.what;
  }
}

TEST(FolderListingTest, HoldingStopsAtTheFirstFileFound) {
  TempDir folder;
  for (int i = 0; i < 200; ++i) {
    folder.WriteFile("photo" + std::to_string(i) + ".jpg", "data");
  }
  int asked = 0;
  EXPECT_TRUE(
      HoldsPlainFile(folder.path().string(), [&asked](std::string_view name) {
        ++asked;
        return IsJpg(name);
      }));
  EXPECT_EQ(asked, 1);
}

}  // namespace
}  // namespace qbpd
