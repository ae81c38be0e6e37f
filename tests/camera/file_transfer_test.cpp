#include "platform/file_transfer.h"

#include "tests/support/file_faults.h"
#include "tests/support/random_bytes.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::RandomBytes;
using testing::ReadFile;
using testing::TempDir;

int FilesIn(const fs::path& folder) {
  int count = 0;
  for ([[maybe_unused]] const auto& e : fs::directory_iterator(folder)) {
    ++count;
  }
  return count;
}

TEST(ContentHashTest, SameValueHoweverTheBytesAreSplit) {
  const std::string bytes = RandomBytes(1000, 1);
  ContentHash whole;
  whole.Add(bytes.data(), bytes.size());
  for (std::size_t step : {1u, 7u, 31u, 32u, 33u, 500u}) {
    ContentHash parts;
    for (std::size_t at = 0; at < bytes.size(); at += step) {
      parts.Add(bytes.data() + at, std::min(step, bytes.size() - at));
    }
    EXPECT_EQ(parts.Value(), whole.Value()) << step;
  }
  // One byte changed, or one more byte, changes the value.
  std::string changed = bytes;
  changed[517] ^= 1;
  ContentHash other;
  other.Add(changed.data(), changed.size());
  EXPECT_NE(other.Value(), whole.Value());
  ContentHash longer;
  longer.Add((bytes + '\0').data(), bytes.size() + 1);
  EXPECT_NE(longer.Value(), whole.Value());
}

// The values of a few inputs, as the hash has always given them: a faster
// way of computing it must not change the function.
TEST(ContentHashTest, KeepsItsValues) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) {
    bytes += static_cast<char>((i * 131 + 7) & 0xff);
  }
  const struct {
    std::size_t size;
    std::uint64_t value;
  } cases[] = {{0, 0x077D4C00C9377D70ULL},
               {5, 0x7D25A6447BC25049ULL},
               {32, 0x668EFAE96E145789ULL},
               {1000, 0x6C4F575A2D9397D6ULL}};
  for (const auto& c : cases) {
    ContentHash hash;
    hash.Add(bytes.data(), c.size);
    EXPECT_EQ(hash.Value(), c.value) << c.size;
  }
}

TEST(FileTransferTest, CopyReplacesAndKeepsTheSource) {
  TempDir dir;
  const std::string content = RandomBytes(3 << 20, 2);
  const fs::path source = dir.WriteFile("card/a.jpg", content);
  fs::create_directories(dir / "out");
  dir.WriteFile("out/a.jpg", "old");
  auto transfer = MakeVerifiedFileTransfer();
  const TransferResult r =
      transfer->Copy(source.string(), (dir / "out/a.jpg").string());
  EXPECT_EQ(r.status, TransferStatus::kDone) << r.error;
  EXPECT_EQ(r.bytes, content.size());
  EXPECT_EQ(ReadFile(dir / "out/a.jpg"), content);
  EXPECT_EQ(ReadFile(source), content);
  EXPECT_EQ(FilesIn(dir / "out"), 1);
}

TEST(FileTransferTest, MoveDeletesTheSourceOnlyWhenTheCopyIsThere) {
  TempDir dir;
  const std::string content = RandomBytes(100000, 3);
  const fs::path source = dir.WriteFile("card/b.jpg", content);
  fs::create_directories(dir / "out");
  auto transfer = MakeVerifiedFileTransfer();
  // A taken name: refused, both files as they were.
  dir.WriteFile("out/b.jpg", "someone else's");
  TransferResult r =
      transfer->Move(source.string(), (dir / "out/b.jpg").string());
  EXPECT_EQ(r.status, TransferStatus::kTargetExists);
  EXPECT_EQ(ReadFile(source), content);
  EXPECT_EQ(ReadFile(dir / "out/b.jpg"), "someone else's");
  r = transfer->Move(source.string(), (dir / "out/c.jpg").string());
  EXPECT_EQ(r.status, TransferStatus::kDone) << r.error;
  EXPECT_FALSE(fs::exists(source));
  EXPECT_EQ(ReadFile(dir / "out/c.jpg"), content);
}

TEST(FileTransferTest, AVanishedSourceMakesNothing) {
  TempDir dir;
  fs::create_directories(dir / "out");
  auto transfer = MakeVerifiedFileTransfer();
  const TransferResult r = transfer->Move((dir / "card/gone.jpg").string(),
                                          (dir / "out/gone.jpg").string());
  EXPECT_EQ(r.status, TransferStatus::kSourceFailed);
  EXPECT_FALSE(r.error.empty());
  EXPECT_EQ(FilesIn(dir / "out"), 0);
}

TEST(FileTransferTest, AFolderAsSourceIsRefused) {
  TempDir dir;
  fs::create_directories(dir / "card/sub");
  fs::create_directories(dir / "out");
  auto transfer = MakeVerifiedFileTransfer();
  const TransferResult r =
      transfer->Copy((dir / "card/sub").string(), (dir / "out/sub").string());
  EXPECT_EQ(r.status, TransferStatus::kSourceFailed);
  EXPECT_EQ(FilesIn(dir / "out"), 0);
}

TEST(FileTransferTest, AFullDiskLeavesNoHalfFileAndTheSourceWhole) {
  TempDir dir;
  const std::string content = RandomBytes(2 << 20, 4);
  const fs::path source = dir.WriteFile("card/big.jpg", content);
  fs::create_directories(dir / "out");
  auto transfer = MakeVerifiedFileTransfer();
  TransferResult r;
  {
    testing::ScopedFileSizeLimit limit(1 << 20);
    r = transfer->Move(source.string(), (dir / "out/big.jpg").string());
  }
  EXPECT_EQ(r.status, TransferStatus::kTargetFailed);
  EXPECT_EQ(FilesIn(dir / "out"), 0);
  EXPECT_EQ(ReadFile(source), content);
}

// A batch writes every file before flushing any: a source that is missing
// fails alone, two copies to one name are named in order (the later stays),
// and no temporary file is left.
TEST(FileTransferTest, ABatchPlacesEachFileOnItsOwn) {
  TempDir dir;
  const std::string a = RandomBytes(1 << 20, 6);
  const std::string b = RandomBytes(300000, 7);
  dir.WriteFile("card/a.jpg", a);
  dir.WriteFile("card/b.jpg", b);
  fs::create_directories(dir / "out");
  dir.WriteFile("out/taken.jpg", "mine");
  auto transfer = MakeVerifiedFileTransfer();
  auto item = [&](const std::string& source, const std::string& target,
                  bool replace) {
    TransferItem i;
    i.source = source.empty() ? "" : (dir / "card" / source).string();
    i.target = (dir / "out" / target).string();
    i.replace = replace;
    return i;
  };
  std::vector<TransferItem> items{
      item("a.jpg", "same.jpg", true), item("gone.jpg", "gone.jpg", true),
      item("b.jpg", "same.jpg", true), item("a.jpg", "taken.jpg", false)};
  TransferItem saved;
  saved.content = b;
  saved.target = (dir / "out/saved.jpg").string();
  items.push_back(saved);
  const std::vector<TransferResult> r = transfer->PlaceAll(items);
  ASSERT_EQ(r.size(), 5u);
  EXPECT_EQ(r[0].status, TransferStatus::kDone) << r[0].error;
  EXPECT_EQ(r[1].status, TransferStatus::kSourceFailed);
  EXPECT_EQ(r[2].status, TransferStatus::kDone) << r[2].error;
  EXPECT_EQ(r[2].bytes, b.size());
  EXPECT_EQ(r[3].status, TransferStatus::kTargetExists);
  EXPECT_EQ(r[4].status, TransferStatus::kDone) << r[4].error;
  EXPECT_TRUE(ReadFile(dir / "out/same.jpg") == b);
  EXPECT_TRUE(ReadFile(dir / "out/saved.jpg") == b);
  EXPECT_EQ(ReadFile(dir / "out/taken.jpg"), "mine");
  EXPECT_EQ(FilesIn(dir / "out"), 3);
  EXPECT_EQ(FilesIn(dir / "card"), 2);
}

TEST(FileTransferTest, AFullDiskInABatchFailsOnlyTheFilesThatDontFit) {
  TempDir dir;
  const std::string small = RandomBytes(100000, 8);
  const std::string big = RandomBytes(2 << 20, 9);
  dir.WriteFile("card/small.jpg", small);
  dir.WriteFile("card/big.jpg", big);
  fs::create_directories(dir / "out");
  auto transfer = MakeVerifiedFileTransfer();
  std::vector<TransferItem> items(2);
  items[0].source = (dir / "card/big.jpg").string();
  items[0].target = (dir / "out/big.jpg").string();
  items[1].source = (dir / "card/small.jpg").string();
  items[1].target = (dir / "out/small.jpg").string();
  std::vector<TransferResult> r;
  {
    testing::ScopedFileSizeLimit limit(1 << 20);
    r = transfer->PlaceAll(items);
  }
  ASSERT_EQ(r.size(), 2u);
  EXPECT_EQ(r[0].status, TransferStatus::kTargetFailed);
  EXPECT_EQ(r[1].status, TransferStatus::kDone) << r[1].error;
  EXPECT_TRUE(ReadFile(dir / "out/small.jpg") == small);
  EXPECT_EQ(FilesIn(dir / "out"), 1);
  EXPECT_TRUE(ReadFile(dir / "card/big.jpg") == big);
}

TEST(FileTransferTest, SaveWritesVerifiedAndNeverReplaces) {
  TempDir dir;
  fs::create_directories(dir / "out");
  auto transfer = MakeVerifiedFileTransfer();
  const std::string content = RandomBytes(70000, 5);
  TransferResult r = transfer->Save(content, (dir / "out/p 1.jpg").string());
  EXPECT_EQ(r.status, TransferStatus::kDone) << r.error;
  EXPECT_EQ(ReadFile(dir / "out/p 1.jpg"), content);
  r = transfer->Save("other", (dir / "out/p 1.jpg").string());
  EXPECT_EQ(r.status, TransferStatus::kTargetExists);
  EXPECT_EQ(ReadFile(dir / "out/p 1.jpg"), content);
  {
    testing::ScopedFileSizeLimit limit(1000);
    r = transfer->Save(content, (dir / "out/p 2.jpg").string());
  }
  EXPECT_EQ(r.status, TransferStatus::kTargetFailed);
  EXPECT_EQ(FilesIn(dir / "out"), 1);
}

}  // namespace
}  // namespace qbpd
