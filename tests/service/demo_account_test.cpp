// The demonstration account: a random password of its own, kept in the data
// folder for its owner, never the fixed password of earlier versions.
#include "service/service_core.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>

namespace qbpd::service {
namespace {

bool LogsIn(ServiceCore& core, const std::string& password) {
  auto answer =
      core.Call("LoginUser", {{"email", kDemoEmail}, {"password", password}});
  return answer && (*answer)["ok"].get<bool>();
}

std::string Kept(const std::filesystem::path& dir) {
  std::ifstream file(dir / kDemoAccountFile);
  return std::string((std::istreambuf_iterator<char>(file)), {});
}

TEST(DemoAccountTest, EachDataFolderGetsARandomPasswordKeptForItsOwner) {
  testing::TempDir one;
  testing::TempDir two;
  ServiceOptions options;
  options.seed_demo = true;
  options.data_dir = one.path();
  ServiceCore first(options);
  options.data_dir = two.path();
  ServiceCore second(options);

  const std::string password = first.new_demo_password();
  EXPECT_GE(password.size(), 12u);
  EXPECT_NE(password, second.new_demo_password());
  EXPECT_TRUE(LogsIn(first, password));
  EXPECT_FALSE(LogsIn(first, "demo1234"));
  EXPECT_NE(Kept(one.path()).find("Password: " + password + "\n"),
            std::string::npos);
  struct stat info {};
  ASSERT_EQ(stat((one.path() / kDemoAccountFile).c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST(DemoAccountTest, WithoutSeedingThereIsNoAccountAndNoFile) {
  testing::TempDir dir;
  ServiceOptions options;
  options.data_dir = dir.path();
  ServiceCore core(options);
  EXPECT_EQ(core.new_demo_password(), "");
  EXPECT_FALSE(std::filesystem::exists(dir.path() / kDemoAccountFile));
}

// A data folder that an earlier version seeded with its fixed password gets
// a random one; a password of its own is kept from start to start.
TEST(DemoAccountTest, TheFormerFixedPasswordIsReplacedOnce) {
  testing::TempDir dir;
  ServiceOptions options;
  options.data_dir = dir.path();
  options.seed_demo = true;
  {
    ServiceOptions former = options;
    former.demo_password = "demo1234";
    ServiceCore core(former);
    ASSERT_TRUE(LogsIn(core, "demo1234"));
  }
  std::string fresh;
  {
    ServiceCore core(options);
    fresh = core.new_demo_password();
    EXPECT_GE(fresh.size(), 12u);
    EXPECT_FALSE(LogsIn(core, "demo1234"));
    EXPECT_TRUE(LogsIn(core, fresh));
  }
  ServiceCore core(options);
  EXPECT_EQ(core.new_demo_password(), "");
  EXPECT_TRUE(LogsIn(core, fresh));
  EXPECT_NE(Kept(dir.path()).find("Password: " + fresh + "\n"),
            std::string::npos);
}

}  // namespace
}  // namespace qbpd::service
