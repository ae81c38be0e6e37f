// A store that fails in the middle of an operation: the client gets the
// failure code, and nothing is left half done: no photo without its row, no
// album without its photo, no order confirmed by a confirmation that failed.
#include "service/db.h"
#include "tests/service/service_fixture.h"
#include "tests/support/failing_db.h"

#include <filesystem>

namespace qbpd::service {
namespace {

namespace fs = std::filesystem;

class StoreFailureTest : public ServiceTest {
 protected:
  StoreFailureTest() {
    adjust_ = [this](ServiceOptions& options) {
      store_ = std::make_shared<testing::FailingDb>(
          OpenSqliteDb((dir_ / "service.db").string()));
      options.store = store_;
    };
  }

  // Every file under the photos folder.
  std::vector<fs::path> StoredFiles() {
    std::vector<fs::path> files;
    for (const auto& entry :
         fs::recursive_directory_iterator(dir_ / "photos")) {
      if (entry.is_regular_file()) {
        files.push_back(entry.path());
      }
    }
    return files;
  }

  std::shared_ptr<testing::FailingDb> store_;
};

TEST_F(StoreFailureTest, AnUploadWhoseRowFailsLeavesNoPhotoAndNoAlbum) {
  const std::string code = DemoLogin();
  const json albums_before = Call("GetAlbumList", {{"authCode", code}}).second;
  store_->fail_on = "INSERT INTO photos";
  auto [status, answer] = Upload(code, "", "Lost", kPng);
  EXPECT_EQ(status, 500);
  EXPECT_EQ(answer["errCode"], "9999") << answer.dump();
  EXPECT_EQ(answer["fatal"], true);
  EXPECT_EQ(store_->failed, 1);
  EXPECT_TRUE(StoredFiles().empty());
  // The album made for it went with it.
  store_->fail_on.clear();
  EXPECT_EQ(Call("GetAlbumList", {{"authCode", code}}).second, albums_before);
  // And the store goes on.
  EXPECT_EQ(Upload(code, "", "Kept", kPng).second["ok"], true);
  EXPECT_EQ(StoredFiles().size(), 1u);
}

TEST_F(StoreFailureTest, AConfirmationThatFailsLeavesTheOrderToConfirm) {
  const std::string code = DemoLogin();
  const json uploaded = Upload(code, "", "Prints", kJpeg).second;
  json rows = json::array();
  for (const char* quantity : {"3", "0", "0", "0"}) {
    rows.push_back({quantity, "0", "0"});
  }
  const json quote =
      Call("PlaceOrder",
           {{"authCode", code},
            {"orderLines", {{{"key", "k"}, {"rows", rows}}}},
            {"orderIndex",
             json::array({json::array({uploaded["imageId"], "1"})})}})
          .second;
  const std::string order = quote["orderId"];
  ASSERT_FALSE(order.empty()) << quote.dump();

  // The free prints are marked used in the same transaction; its failure
  // takes the confirmation back too.
  store_->fail_on = "UPDATE accounts SET free_used";
  auto [status, failed] =
      Call("ConfirmOrder", {{"authCode", code}, {"orderId", order}});
  EXPECT_EQ(failed["errCode"], "9999") << failed.dump();
  EXPECT_EQ(store_->failed, 1);
  store_->fail_on.clear();
  EXPECT_NE(
      Page("/orderstatus/o=" + order + "/u_=" + code).second.find("quoted"),
      std::string::npos);
  EXPECT_EQ(Call("ConfirmOrder", {{"authCode", code}, {"orderId", order}})
                .second["ok"],
            true);
}

TEST_F(StoreFailureTest, ALostStoreAnswersEveryOperationWithTheFailureCode) {
  const std::string code = DemoLogin();
  store_->fail_on = "SELECT";
  for (const char* operation :
       {"GetUserInfo", "GetAlbumList", "GetAddressBook", "GetPriceList"}) {
    auto [status, answer] = Call(operation, {{"authCode", code}});
    EXPECT_EQ(answer["errCode"], "9999") << operation << answer.dump();
  }
  EXPECT_EQ(Page("/thumbnailshare/AlbumID=1/u_=" + code).first, 500);
}

}  // namespace
}  // namespace qbpd::service
