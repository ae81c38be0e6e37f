#include "platform/file_transfer.h"
#include "tests/support/file_faults.h"
#include "tests/support/random_bytes.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::RandomBytes;
using testing::ReadFile;
using testing::TempDir;

std::vector<std::string> NamesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& e : fs::directory_iterator(folder)) {
    names.push_back(e.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Writes `content` to `writer` in pieces of `piece` bytes; false at the
// first piece refused.
bool WriteInPieces(PieceWriter& writer,
                   const std::string& content,
                   std::size_t piece,
                   std::string& error) {
  for (std::size_t at = 0; at < content.size(); at += piece) {
    if (!writer.Append(content.data() + at,
                       std::min(piece, content.size() - at), error)) {
      return false;
    }
  }
  return true;
}

class PieceWriterTest : public ::testing::Test {
 protected:
  PieceWriterTest() { fs::create_directories(dir_ / "out"); }
  std::string Out(const std::string& name) const {
    return (dir_ / "out" / name).string();
  }
  // Begins `name` and writes `content` to it.
  TransferItem Written(const std::string& name, const std::string& content) {
    TransferItem item;
    item.target = Out(name);
    TransferResult begun;
    item.written = transfer_->Begin(item.target, begun);
    EXPECT_NE(item.written, nullptr) << begun.error;
    std::string error;
    if (item.written) {
      EXPECT_TRUE(WriteInPieces(*item.written, content, 65536, error)) << error;
    }
    return item;
  }

  TempDir dir_;
  std::unique_ptr<FileTransfer> transfer_ = MakeVerifiedFileTransfer();
};

// Written on one transfer, named by another's batch (another thread's), read
// back from the disk or through the cache; sizes around the piece size and
// the point where the disk is asked to start writing.
TEST_F(PieceWriterTest, AWrittenFileIsNamedWholeByAnotherTransfer) {
  std::unique_ptr<FileTransfer> other = transfer_->Another();
  ASSERT_NE(other, nullptr);
  const std::size_t sizes[] = {0, 1, 65536, (1 << 20) + 1, 3 << 20};
  std::vector<TransferItem> items;
  std::vector<std::string> contents;
  for (std::size_t i = 0; i < std::size(sizes); ++i) {
    contents.push_back(RandomBytes(sizes[i], static_cast<unsigned>(i) + 20));
    items.push_back(Written("p" + std::to_string(i) + ".jpg", contents.back()));
    items.back().from_disk = i % 2 == 0;
  }
  const std::vector<TransferResult> r = other->PlaceAll(items);
  ASSERT_EQ(r.size(), items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(r[i].status, TransferStatus::kDone) << i << " " << r[i].error;
    EXPECT_EQ(r[i].bytes, sizes[i]);
    EXPECT_TRUE(ReadFile(Out("p" + std::to_string(i) + ".jpg")) == contents[i])
        << i;
  }
  items.clear();
  EXPECT_EQ(NamesIn(dir_ / "out"),
            (std::vector<std::string>{"p0.jpg", "p1.jpg", "p2.jpg", "p3.jpg",
                                      "p4.jpg"}));
}

// A writer dropped unnamed (the camera pulled out midway) takes its
// temporary file with it.
TEST_F(PieceWriterTest, ADroppedWriterLeavesNothing) {
  TransferItem item = Written("half.jpg", RandomBytes(200000, 3));
  EXPECT_EQ(NamesIn(dir_ / "out").size(), 1u);
  item.written.reset();
  EXPECT_TRUE(NamesIn(dir_ / "out").empty());
}

// What the disk holds is compared with what was written: a byte changed
// under the temporary name is found, and the copy removed.
TEST_F(PieceWriterTest, AFileChangedOnTheDiskFailsItsCheck) {
  const std::string content = RandomBytes(300000, 4);
  std::vector<TransferItem> items{Written("a.jpg", content)};
  const std::vector<std::string> names = NamesIn(dir_ / "out");
  ASSERT_EQ(names.size(), 1u);
  const int fd = ::open(Out(names[0]).c_str(), O_WRONLY);
  ASSERT_GE(fd, 0);
  const char changed = static_cast<char>(content[123456] ^ 0x10);
  ASSERT_EQ(::pwrite(fd, &changed, 1, 123456), 1);
  ::close(fd);
  const std::vector<TransferResult> r = transfer_->PlaceAll(items);
  EXPECT_EQ(r[0].status, TransferStatus::kVerifyFailed);
  EXPECT_EQ(r[0].error,
            "The copy " + Out("a.jpg") + " differs from its source.");
  items.clear();
  EXPECT_TRUE(NamesIn(dir_ / "out").empty());
}

// A full disk refuses the piece that does not fit; the file can't be named
// then, nor can a name be taken from someone else's file.
TEST_F(PieceWriterTest, AFullDiskOrATakenNameNamesNothing) {
  dir_.WriteFile("out/taken.jpg", "mine");
  std::vector<TransferItem> items{Written("taken.jpg", "photo")};
  items.emplace_back();
  items[1].target = Out("big.jpg");
  TransferResult begun;
  items[1].written = transfer_->Begin(items[1].target, begun);
  ASSERT_NE(items[1].written, nullptr) << begun.error;
  std::string error;
  {
    testing::ScopedFileSizeLimit limit(1 << 20);
    EXPECT_FALSE(WriteInPieces(*items[1].written, RandomBytes(2 << 20, 5),
                               65536, error));
  }
  EXPECT_EQ(error.rfind("Cannot write " + Out("big.jpg") + ": ", 0), 0u)
      << error;
  // Refused once, it stays refused.
  std::string again;
  EXPECT_FALSE(items[1].written->Append("x", 1, again));
  EXPECT_EQ(again, error);
  const std::vector<TransferResult> r = transfer_->PlaceAll(items);
  EXPECT_EQ(r[0].status, TransferStatus::kTargetExists);
  EXPECT_EQ(r[1].status, TransferStatus::kTargetFailed);
  EXPECT_EQ(r[1].error, error);
  items.clear();
  EXPECT_EQ(NamesIn(dir_ / "out"), std::vector<std::string>{"taken.jpg"});
  EXPECT_EQ(ReadFile(dir_ / "out/taken.jpg"), "mine");
}

TEST_F(PieceWriterTest, AFolderThatCantBeWrittenBeginsNothing) {
  TransferResult r;
  EXPECT_EQ(transfer_->Begin(Out("none/a.jpg"), r), nullptr);
  EXPECT_EQ(r.status, TransferStatus::kTargetFailed);
  EXPECT_EQ(r.error.rfind("Cannot write in " + Out("none") + ": ", 0), 0u)
      << r.error;
}

}  // namespace
}  // namespace qbpd
