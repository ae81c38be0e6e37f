#include "online/scripted_service_client.h"

#include "platform/forms/runtime_error.h"
#include "platform/forms/scripted_host.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qbpd {
namespace {

class ScriptedServiceClientTest : public ::testing::Test {
 protected:
  ScriptedHost host_;
  ScriptedServiceClient client_{host_};
  std::string code_;
  std::string text_;
};

TEST_F(ScriptedServiceClientTest, AnswersInQueueOrderAndRecordsEveryCall) {
  LoginUserReply refused;
  refused.ok = false;
  refused.errCode = "2006";
  refused.errText = "Oops!";
  LoginUserReply accepted;
  accepted.session = {"auth1", "user1"};
  client_.Queue(refused);
  client_.Queue(accepted);
  EXPECT_EQ(client_.PendingReplies(), 2u);

  StringArray session = {"old"};
  EXPECT_FALSE(
      client_.LoginUser("site", "a@x.test", "bad", session, code_, text_));
  EXPECT_EQ(code_, "2006");
  EXPECT_EQ(text_, "Oops!");
  EXPECT_EQ(session, StringArray{"old"});
  EXPECT_TRUE(
      client_.LoginUser("site", "a@x.test", "good", session, code_, text_));
  EXPECT_EQ(session, (StringArray{"auth1", "user1"}));
  EXPECT_EQ(client_.PendingReplies(), 0u);

  ASSERT_EQ(client_.Calls().size(), 2u);
  EXPECT_EQ(client_.Calls()[0].Input("password"), "bad");
  EXPECT_EQ(client_.Calls()[1].Input("password"), "good");
  EXPECT_EQ(client_.Calls()[1].Input("site"), "site");
  EXPECT_EQ(client_.Calls()[1].Input("nothing"), "");
}

TEST_F(ScriptedServiceClientTest, AnUnforeseenCallEndsTheRunAndNamesIt) {
  TextGrid albums;
  try {
    client_.GetAlbumList("site", "auth", albums, code_, text_);
    ADD_FAILURE() << "the call was answered";
  } catch (const HostAbort& abort) {
    EXPECT_NE(abort.message().find("GetAlbumList"), std::string::npos);
  }
  // A default answers every call that has nothing queued.
  GetAlbumListReply none;
  none.albums = TextGrid::FromRows({{""}, {""}});
  client_.SetDefault(none);
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(client_.GetAlbumList("site", "auth", albums, code_, text_));
    EXPECT_EQ(albums(1, 0), "");
  }
  EXPECT_EQ(client_.Operations(),
            (std::vector<std::string>{"GetAlbumList", "GetAlbumList",
                                      "GetAlbumList"}));
}

TEST_F(ScriptedServiceClientTest, UploadGivesFatalAlsoOnFailure) {
  UploadFileReply lost;
  lost.ok = false;
  lost.errCode = "0";
  lost.fatal = true;
  UploadFileReply stored;
  stored.albumId = "al1";
  stored.imageId = "img1";
  client_.Queue(stored);
  client_.Queue(lost);
  std::string album;
  std::string image;
  bool fatal = true;
  EXPECT_TRUE(client_.UploadFile("http://h/up?file=/a.jpg", "/a.jpg", code_,
                                 text_, "File", album, image, fatal));
  EXPECT_EQ(album, "al1");
  EXPECT_FALSE(fatal);
  EXPECT_FALSE(client_.UploadFile("http://h/up?file=/b.jpg", "/b.jpg", code_,
                                  text_, "File", album, image, fatal));
  EXPECT_TRUE(fatal);
  EXPECT_EQ(code_, "0");
  EXPECT_EQ(album, "al1");
  // The second call was made with the album of the first.
  EXPECT_EQ(client_.Calls()[1].Input("albumId"), "al1");
  EXPECT_EQ(client_.Calls()[1].Input("fieldName"), "File");
}

TEST_F(ScriptedServiceClientTest, PlaceOrderRecordsItsCollectionsAndShipTo) {
  PlaceOrderReply quote;
  quote.orderId = "O-1";
  quote.costOfPrints = 2.5;
  quote.couponResult = {"SAVE10", "10", "-0.25", "1"};
  client_.Queue(quote);
  PrintLineCollection lines;
  TextGrid line(4, 3);
  line(0, 0) = "3";
  lines.Add(line, "k1");
  TextDictionary index;
  index.Add("1", "/p/a.jpg");
  TextGrid totals, free, tax;
  std::string id, shipping;
  StringArray coupon;
  double cost = 0, total = 0;
  StringArray ship_to(8, "x");
  ASSERT_TRUE(client_.PlaceOrder("site", "auth", "u1", "SAVE10", lines, index,
                                 totals, free, id, shipping, tax, coupon, cost,
                                 total, code_, text_, &ship_to));
  EXPECT_EQ(id, "O-1");
  EXPECT_DOUBLE_EQ(cost, 2.5);
  EXPECT_EQ(coupon[3], "1");
  // Lines and index come back as they went when the reply has none.
  EXPECT_EQ(lines.Item("k1")(0, 0), "3");
  EXPECT_EQ(index.Item("1"), "/p/a.jpg");
  const RecordedCall& call = client_.Calls().back();
  EXPECT_EQ(call.Input("orderLines"),
            R"([{"key":"k1","rows":[["3","",""],["","",""],["","",""],)"
            R"(["","",""]]}])");
  EXPECT_EQ(call.Input("orderIndex"), R"([["1","/p/a.jpg"]])");
  EXPECT_EQ(call.Input("shipTo"), R"(["x","x","x","x","x","x","x","x"])");
}

TEST_F(ScriptedServiceClientTest, ASlowCallLetsTimersRunUntilItsTimeIsUp) {
  GetAddressBookReply slow;
  slow.wait_ms = 1500;
  slow.emails = {"b@y.test"};
  client_.Queue(slow);
  bool busy_meanwhile = false;
  host_.QueueInside("look while the call waits",
                    [&] { busy_meanwhile = client_.IsBusy(); });
  long long start = host_.TickCount();
  StringArray emails;
  EXPECT_TRUE(client_.GetAddressBook("site", "auth", emails, code_, text_));
  EXPECT_EQ(host_.TickCount() - start, 1500);
  EXPECT_TRUE(busy_meanwhile);
  EXPECT_FALSE(client_.IsBusy());
  EXPECT_EQ(emails, StringArray{"b@y.test"});
}

TEST_F(ScriptedServiceClientTest, ACancelClickEndsASlowCallAtOnce) {
  UploadFileReply slow;
  slow.wait_ms = 60000;
  slow.albumId = "al1";
  client_.Queue(slow);
  host_.QueueInside("click cancel", [&] { client_.CancelRequest(true); });
  long long start = host_.TickCount();
  std::string album;
  std::string image;
  bool fatal = true;
  EXPECT_FALSE(client_.UploadFile("u", "/a.jpg", code_, text_, "File", album,
                                  image, fatal));
  EXPECT_LT(host_.TickCount() - start, 100);
  EXPECT_FALSE(client_.IsBusy());
  EXPECT_TRUE(client_.IsCancelled());
  EXPECT_FALSE(fatal);
  EXPECT_EQ(album, "");
  EXPECT_EQ(client_.CancelRequests(), 1);
}

TEST_F(ScriptedServiceClientTest, UpgradeRepliesCarryTheirTexts) {
  GetUpgradeInfoReply newer;
  newer.downloadLocation = "http://h/download/upgrade1.exe";
  newer.newVersion = "1.1.0";
  client_.Queue(newer);
  std::string location, version, size, notes;
  EXPECT_TRUE(
      client_.GetUpgradeInfo("u", "1.0", location, version, size, notes));
  EXPECT_EQ(location, "http://h/download/upgrade1.exe");
  EXPECT_EQ(client_.Calls().back().Input("currentVersion"), "1.0");
}

}  // namespace
}  // namespace qbpd
