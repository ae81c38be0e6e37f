#include "platform/settings_store.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace qbpd {
namespace {

using Values = std::vector<std::pair<std::string, std::string>>;

constexpr char kDisplay[] =
    "Software\\Quillbay Picture Desk\\Preferences\\Display";

mode_t ModeOf(const std::filesystem::path& path) {
  struct stat info {};
  EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
  return info.st_mode & 07777;
}

// The umask of the process for the life of the object.
class ScopedUmask {
 public:
  explicit ScopedUmask(mode_t mask) : old_(umask(mask)) {}
  ~ScopedUmask() { umask(old_); }

 private:
  mode_t old_;
};

TEST(SqliteSettingsStoreTest, ValuesRoundTripAcrossStoreObjects) {
  testing::TempDir dir;
  const std::string db = (dir / "settings.db").string();
  {
    auto store = MakeSqliteSettingsStore(db);
    ASSERT_TRUE(store->Write(kDisplay, "ZoomSettings", "FitToWidth"));
    ASSERT_TRUE(store->Write(kDisplay, "RecentFolder1", "/home/u/Pictures"));
    ASSERT_TRUE(
        store->Write("Software\\Quillbay Picture Desk", "Version", "1.0.0"));
    // A value read back may end in its NUL; the store keeps it.
    ASSERT_TRUE(store->Write(kDisplay, "WithNul", std::string("ab\0", 3)));
    ASSERT_TRUE(store->Write(kDisplay, "Empty", ""));
  }
  auto again = MakeSqliteSettingsStore(db);
  EXPECT_EQ(again->Read(kDisplay, "ZoomSettings"), "FitToWidth");
  EXPECT_EQ(again->Read(kDisplay, "WithNul"), std::string("ab\0", 3));
  EXPECT_EQ(again->Read("Software\\Quillbay Picture Desk", "Version"), "1.0.0");
  EXPECT_EQ(again->Read(kDisplay, "Missing"), "");
  EXPECT_EQ(again->Read("No\\Such\\Key", "ZoomSettings"), "");
  EXPECT_EQ(again->List(kDisplay),
            (Values{{"ZoomSettings", "FitToWidth"},
                    {"RecentFolder1", "/home/u/Pictures"},
                    {"WithNul", std::string("ab\0", 3)},
                    {"Empty", ""}}));
}

// Both stores must agree on every rule the program relies on: case, order of
// values, spelling of keys, sorting of Keys().
TEST(SqliteSettingsStoreTest, BehavesAsTheMemoryStore) {
  testing::TempDir dir;
  auto sqlite = MakeSqliteSettingsStore((dir / "s.db").string());
  auto memory = MakeMemorySettingsStore();
  for (SettingsStore* store : {sqlite.get(), memory.get()}) {
    SCOPED_TRACE(store == memory.get() ? "memory" : "sqlite");
    ASSERT_TRUE(store->Write("Software\\B", "First", "1"));
    ASSERT_TRUE(store->Write("software\\b", "Second", "2"));
    ASSERT_TRUE(store->Write("SOFTWARE\\B", "FIRST", "one"));
    ASSERT_TRUE(store->Write("Software\\A", "x", "y"));
    ASSERT_TRUE(store->Write("Software\\C", "gone", "z"));
    EXPECT_TRUE(store->Delete("SOFTWARE\\c", "GONE"));
    EXPECT_FALSE(store->Delete("Software\\C", "gone"));
    EXPECT_FALSE(store->Delete("Software\\Nowhere", "gone"));

    EXPECT_EQ(store->Read("SOFTWARE\\b", "first"), "one");
    // The value keeps its place and first spelling when it is rewritten.
    EXPECT_EQ(store->List("software\\B"),
              (Values{{"First", "one"}, {"Second", "2"}}));
    // A key with no value left is not listed; the first spelling stays.
    EXPECT_EQ(store->Keys(),
              (std::vector<std::string>{"Software\\A", "Software\\B"}));
  }
}

TEST(SqliteSettingsStoreTest, MissingFileReadsEmptyAndIsNotCreated) {
  testing::TempDir dir;
  const auto db = dir / "config" / "settings.db";
  auto store = MakeSqliteSettingsStore(db.string());
  EXPECT_EQ(store->Read(kDisplay, "ZoomSettings"), "");
  EXPECT_TRUE(store->List(kDisplay).empty());
  EXPECT_TRUE(store->Keys().empty());
  EXPECT_FALSE(store->Delete(kDisplay, "ZoomSettings"));
  EXPECT_FALSE(std::filesystem::exists(db.parent_path()));
}

// With a umask that would leave the file read-only and the folder without
// write access, the modes still come out exactly 0600 and 0700.
TEST(SqliteSettingsStoreTest, FirstWriteMakesPrivateFolderAndFile) {
  testing::TempDir dir;
  const auto db = dir / "config" / "quillbay" / "settings.db";
  {
    ScopedUmask mask(0277);
    auto store = MakeSqliteSettingsStore(db.string());
    ASSERT_TRUE(store->Write(kDisplay, "ZoomSettings", "FitToWidth"));
  }
  EXPECT_EQ(ModeOf(db), 0600u);
  EXPECT_EQ(ModeOf(db.parent_path()), 0700u);
  EXPECT_EQ(ModeOf(db.parent_path().parent_path()), 0700u);
  // The write-ahead log files, if any are left, are as private as the file.
  for (const char* suffix : {"-wal", "-shm"}) {
    std::filesystem::path side = db.string() + suffix;
    if (std::filesystem::exists(side)) {
      EXPECT_EQ(ModeOf(side) & 0077, 0u) << side;
    }
  }
}

TEST(SqliteSettingsStoreTest, FileThatIsNotADatabaseFailsCleanly) {
  testing::TempDir dir;
  const std::string garbage(4096, 'x');
  const auto db = dir.WriteFile("settings.db", garbage);
  auto store = MakeSqliteSettingsStore(db.string());
  EXPECT_EQ(store->Read(kDisplay, "ZoomSettings"), "");
  EXPECT_TRUE(store->List(kDisplay).empty());
  EXPECT_TRUE(store->Keys().empty());
  EXPECT_FALSE(store->Write(kDisplay, "ZoomSettings", "FitToWidth"));
  EXPECT_FALSE(store->Delete(kDisplay, "ZoomSettings"));
  // The user's file is left as it was.
  EXPECT_EQ(testing::ReadFile(db), garbage);
}

TEST(SqliteSettingsStoreTest, FolderInTheWayMakesWriteFail) {
  testing::TempDir dir;
  // A plain file where the database's folder should be.
  const auto blocker = dir.WriteFile("config", "not a folder");
  auto store = MakeSqliteSettingsStore((blocker / "settings.db").string());
  EXPECT_FALSE(store->Write(kDisplay, "ZoomSettings", "FitToWidth"));
  EXPECT_EQ(store->Read(kDisplay, "ZoomSettings"), "");
}

// A second start and the device monitor may write while the program does.
// Two processes start on a missing file and each write many values of their
// own plus one shared value; none may be lost.
TEST(SqliteSettingsStoreTest, TwoProcessesWritingAtOnceLoseNothing) {
  testing::TempDir dir;
  const std::string db = (dir / "config" / "settings.db").string();
  constexpr int kEach = 150;
  auto write_all = [&](const std::string& who) {
    auto store = MakeSqliteSettingsStore(db);
    int failures = 0;
    for (int i = 0; i < kEach; ++i) {
      if (!store->Write("Software\\DeviceList\\CameraList",
                        who + std::to_string(i), who)) {
        ++failures;
      }
      if (!store->Write("Software\\Shared", "Counter", who)) {
        ++failures;
      }
    }
    return failures;
  };

  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    _exit(write_all("child") == 0 ? 0 : 1);
  }
  const int parent_failures = write_all("parent");
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0) << "the child lost a write";
  EXPECT_EQ(parent_failures, 0);

  auto store = MakeSqliteSettingsStore(db);
  const Values devices = store->List("Software\\DeviceList\\CameraList");
  EXPECT_EQ(devices.size(), 2u * kEach);
  for (int i = 0; i < kEach; ++i) {
    for (const std::string who : {"parent", "child"}) {
      EXPECT_EQ(store->Read("Software\\DeviceList\\CameraList",
                            who + std::to_string(i)),
                who);
    }
  }
  const std::string counter = store->Read("Software\\Shared", "Counter");
  EXPECT_TRUE(counter == "parent" || counter == "child") << counter;
  EXPECT_EQ(store->List("Software\\Shared").size(), 1u);
}

}  // namespace
}  // namespace qbpd
