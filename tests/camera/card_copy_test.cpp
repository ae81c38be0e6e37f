// The card copy with its transfers on threads of their own: every file
// arrives whole under the name the one-at-a-time copy would give it, the
// results come back in the list's order, and failures are counted where
// they happened.
#include "camera/card_files.h"
#include "platform/file_transfer.h"
#include "tests/support/fake_camera_devices.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::FakeFileTransfer;
using testing::ReadFile;
using testing::TempDir;

// `count` files of distinct content in DCIM/100TEST, and in DCIM/101TEST a
// second IMG_0001.JPG of its own content.
std::vector<std::string> MakeCard(TempDir& dir, int count) {
  for (int i = 1; i <= count; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "IMG_%04d.JPG", i);
    dir.WriteFile(std::string("card/DCIM/100TEST/") + name,
                  std::string(20000 + i * 37, static_cast<char>('a' + i % 26)));
  }
  dir.WriteFile("card/DCIM/101TEST/IMG_0001.JPG", "the second card file");
  return ListFolderFiles((dir / "card").string());
}

// Waits as a host does, counting the waits.
struct CountingWait {
  int waits = 0;
  void operator()(const std::function<bool()>& done) {
    ++waits;
    while (!done()) {
      std::this_thread::yield();
    }
  }
};

TEST(CardCopyAheadTest, CopiesEveryFileWithTheLaterOfTwoNamesWinning) {
  TempDir dir;
  const std::vector<std::string> files = MakeCard(dir, 30);
  fs::create_directories(dir / "out");
  auto transfer = MakeVerifiedFileTransfer();
  int after = 0;
  CountingWait wait;
  const CardCopyReport report = CopyFilesInto(
      files, (dir / "out").string(), /*move=*/false, *transfer,
      [&] { ++after; }, std::ref(wait));
  EXPECT_EQ(report.done, 31);
  EXPECT_EQ(report.failed, 0);
  EXPECT_EQ(after, 31);
  // One name, two card files: the one later in the list is what stays.
  EXPECT_EQ(ReadFile(dir / "out/IMG_0001.JPG"), "the second card file");
  for (int i = 2; i <= 30; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "IMG_%04d.JPG", i);
    EXPECT_TRUE(ReadFile(dir / "out" / name) ==
                ReadFile(dir / "card/DCIM/100TEST" / name))
        << name;
  }
  int in_out = 0;
  for ([[maybe_unused]] const auto& e : fs::directory_iterator(dir / "out")) {
    ++in_out;
  }
  EXPECT_EQ(in_out, 30);  // no temporary file left beside them
}

TEST(CardCopyAheadTest, AMoveGivesFreeNamesAndDeletesOnlyWhatArrived) {
  TempDir dir;
  const std::vector<std::string> files = MakeCard(dir, 12);
  // The destination holds photos of those names already.
  dir.WriteFile("out/IMG_0003.JPG", "kept photo");
  dir.WriteFile("out/IMG_0001.JPG", "kept photo one");
  auto transfer = MakeVerifiedFileTransfer();
  const std::string third = ReadFile(dir / "card/DCIM/100TEST/IMG_0003.JPG");
  const CardCopyReport report = CopyFilesInto(
      files, (dir / "out").string(), /*move=*/true, *transfer, [] {},
      CountingWait());
  EXPECT_EQ(report.done, 13);
  EXPECT_EQ(report.failed, 0);
  EXPECT_EQ(report.renamed, 3);  // IMG_0003, and both IMG_0001s
  EXPECT_EQ(ReadFile(dir / "out/IMG_0003.JPG"), "kept photo");
  EXPECT_TRUE(ReadFile(dir / "out/IMG_0003_001.JPG") == third);
  EXPECT_EQ(ReadFile(dir / "out/IMG_0001.JPG"), "kept photo one");
  EXPECT_TRUE(fs::exists(dir / "out/IMG_0001_001.JPG"));
  EXPECT_TRUE(fs::exists(dir / "out/IMG_0001_002.JPG"));
  EXPECT_TRUE(ListFolderFiles((dir / "card").string()).empty());
}

TEST(CardCopyAheadTest, FailuresOnTheThreadsAreCountedInTheListsOrder) {
  TempDir dir;
  const std::vector<std::string> files = MakeCard(dir, 10);
  fs::create_directories(dir / "out");
  FakeFileTransfer transfer;
  transfer.on_threads = true;
  transfer.fail["IMG_0004.JPG"] = TransferStatus::kSourceFailed;
  transfer.fail["IMG_0009.JPG"] = TransferStatus::kVerifyFailed;
  int after = 0;
  const CardCopyReport report = CopyFilesInto(
      files, (dir / "out").string(), /*move=*/true, transfer, [&] { ++after; },
      CountingWait());
  EXPECT_EQ(report.done, 9);
  EXPECT_EQ(report.failed, 2);
  ASSERT_EQ(report.errors.size(), 2u);
  EXPECT_EQ(report.errors[0], "injected failure of IMG_0004.JPG");
  EXPECT_EQ(report.errors[1], "injected failure of IMG_0009.JPG");
  EXPECT_EQ(after, 11);
  // The failed moves left their sources; the others went.
  EXPECT_TRUE(fs::exists(dir / "card/DCIM/100TEST/IMG_0004.JPG"));
  EXPECT_TRUE(fs::exists(dir / "card/DCIM/100TEST/IMG_0009.JPG"));
  EXPECT_FALSE(fs::exists(dir / "card/DCIM/100TEST/IMG_0005.JPG"));
  // No copy and no flush ran on the caller's own transfer (the window's
  // thread): the threads did them; the caller only removed the sources.
  for (const std::string& call : transfer.calls) {
    EXPECT_EQ(call.rfind("remove ", 0), 0u) << call;
  }
}

// The folder is flushed once for a batch, and a move's sources go only after
// it; a flush that fails keeps every source of its batch.
TEST(CardCopyAheadTest, SourcesGoOnlyAfterTheirFolderIsFlushed) {
  for (bool threads : {false, true}) {
    SCOPED_TRACE(threads ? "on threads" : "one at a time");
    TempDir dir;
    const std::vector<std::string> files = MakeCard(dir, 12);
    fs::create_directories(dir / "out");
    FakeFileTransfer transfer;
    transfer.on_threads = threads;
    const CardCopyReport report = CopyFilesInto(
        files, (dir / "out").string(), /*move=*/true, transfer, [] {},
        CountingWait());
    EXPECT_EQ(report.done, 13);
    std::vector<std::string> steps;
    for (const std::string& call : transfer.log) {
      if (call.rfind("flush ", 0) == 0 || call.rfind("remove ", 0) == 0) {
        steps.push_back(call.substr(0, call.find(' ')));
      }
    }
    ASSERT_EQ(steps.size(), 14u);
    EXPECT_EQ(steps.front(), "flush");
    EXPECT_EQ(std::count(steps.begin(), steps.end(), "flush"), 1);
    EXPECT_TRUE(ListFolderFiles((dir / "card").string()).empty());
  }
}

// A folder that can't be flushed keeps every source of the batches it
// held; the batch after one whose flush failed goes on (on threads it was
// being written meanwhile) and its moves are done.
TEST(CardCopyAheadTest, AFolderThatCantBeFlushedKeepsEverySourceOfItsBatch) {
  struct Case {
    bool threads;
    // Empty: every flush fails; otherwise the batch holding this file.
    const char* failing_batch_of;
    int done;
  };
  // 21 files: the first batch is IMG_0001 to IMG_0016 of 100TEST, the
  // second the other four and 101TEST's IMG_0001.
  for (const Case& c :
       {Case{false, "", 0}, Case{true, "", 0}, Case{false, "IMG_0004.JPG", 5},
        Case{true, "IMG_0004.JPG", 5}}) {
    SCOPED_TRACE(std::string(c.threads ? "on threads, " : "one at a time, ") +
                 c.failing_batch_of);
    TempDir dir;
    const std::vector<std::string> files = MakeCard(dir, 20);
    fs::create_directories(dir / "out");
    FakeFileTransfer transfer;
    transfer.on_threads = c.threads;
    if (*c.failing_batch_of == '\0') {
      transfer.fail_flush = true;
    } else {
      transfer.fail_flush_after.insert(c.failing_batch_of);
    }
    const CardCopyReport report = CopyFilesInto(
        files, (dir / "out").string(), /*move=*/true, transfer, [] {},
        CountingWait());
    EXPECT_EQ(report.done, c.done);
    EXPECT_EQ(report.failed, 21 - c.done);
    ASSERT_FALSE(report.errors.empty());
    EXPECT_EQ(report.errors[0],
              "injected failure to flush " + (dir / "out").string());
    // Every source of a failed batch is on the card, and only those.
    const std::size_t left = ListFolderFiles((dir / "card").string()).size();
    EXPECT_EQ(left, static_cast<std::size_t>(21 - c.done));
    for (int i = 1; i <= 16; ++i) {
      char name[32];
      std::snprintf(name, sizeof name, "IMG_%04d.JPG", i);
      EXPECT_TRUE(fs::exists(dir / "card/DCIM/100TEST" / name)) << name;
    }
    for (const std::string& call : transfer.log) {
      const std::size_t at = call.find("100TEST/IMG_");
      if (call.rfind("remove ", 0) == 0 && at != std::string::npos) {
        EXPECT_GT(std::stoi(call.substr(at + 12)), 16) << call;
      }
    }
  }
}

TEST(CardCopyAheadTest, ASourceThatCantBeDeletedIsKeptBesideItsCopy) {
  TempDir dir;
  const std::vector<std::string> files = MakeCard(dir, 6);
  fs::create_directories(dir / "out");
  FakeFileTransfer transfer;
  transfer.on_threads = true;
  transfer.keep.insert("IMG_0004.JPG");
  const CardCopyReport report = CopyFilesInto(
      files, (dir / "out").string(), /*move=*/true, transfer, [] {},
      CountingWait());
  EXPECT_EQ(report.done, 7);
  EXPECT_EQ(report.kept, 1);
  EXPECT_EQ(report.failed, 0);
  EXPECT_TRUE(ReadFile(dir / "out/IMG_0004.JPG") ==
              ReadFile(dir / "card/DCIM/100TEST/IMG_0004.JPG"));
  EXPECT_EQ(ListFolderFiles((dir / "card").string()).size(), 1u);
}

}  // namespace
}  // namespace qbpd
