// A write killed half-way leaves a temporary file of the program's own naming
// behind; the next visit to the folder removes it, and never a file that a
// living writer holds or a file of anyone else's.

#include "platform/atomic_file.h"

#include "platform/folder_listing.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

std::vector<std::string> Names(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// The file size limit stops the child's write after its first bytes; the
// signal that brings is turned into SIGKILL, so the child dies exactly in
// the middle of writing, as under kill -9.
void KillSelf(int) {
  ::kill(::getpid(), SIGKILL);
}

// Runs WriteFileAtomically of `size` bytes to `target` in a child process
// that is killed with SIGKILL after `limit` bytes. True when it died so.
bool WriteAndDie(const fs::path& target, std::size_t size, rlim_t limit) {
  const pid_t child = ::fork();
  if (child == 0) {
    std::signal(SIGXFSZ, KillSelf);
    const rlimit cap{limit, limit};
    ::setrlimit(RLIMIT_FSIZE, &cap);
    const std::string data(size, 'x');
    WriteFileAtomically(target.string(), data.data(), data.size());
    ::_exit(0);  // not reached: the write is killed
  }
  int status = 0;
  return child > 0 && ::waitpid(child, &status, 0) == child &&
         WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

TEST(AtomicFileTest,
     AWriteKilledHalfWayLeavesAStaleFileThatTheNextVisitRemoves) {
  TempDir temp;
  const fs::path target = temp / "photo.jpg";
  ASSERT_TRUE(WriteAndDie(target, 1 << 20, 4096));
  // Nothing of the photo under its name; a half-written temporary beside it.
  EXPECT_FALSE(fs::exists(target));
  const std::vector<std::string> left = Names(temp.path());
  ASSERT_EQ(left.size(), 1u);
  EXPECT_TRUE(IsTemporaryFileName(left[0])) << left[0];
  EXPECT_EQ(left[0].rfind(".photo.jpg.qbpd-", 0), 0u) << left[0];
  EXPECT_EQ(fs::file_size(temp / left[0]), 4096u);

  // The folder's next reading removes it.
  EXPECT_TRUE(ListPlainFiles(temp.path().string()).empty());
  EXPECT_TRUE(Names(temp.path()).empty());

  // An existing photo killed while being replaced stays whole.
  const std::string old_photo = "the old photo";
  ASSERT_TRUE(
      WriteFileAtomically(target.string(), old_photo.data(), old_photo.size()));
  ASSERT_TRUE(WriteAndDie(target, 1 << 20, 4096));
  EXPECT_EQ(testing::ReadFile(target), old_photo);
  EXPECT_EQ(ListPlainFiles(temp.path().string()),
            std::vector<std::string>{"photo.jpg"});
  EXPECT_EQ(Names(temp.path()), std::vector<std::string>{"photo.jpg"});
}

TEST(AtomicFileTest, AFileALivingWriterHoldsIsKept) {
  TempDir temp;
  const fs::path busy = temp / ".photo.jpg.qbpd-AbC123";
  std::ofstream(busy) << "being written";
  const int fd = ::open(busy.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(::flock(fd, LOCK_EX), 0);
  EXPECT_EQ(ListPlainFiles(temp.path().string()).size(), 1u);
  EXPECT_TRUE(fs::exists(busy));
  ::close(fd);
  // Once its writer is gone it is stale.
  EXPECT_TRUE(ListPlainFiles(temp.path().string()).empty());
  EXPECT_FALSE(fs::exists(busy));
}

TEST(AtomicFileTest, OnlyTheProgramsOwnTemporaryFilesAreTouched) {
  TempDir temp;
  const std::vector<std::string> others = {
      ".photo.jpg.AbC123",      // another program's temporary naming
      "photo.jpg.qbpd-AbC123",  // not hidden: a name a person gave
      ".photo.jpg.qbpd-AbC12",  // too short a random part
      ".qbpd-AbC123",           // no name before the mark
      "photo.jpg",
  };
  for (const auto& name : others) {
    std::ofstream(temp / name) << "keep";
  }
  fs::create_directory(temp / ".folder.qbpd-AbC123");
  fs::create_symlink(temp / "photo.jpg", temp / ".link.jpg.qbpd-AbC123");
  const std::vector<std::string> before = Names(temp.path());
  ListPlainFiles(temp.path().string());
  EXPECT_EQ(Names(temp.path()), before);

  EXPECT_TRUE(IsTemporaryFileName(".a.qbpd-XyZ789"));
  EXPECT_FALSE(IsTemporaryFileName(".a.qbpd-XyZ789.jpg"));
}

TEST(AtomicFileTest, AFinishedWriteLeavesNothingBehind) {
  TempDir temp;
  const std::string text = "whole";
  ASSERT_TRUE(
      WriteFileAtomically((temp / "a.txt").string(), text.data(), text.size()));
  EXPECT_EQ(Names(temp.path()), std::vector<std::string>{"a.txt"});
}

// Without a sync the old file gives way by an exchange of names: the new
// bytes under the name, the old file's mode, nothing else left; a folder or
// a link at the name is treated as a rename over it would.
TEST(AtomicFileTest, AnUnsyncedReplaceLeavesTheNewFileAloneUnderItsName) {
  TempDir temp;
  const fs::path target = temp / "thumb.jpg";
  AtomicWrite unsynced;
  unsynced.sync = false;
  std::ofstream(target) << "old";
  fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write |
                              fs::perms::group_read);
  for (const std::string text : {"first", "second, longer", "x"}) {
    ASSERT_TRUE(WriteFileAtomically(target.string(), text.data(), text.size(),
                                    unsynced));
    EXPECT_EQ(testing::ReadFile(target), text);
    EXPECT_EQ(Names(temp.path()), std::vector<std::string>{"thumb.jpg"});
    EXPECT_EQ(
        fs::status(target).permissions() & fs::perms::all,
        fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  }

  const fs::path folder = temp / "folder.jpg";
  fs::create_directory(folder);
  EXPECT_FALSE(WriteFileAtomically(folder.string(), "y", 1, unsynced));
  EXPECT_TRUE(fs::is_directory(folder));

  // A link is replaced itself; the file it points to is left as it was.
  const fs::path link = temp / "link.jpg";
  fs::create_symlink(target, link);
  ASSERT_TRUE(WriteFileAtomically(link.string(), "new", 3, unsynced));
  EXPECT_FALSE(fs::is_symlink(link));
  EXPECT_EQ(testing::ReadFile(link), "new");
  EXPECT_EQ(testing::ReadFile(target), "x");
  EXPECT_EQ(Names(temp.path()),
            (std::vector<std::string>{"folder.jpg", "link.jpg", "thumb.jpg"}));
}

}  // namespace
}  // namespace qbpd
