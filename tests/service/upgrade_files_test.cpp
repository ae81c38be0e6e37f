// The service's upgrade files: the offered file, and the signature published
// beside it only when there is one.
#include "tests/service/service_fixture.h"

#include <filesystem>
#include <fstream>

namespace qbpd::service {
namespace {

constexpr char kSignature[] = "c2lnbmVkIGVsc2V3aGVyZQ==";

class SignedUpgradeTest : public ServiceTest {
 protected:
  SignedUpgradeTest() {
    adjust_ = [](ServiceOptions& options) {
      options.upgrade_version = "3.0";
      options.upgrade_signature = kSignature;
    };
  }
};

TEST_F(ServiceTest, NoSignatureIsPublishedWithoutOne) {
  auto [status, body] = Page("/download/upgrade1.exe.sig");
  EXPECT_EQ(status, 404);
}

TEST_F(SignedUpgradeTest, TheSignatureLiesBesideTheFile) {
  auto [status, body] = Page("/download/upgrade1.exe.sig");
  EXPECT_EQ(status, 200);
  EXPECT_EQ(body, std::string(kSignature) + "\n");
  auto [xml_status, xml] = Page("/download/upgrade.xml");
  EXPECT_NE(xml.find("<version>3.0</version>"), std::string::npos);
}

// A named file is read at each download, so what the service serves is the
// file as it is now; one that can't be read is nothing.
TEST(UpgradeFileContentTest, ANamedFileIsReadAsItIsNow) {
  testing::TempDir dir;
  ServiceOptions options;
  options.upgrade_version = "2.5";
  EXPECT_NE(UpgradeFileContent(options)->find("upgrade 2.5"),
            std::string::npos);
  options.upgrade_file = dir.WriteFile("upgrade1.exe", "first").string();
  EXPECT_EQ(UpgradeFileContent(options), "first");
  std::ofstream(options.upgrade_file, std::ios::trunc) << "second";
  EXPECT_EQ(UpgradeFileContent(options), "second");
  options.upgrade_file = (dir / "missing").string();
  EXPECT_FALSE(UpgradeFileContent(options).has_value());
}

}  // namespace
}  // namespace qbpd::service
