#include "online/service_client.h"

#include "platform/forms/scripted_host.h"
#include "platform/http_transport.h"
#include "platform/json_value.h"
#include "tests/online/test_server.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace qbpd {
namespace {

using testing::ClosingListener;
using testing::Gate;
using testing::ReadFile;
using testing::TempDir;
using testing::TestServer;

constexpr char kSite[] = "http://svc.test/api";

// A transport that answers from a queue and keeps every request. With
// `pumps` set, a request waits that many pumps first (or until cancelled), so
// that events run under it.
class FakeTransport : public HttpTransport {
 public:
  struct State {
    std::vector<HttpRequest> requests;
    std::deque<HttpResponse> answers;
    int pumps = 0;
    bool cancel_seen = false;
  };

  explicit FakeTransport(State& state) : state_(state) {}

  HttpResponse Perform(const HttpRequest& request, const Pump& pump) override {
    state_.requests.push_back(request);
    cancelled_ = false;
    for (int i = 0; i < state_.pumps && !cancelled_; ++i) {
      pump();
    }
    if (cancelled_) {
      state_.cancel_seen = true;
      HttpResponse r;
      r.failure = HttpFailure::kCancelled;
      return r;
    }
    if (state_.answers.empty()) {
      HttpResponse r;
      r.failure = HttpFailure::kNoConnection;
      return r;
    }
    HttpResponse r = std::move(state_.answers.front());
    state_.answers.pop_front();
    return r;
  }

  void Cancel() override { cancelled_ = true; }

 private:
  State& state_;
  bool cancelled_ = false;
};

HttpResponse Json(const std::string& body, int status = 200) {
  HttpResponse r;
  r.status = status;
  r.content_type = "application/json";
  r.body = body;
  return r;
}

HttpResponse Failure(HttpFailure failure) {
  HttpResponse r;
  r.failure = failure;
  r.error_text = "transport said no";
  return r;
}

class ServiceClientTest : public ::testing::Test {
 protected:
  ServiceClientTest()
      : client_(MakeServiceClient(host_, [this] {
          return std::make_unique<FakeTransport>(state_);
        })) {}

  void Answer(HttpResponse r) { state_.answers.push_back(std::move(r)); }
  const HttpRequest& LastRequest() const { return state_.requests.back(); }
  JsonValue LastBody() const {
    return ParseJson(LastRequest().body).value_or(JsonValue());
  }

  ScriptedHost host_;
  FakeTransport::State state_;
  std::unique_ptr<ctlExtAPI> client_;
  std::string code_;
  std::string text_;
};

TEST_F(ServiceClientTest, LoginPostsTheCredentialsAndReturnsBothCodes) {
  Answer(Json(R"({"ok":true,"errCode":"","errText":"",)"
              R"("session":["abc123","u77"]})"));
  StringArray session;
  ASSERT_TRUE(
      client_->LoginUser(kSite, "Ann@x.test", "pw 1", session, code_, text_));
  EXPECT_EQ(session, (StringArray{"abc123", "u77"}));
  EXPECT_EQ(LastRequest().method, "POST");
  EXPECT_EQ(LastRequest().url, "http://svc.test/api/LoginUser");
  JsonValue body = LastBody();
  EXPECT_EQ(body.Find("email")->text(), "Ann@x.test");
  EXPECT_EQ(body.Find("password")->text(), "pw 1");
  EXPECT_FALSE(client_->IsBusy());
  EXPECT_FALSE(client_->IsCancelled());
}

TEST_F(ServiceClientTest, AFailureGivesTheCodeAndTextAndLeavesOutputsAlone) {
  struct Case {
    const char* what;
    HttpResponse answer;
    const char* code;
    const char* text;  // a part of the error text
  };
  const Case cases[] = {
      {"no such account",
       Json(R"({"ok":false,"errCode":"2006","errText":"Oops!"})"), "2006",
       "Oops!"},
      {"a refusal under an error status",
       Json(R"({"ok":false,"errCode":"9999","errText":"bad request"})", 400),
       "9999", "bad request"},
      {"a refusal without a code",
       Json(R"({"ok":false,"errCode":"","errText":""})"), "9999",
       "problem with the server"},
      {"an HTML error page", Json("<html>500</html>", 500), "9999",
       "problem with the server"},
      {"an answer that is no JSON", Json("Service Unavailable"), "9999",
       "problem with the server"},
      {"JSON that is no envelope", Json(R"(["ok"])"), "9999",
       "problem with the server"},
      {"no connection", Failure(HttpFailure::kNoConnection), "0",
       "Please check Internet Connection"},
      {"a time-out", Failure(HttpFailure::kTimeout), "0",
       "Please check Internet Connection"},
      {"an answer too large", Failure(HttpFailure::kTooLarge), "9999",
       "transport said no"},
  };
  for (const Case& c : cases) {
    Answer(c.answer);
    StringArray session = {"old", "codes"};
    code_ = text_ = "";
    EXPECT_FALSE(
        client_->LoginUser(kSite, "a@x.test", "pw", session, code_, text_))
        << c.what;
    EXPECT_EQ(code_, c.code) << c.what;
    EXPECT_NE(text_.find(c.text), std::string::npos) << c.what << ": " << text_;
    EXPECT_EQ(session, (StringArray{"old", "codes"})) << c.what;
    EXPECT_FALSE(client_->IsBusy()) << c.what;
  }
}

TEST_F(ServiceClientTest, AnOutputOfTheWrongShapeIsAnUnreadableAnswer) {
  // The album list must be a table; a plain text is refused as a whole.
  Answer(Json(R"({"ok":true,"albums":"a1"})"));
  TextGrid albums = TextGrid::FromRows({{"keep"}, {"me"}});
  EXPECT_FALSE(client_->GetAlbumList(kSite, "auth", albums, code_, text_));
  EXPECT_EQ(code_, "9999");
  EXPECT_EQ(albums, TextGrid::FromRows({{"keep"}, {"me"}}));
}

TEST_F(ServiceClientTest, UserInfoFillsTheRecordsToTheirSizes) {
  Answer(
      Json(R"({"ok":true,"accountType":"FUL",)"
           R"("profile":["a@x.test","Ann","Lee"],)"
           R"("address":["","Ann","Lee","1 Main St","","Town","CA","94105"],)"
           R"("card":["Ann Lee","XXXXXXXXXXXX1111","0","2031","94105"]})"));
  std::string type;
  StringArray profile;
  StringArray address;
  StringArray card;
  ASSERT_TRUE(client_->GetUserInfo(kSite, "auth1", type, profile, address, card,
                                   code_, text_));
  EXPECT_EQ(LastBody().Find("authCode")->text(), "auth1");
  EXPECT_EQ(type, "FUL");
  ASSERT_EQ(profile.size(), 5u);  // three sent, five kept
  EXPECT_EQ(profile[1], "Ann");
  EXPECT_EQ(profile[4], "");
  EXPECT_EQ(address[6], "CA");
  EXPECT_EQ(card[1], "XXXXXXXXXXXX1111");
  EXPECT_EQ(card[2], "0");
}

TEST_F(ServiceClientTest, PriceListGivesTiersBySizeNumberAndTheBands) {
  Answer(Json(R"({"ok":true,"priceTiers":[)"
              R"(["1",[["1","24","0.29"],["25","99","0.25"]]],)"
              R"(["4",[["1","9999","1.49"]]]],)"
              R"("shippingBands":[["1","25","2.99"],["101","0","1.5"]]})"));
  PriceTierDictionary prices;
  TextGrid bands;
  ASSERT_TRUE(client_->GetPriceList(kSite, prices, bands, code_, text_));
  EXPECT_EQ(LastRequest().url, "http://svc.test/api/GetPriceList");
  ASSERT_EQ(prices.Keys(), (std::vector<int>{1, 4}));
  EXPECT_EQ(prices.Item(1)(1, 2), "0.25");
  EXPECT_EQ(prices.Item(4)(0, 1), "9999");
  ASSERT_EQ(bands.Rows(), 2);
  EXPECT_EQ(bands(1, 0), "101");
  EXPECT_EQ(bands(1, 2), "1.5");
}

TEST_F(ServiceClientTest, AlbumListHasIdsInRowZeroAndNamesInRowOne) {
  Answer(
      Json(R"({"ok":true,"albums":[["a1","a2"],["Holiday","Cats & dogs"]]})"));
  Answer(Json(R"({"ok":true,"albums":[[""],[""]]})"));
  // A service that sends no rows at all still leaves (1, 0) to read.
  Answer(Json(R"({"ok":true,"albums":[]})"));
  TextGrid albums;
  ASSERT_TRUE(client_->GetAlbumList(kSite, "auth", albums, code_, text_));
  EXPECT_EQ(albums(0, 1), "a2");
  EXPECT_EQ(albums(1, 1), "Cats & dogs");
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(client_->GetAlbumList(kSite, "auth", albums, code_, text_));
    EXPECT_EQ(albums(1, 0), "") << i;
  }
}

TEST_F(ServiceClientTest, AnEmptyAddressBookIsAFalseWithTheServiceCode) {
  Answer(Json(R"({"ok":false,"errCode":"1002",)"
              R"("errText":"Your address book is empty."})"));
  Answer(Json(R"({"ok":true,"emails":["b@y.test","c@z.test"]})"));
  StringArray emails;
  EXPECT_FALSE(client_->GetAddressBook(kSite, "auth", emails, code_, text_));
  EXPECT_EQ(code_, "1002");
  EXPECT_TRUE(emails.empty());
  ASSERT_TRUE(client_->GetAddressBook(kSite, "auth", emails, code_, text_));
  EXPECT_EQ(emails, (StringArray{"b@y.test", "c@z.test"}));
}

TEST_F(ServiceClientTest, ShareSendsEveryValueAndReturnsTheAcceptedList) {
  Answer(Json(R"({"ok":true,"accepted":"b@y.test"})"));
  std::string accepted = "stale";
  ASSERT_TRUE(client_->ShareAlbum(kSite, "auth", "al9",
                                  {"b@y.test", "not an address", ""}, "Look",
                                  "Our trip", "0", accepted, code_, text_));
  EXPECT_EQ(accepted, "b@y.test");
  JsonValue body = LastBody();
  EXPECT_EQ(body.Find("albumId")->text(), "al9");
  EXPECT_EQ(body.Find("emails")->items().size(), 3u);
  EXPECT_EQ(body.Find("subject")->text(), "Look");
  EXPECT_EQ(body.Find("message")->text(), "Our trip");
  EXPECT_EQ(body.Find("access")->text(), "0");
}

TEST_F(ServiceClientTest, AlbumPhotosReplaceTheDictionaryInTheServicesOrder) {
  Answer(Json(R"({"ok":true,"photos":[["img9","1"],["img3","2"]]})"));
  TextDictionary photos;
  photos.Add("1", "/home/u/a.jpg");
  ASSERT_TRUE(
      client_->GetAlbumPhotos(kSite, "auth", "al9", photos, code_, text_));
  EXPECT_EQ(photos.Keys(), (std::vector<std::string>{"img9", "img3"}));
  EXPECT_EQ(photos.Item("img3"), "2");
  // A dictionary with a key twice is no dictionary.
  Answer(Json(R"({"ok":true,"photos":[["img9","1"],["img9","2"]]})"));
  EXPECT_FALSE(
      client_->GetAlbumPhotos(kSite, "auth", "al9", photos, code_, text_));
  EXPECT_EQ(code_, "9999");
  EXPECT_EQ(photos.Count(), 2);
}

struct OrderValues {
  PrintLineCollection lines;
  TextDictionary index;
  TextGrid totals, free, tax;
  std::string id, shipping;
  StringArray coupon;
  double cost = -1;
  double total = -1;
};

TEST_F(ServiceClientTest, PlaceOrderCarriesTheLinesAndIndexBothWays) {
  Answer(Json(
      R"({"ok":true,)"
      R"("orderLines":[{"key":"7","rows":[["2","0.29","0.58"],["0","0.99","0"],)"
      R"(["0","3.99","0"],["0","1.49","0"]]}],)"
      R"("orderIndex":[["1","/p/a.jpg"]],)"
      R"("sizeTotals":[["2","0.29","0.58"],["0","0.99","0"],["0","3.99","0"],)"
      R"(["0","1.49","0"]],)"
      R"("freePrints":[["","",""]],"orderId":"O-17","shipping":"2.99",)"
      R"("orderTax":[["CA","7.25","0.26"]],)"
      R"("couponResult":["SAVE10","10","-0.058","1"],)"
      R"("costOfPrints":"0.522","orderTotal":"3.772"})"));
  OrderValues o;
  TextGrid line(4, 3);
  line(0, 0) = "2";
  o.lines.Add(line, "7");
  o.index.Add("1", "/p/a.jpg");
  StringArray ship_to = {"", "Bo", "Ray", "2 Elm", "", "Ville", "NY", "10001"};

  ASSERT_TRUE(client_->PlaceOrder(
      kSite, "auth", "u77", "SAVE10", o.lines, o.index, o.totals, o.free, o.id,
      o.shipping, o.tax, o.coupon, o.cost, o.total, code_, text_, &ship_to));
  JsonValue body = LastBody();
  EXPECT_EQ(body.Find("userCode")->text(), "u77");
  EXPECT_EQ(body.Find("couponCode")->text(), "SAVE10");
  EXPECT_EQ(SerializeJson(*body.Find("orderLines")),
            R"([{"key":"7","rows":[["2","",""],["","",""],["","",""],)"
            R"(["","",""]]}])");
  EXPECT_EQ(SerializeJson(*body.Find("orderIndex")), R"([["1","/p/a.jpg"]])");
  EXPECT_EQ(body.Find("shipTo")->items().size(), 8u);

  EXPECT_EQ(o.lines.Item("7")(0, 2), "0.58");
  EXPECT_EQ(o.totals(0, 1), "0.29");
  EXPECT_EQ(o.free(0, 0), "");
  EXPECT_EQ(o.id, "O-17");
  EXPECT_EQ(o.shipping, "2.99");
  EXPECT_EQ(o.tax(0, 1), "7.25");
  EXPECT_EQ(o.coupon[3], "1");
  EXPECT_DOUBLE_EQ(o.cost, 0.522);
  EXPECT_DOUBLE_EQ(o.total, 3.772);

  // The sixteen-argument form sends no ship-to address.
  Answer(Json(R"({"ok":false,"errCode":"4002","errText":"No prints."})"));
  EXPECT_FALSE(client_->PlaceOrder(
      kSite, "auth", "u77", "", o.lines, o.index, o.totals, o.free, o.id,
      o.shipping, o.tax, o.coupon, o.cost, o.total, code_, text_, nullptr));
  EXPECT_EQ(LastBody().Find("shipTo"), nullptr);
  EXPECT_EQ(code_, "4002");
  EXPECT_EQ(o.id, "O-17");
}

TEST_F(ServiceClientTest, RegisterConfirmAndAddressUpdateSendTheirValues) {
  Answer(Json(R"({"ok":true,"result":["newauth","u1"]})"));
  Answer(Json(R"({"ok":true})"));
  Answer(Json(R"({"ok":true,"session":["fresh","u1"]})"));
  StringArray fields(16);
  fields[0] = "Ann";
  fields[2] = "a@x.test";
  StringArray result;
  ASSERT_TRUE(client_->RegisterUser(kSite, fields, result, code_, text_));
  EXPECT_EQ(result[0], "newauth");
  EXPECT_EQ(LastBody().Find("fields")->items().size(), 16u);

  ASSERT_TRUE(client_->ConfirmOrder(kSite, "auth", "O-17", "", code_, text_));
  EXPECT_EQ(LastRequest().url, "http://svc.test/api/ConfirmOrder");
  EXPECT_EQ(LastBody().Find("orderId")->text(), "O-17");

  StringArray session;
  ASSERT_TRUE(client_->UpdateUserAddress(kSite, "auth", "a@x.test", "pw",
                                         StringArray(8), StringArray(5),
                                         session, code_, text_, false, ""));
  EXPECT_EQ(session[0], "fresh");
  JsonValue body = LastBody();
  EXPECT_FALSE(body.Find("cardChanged")->boolean());
  EXPECT_EQ(body.Find("address")->items().size(), 8u);
}

TEST_F(ServiceClientTest, UploadEncodesTheQueryAndPostsTheFileInItsField) {
  Answer(Json(R"({"ok":true,"albumId":"al5","imageId":"img1","fatal":false})"));
  std::string album;
  std::string image;
  bool fatal = true;
  ASSERT_TRUE(client_->UploadFile(
      "http://svc.test/exuploadimages?authcode=k&numimages=1&albumid=&"
      "albumname=Tom & Jerry&sourcecode=QBC&file=/home/u/a b+c.JPG",
      "/home/u/a b+c.JPG", code_, text_, "File", album, image, fatal));
  EXPECT_EQ(album, "al5");
  EXPECT_EQ(image, "img1");
  EXPECT_FALSE(fatal);
  const HttpRequest& request = LastRequest();
  EXPECT_EQ(request.url,
            "http://svc.test/exuploadimages?authcode=k&numimages=1&albumid=&"
            "albumname=Tom%20%26%20Jerry&sourcecode=QBC&"
            "file=%2Fhome%2Fu%2Fa%20b%2Bc.JPG");
  ASSERT_TRUE(request.file.has_value());
  EXPECT_EQ(request.file->field_name, "File");
  EXPECT_EQ(request.file->path, "/home/u/a b+c.JPG");
  EXPECT_EQ(request.file->content_type, "image/jpeg");
}

TEST_F(ServiceClientTest, UploadSaysWhenFurtherFilesNeedNotBeTried) {
  struct Case {
    const char* what;
    HttpResponse answer;
    const char* code;
    bool fatal;
  };
  const Case cases[] = {
      {"connection lost", Failure(HttpFailure::kNoConnection), "0", true},
      {"timed out", Failure(HttpFailure::kTimeout), "0", true},
      {"photo refused",
       Json(R"({"ok":false,"errCode":"3002","errText":"no photo",)"
            R"("fatal":false})"),
       "3002", false},
      {"session gone",
       Json(R"({"ok":false,"errCode":"1001","errText":"log in",)"
            R"("fatal":true})"),
       "1001", true},
      {"service down without an envelope", Json("<html/>", 502), "9999", true},
      {"file unreadable here", Failure(HttpFailure::kBadRequest), "9999",
       false},
  };
  for (const Case& c : cases) {
    Answer(c.answer);
    std::string album = "al5";
    std::string image;
    bool fatal = !c.fatal;
    EXPECT_FALSE(client_->UploadFile("http://svc.test/up?file=x", "x", code_,
                                     text_, "File", album, image, fatal))
        << c.what;
    EXPECT_EQ(code_, c.code) << c.what;
    EXPECT_EQ(fatal, c.fatal) << c.what;
    EXPECT_EQ(album, "al5") << c.what;
  }
}

TEST_F(ServiceClientTest, ACancelClickDuringTheWaitEndsTheCall) {
  state_.pumps = 1000;
  Answer(Json(R"({"ok":true,"session":["a","b"]})"));
  bool busy_in_click = false;
  host_.QueueInside("click cancel", [&] {
    busy_in_click = client_->IsBusy();
    client_->CancelRequest(true);
  });
  StringArray session;
  EXPECT_FALSE(
      client_->LoginUser(kSite, "a@x.test", "pw", session, code_, text_));
  EXPECT_TRUE(busy_in_click);
  EXPECT_TRUE(state_.cancel_seen);
  EXPECT_FALSE(client_->IsBusy());
  EXPECT_TRUE(client_->IsCancelled());
  EXPECT_TRUE(session.empty());
  EXPECT_NE(code_, "0");  // a cancel is no lost connection

  // The next call starts afresh.
  state_.pumps = 0;
  ASSERT_TRUE(
      client_->LoginUser(kSite, "a@x.test", "pw", session, code_, text_));
  EXPECT_FALSE(client_->IsCancelled());
}

TEST_F(ServiceClientTest, ACallStartedWhileOneWaitsIsRefused) {
  state_.pumps = 3;
  Answer(Json(R"({"ok":true,"emails":["a@x.test"]})"));
  std::string inner_code;
  std::string inner_text;
  bool inner_ok = true;
  host_.QueueInside("a timer calls the client again", [&] {
    TextGrid albums;
    inner_ok =
        client_->GetAlbumList(kSite, "auth", albums, inner_code, inner_text);
  });
  StringArray emails;
  EXPECT_TRUE(client_->GetAddressBook(kSite, "auth", emails, code_, text_));
  EXPECT_FALSE(inner_ok);
  EXPECT_EQ(inner_code, "9999");
  EXPECT_EQ(state_.requests.size(), 1u);
}

TEST_F(ServiceClientTest, CancelWithNothingRunningOnlySetsIsCancelled) {
  EXPECT_FALSE(client_->IsBusy());
  EXPECT_FALSE(client_->IsCancelled());
  client_->CancelRequest(true);
  EXPECT_TRUE(client_->IsCancelled());
  EXPECT_TRUE(state_.requests.empty());
}

TEST_F(ServiceClientTest, UpgradeInfoComparesTheOfferedVersion) {
  const std::string xml =
      "<?xml version=\"1.0\"?>\n<upgrade>\n  <version> 1.10.0 </version>\n"
      "  <location>http://svc.test/download/upgrade1.exe?a=1&amp;b=2"
      "</location>\n  <size>1234</size>\n  <notes>Faster &lt;and&gt; "
      "better</notes>\n</upgrade>\n";
  struct Case {
    const char* current;
    bool newer;
  };
  const Case cases[] = {
      {"1.9.9", true},   {"1.9", true},     {"1.10", false},
      {"1.10.0", false}, {"1.10.1", false}, {"2", false},
  };
  for (const Case& c : cases) {
    HttpResponse r;
    r.status = 200;
    r.body = xml;
    Answer(r);
    std::string location;
    std::string version;
    std::string size;
    std::string notes;
    EXPECT_EQ(
        client_->GetUpgradeInfo("http://svc.test/download/upgrade.xml",
                                c.current, location, version, size, notes),
        c.newer)
        << c.current;
    EXPECT_EQ(LastRequest().method, "GET");
    EXPECT_EQ(location, "http://svc.test/download/upgrade1.exe?a=1&b=2");
    EXPECT_EQ(version, "1.10.0");
    EXPECT_EQ(size, "1234");
    EXPECT_EQ(notes, "Faster <and> better");
  }
  // No file, or a file without a version: no upgrade.
  Answer(Json("not found", 404));
  Answer(Json("<upgrade><location>x</location></upgrade>"));
  for (int i = 0; i < 2; ++i) {
    std::string a, b, c, d;
    EXPECT_FALSE(client_->GetUpgradeInfo("u", "1.0", a, b, c, d)) << i;
  }
}

TEST_F(ServiceClientTest, DownloadWritesTheWholeFileOrNothing) {
  TempDir dir;
  HttpResponse file;
  file.status = 200;
  file.body = std::string("MZ\0\x01program", 11);
  Answer(file);
  std::string saved;
  std::string error;
  ASSERT_TRUE(client_->DownloadFile("http://svc.test/download/upgrade1.exe",
                                    dir.path().string(), saved, error))
      << error;
  EXPECT_EQ(saved, (dir / "upgrade1.exe").string());
  EXPECT_EQ(ReadFile(saved), file.body);

  // A failed download leaves the earlier file and no temporary behind.
  Answer(Json("gone", 404));
  Answer(Failure(HttpFailure::kNoConnection));
  for (int i = 0; i < 2; ++i) {
    EXPECT_FALSE(client_->DownloadFile("http://svc.test/download/upgrade1.exe",
                                       dir.path().string(), saved, error));
    EXPECT_FALSE(error.empty());
  }
  EXPECT_EQ(ReadFile(dir / "upgrade1.exe"), file.body);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                          std::filesystem::directory_iterator()),
            1);
  EXPECT_FALSE(client_->DownloadFile("http://svc.test/x",
                                     (dir / "missing").string(), saved, error));
}

TEST(EncodeUploadUrlTest, SplitsTheQueryAtTheProgramsOwnKeys) {
  struct Case {
    const char* built;
    const char* sent;
  };
  const Case cases[] = {
      // "&" and "=" inside the album name stay inside it.
      {"http://h/ex?authcode=a&albumname=A&B=C&sourcecode=QBC&file=/f.jpg",
       "http://h/ex?authcode=a&albumname=A%26B%3DC&sourcecode=QBC&"
       "file=%2Ff.jpg"},
      // Everything after "file=" is the path, whatever it holds.
      {"http://h/ex?albumid=7&file=/x/a&albumid=9#b.jpg",
       "http://h/ex?albumid=7&file=%2Fx%2Fa%26albumid%3D9%23b.jpg"},
      // Empty values stay empty.
      {"http://h/ex?authcode=&numimages=1&albumid=",
       "http://h/ex?authcode=&numimages=1&albumid="},
      // Without a query nothing changes.
      {"http://h/ex", "http://h/ex"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(EncodeUploadUrl(c.built), c.sent) << c.built;
  }
}

TEST(OperationUrlTest, JoinsSiteAndOperationWithOneSlash) {
  EXPECT_EQ(OperationUrl("http://h/api", "GetAlbumList"),
            "http://h/api/GetAlbumList");
  EXPECT_EQ(OperationUrl("http://h/api/", "GetAlbumList"),
            "http://h/api/GetAlbumList");
}

// The real client on the real transport: the host's events run while a call
// waits for a slow service, and a cancel clicked there ends the call.
TEST(ServiceClientOverHttpTest, ACancelClickedWhileTheServiceIsSlow) {
  TestServer server;
  Gate gate;
  server.server().Post("/api/GetAlbumList", [&](const httplib::Request&,
                                                httplib::Response& res) {
    gate.Wait();
    res.set_content(R"({"ok":true,"albums":[["a"],["b"]]})",
                    "application/json");
  });
  server.Start();
  ScriptedHost host;
  auto client = MakeServiceClient(host);
  // The click comes at a pump after the service holds the request.
  std::function<void()> click = [&] {
    if (gate.Reached()) {
      client->CancelRequest(true);
    } else {
      host.QueueInside("click cancel", click);
    }
  };
  host.QueueInside("click cancel", click);
  TextGrid albums;
  std::string code;
  std::string text;
  EXPECT_FALSE(
      client->GetAlbumList(server.base() + "/api", "auth", albums, code, text));
  gate.Open();
  EXPECT_TRUE(client->IsCancelled());
  EXPECT_FALSE(client->IsBusy());
  EXPECT_GT(host.PumpCount(), 0);
  EXPECT_TRUE(albums.IsEmpty());
}

TEST(ServiceClientOverHttpTest, AServiceThatDiesDuringAnUploadIsFatal) {
  TempDir dir;
  auto photo = dir.WriteFile("big.jpg", std::string(512 * 1024, '\xFF'));
  ClosingListener dies(/*read_bytes=*/32 * 1024);
  ScriptedHost host;
  auto client = MakeServiceClient(host);
  std::string code;
  std::string text;
  std::string album = "al1";
  std::string image;
  bool fatal = false;
  EXPECT_FALSE(client->UploadFile(
      dies.base() + "/exuploadimages?authcode=k&file=" + photo.string(),
      photo.string(), code, text, "File", album, image, fatal));
  EXPECT_EQ(code, "0");
  EXPECT_TRUE(fatal);
  EXPECT_EQ(album, "al1");
}

}  // namespace
}  // namespace qbpd
