// The service's data folder keeps its secrets from other local users: the
// folders are 0700 and the database, its journal files and the photos 0600
// from their first write, whatever the umask, and repaired on start.

#include "service/data_folder.h"

#include "service/service_core.h"
#include "tests/service/service_fixture.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd::service {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// The permission bits of `path` itself (a link is not followed); -1 when it
// is missing.
int Mode(const fs::path& path) {
  struct stat st {};
  if (lstat(path.c_str(), &st) != 0) {
    return -1;
  }
  return static_cast<int>(st.st_mode & 07777);
}

// Sets the process's umask for the life of the guard.
class UmaskGuard {
 public:
  explicit UmaskGuard(mode_t mask) : old_(umask(mask)) {}
  UmaskGuard(const UmaskGuard&) = delete;
  UmaskGuard& operator=(const UmaskGuard&) = delete;
  ~UmaskGuard() { umask(old_); }

 private:
  mode_t old_;
};

ServiceOptions Options(const fs::path& dir) {
  ServiceOptions options;
  options.data_dir = dir;
  options.seed_demo = true;
  options.demo_password = "test-demo-password";
  options.now = [] { return std::int64_t{1772323200}; };
  return options;
}

// Logs in as the demo account and uploads one photo into a new album;
// returns the album's photo folder.
fs::path UploadOne(ServiceCore& core, const fs::path& dir) {
  const auto login = core.Call(
      "LoginUser",
      {{"email", "demo@quillbay.test"}, {"password", "test-demo-password"}});
  EXPECT_TRUE(login && (*login)["ok"] == true);
  const json answer = core.Upload({{"authcode", (*login)["session"][0]},
                                   {"albumname", "Private"},
                                   {"file", "a.jpg"}},
                                  kJpeg);
  EXPECT_EQ(answer["ok"], true) << answer.dump();
  return dir / "photos" / answer["albumId"].get<std::string>();
}

std::vector<fs::path> FilesIn(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  return files;
}

TEST(DataFolder, EverythingIsPrivateFromTheFirstWriteWhateverTheUmask) {
  testing::TempDir temp;
  const fs::path dir = temp / "data";
  const UmaskGuard open_umask(0);
  ServiceCore core(Options(dir));
  const fs::path album = UploadOne(core, dir);

  EXPECT_EQ(Mode(dir), 0700);
  EXPECT_EQ(Mode(dir / "photos"), 0700);
  EXPECT_EQ(Mode(album), 0700);
  EXPECT_EQ(Mode(dir / "service.db"), 0600);
  // The journal files are there while the service runs.
  EXPECT_EQ(Mode(dir / "service.db-wal"), 0600);
  EXPECT_EQ(Mode(dir / "service.db-shm"), 0600);
  const auto photos = FilesIn(album);
  ASSERT_EQ(photos.size(), 1u);
  EXPECT_EQ(Mode(photos[0]), 0600);
}

TEST(DataFolder, AWiderFolderIsRepairedOnStart) {
  testing::TempDir temp;
  const fs::path dir = temp / "data";
  fs::path album;
  {
    ServiceCore core(Options(dir));
    album = UploadOne(core, dir);
  }
  // As an older service left it, with a photo that stopped half-way and a
  // link to a file of someone else's.
  const fs::path photo = FilesIn(album).at(0);
  const fs::path part = album / "0123456789abcdef.jpg.part";
  std::ofstream(part) << "half a photo";
  const fs::path outside = temp / "outside.txt";
  std::ofstream(outside) << "not the service's";
  fs::create_symlink(outside, dir / "photos" / "link.jpg");
  ASSERT_EQ(chmod(dir.c_str(), 0755), 0);
  ASSERT_EQ(chmod((dir / "photos").c_str(), 0777), 0);
  ASSERT_EQ(chmod(album.c_str(), 0775), 0);
  ASSERT_EQ(chmod((dir / "service.db").c_str(), 0644), 0);
  ASSERT_EQ(chmod(photo.c_str(), 0666), 0);
  ASSERT_EQ(chmod(outside.c_str(), 0644), 0);

  ServiceCore core(Options(dir));
  EXPECT_EQ(Mode(dir), 0700);
  EXPECT_EQ(Mode(dir / "photos"), 0700);
  EXPECT_EQ(Mode(album), 0700);
  EXPECT_EQ(Mode(dir / "service.db"), 0600);
  EXPECT_EQ(Mode(photo), 0600);
  EXPECT_FALSE(fs::exists(part));
  // A link is not followed: its target keeps its mode.
  EXPECT_EQ(Mode(outside), 0644);
  // And the repaired store still works.
  EXPECT_EQ(FilesIn(UploadOne(core, dir)).size(), 1u);
}

TEST(DataFolder, AFolderSharedWithOthersIsRefusedAndLeftAsItWas) {
  testing::TempDir temp;
  const fs::path shared = temp / "shared";
  fs::create_directory(shared);
  ASSERT_EQ(chmod(shared.c_str(), 01777), 0);
  EXPECT_THROW(PrepareDataFolder(shared), std::runtime_error);
  EXPECT_EQ(Mode(shared), 01777);
  EXPECT_FALSE(fs::exists(shared / "photos"));

  // A plain file is no data folder either.
  const fs::path file = temp / "file";
  std::ofstream(file) << "x";
  EXPECT_THROW(PrepareDataFolder(file), std::runtime_error);
}

TEST(DataFolder, PrivateFilesAndFoldersNarrowWhatIsThere) {
  testing::TempDir temp;
  const UmaskGuard open_umask(0);
  const fs::path folder = temp / "folder";
  MakePrivateFolder(folder);
  EXPECT_EQ(Mode(folder), 0700);
  ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
  MakePrivateFolder(folder);
  EXPECT_EQ(Mode(folder), 0700);

  const fs::path file = folder / "file";
  MakePrivateFile(file);
  EXPECT_EQ(Mode(file), 0600);
  ASSERT_EQ(chmod(file.c_str(), 0644), 0);
  std::ofstream(file) << "kept";
  MakePrivateFile(file);
  EXPECT_EQ(Mode(file), 0600);
  EXPECT_EQ(testing::ReadFile(file), "kept");

  // A link in the file's place is refused, not followed.
  const fs::path target = temp / "target";
  std::ofstream(target) << "x";
  ASSERT_EQ(chmod(target.c_str(), 0644), 0);
  fs::create_symlink(target, folder / "link");
  EXPECT_THROW(MakePrivateFile(folder / "link"), std::runtime_error);
  EXPECT_EQ(Mode(target), 0644);
}

}  // namespace
}  // namespace qbpd::service
