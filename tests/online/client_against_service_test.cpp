// The real service client, over libcurl, against the real qbpd-service
// program on a loopback port: every operation with the values that the
// online forms keep between calls.

#include "core/session.h"
#include "online/service_client.h"
#include "platform/forms/scripted_host.h"
#include "tests/online/service_process.h"
#include "tests/online/test_photos.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

using testing::ReadFile;
using testing::ServiceProcess;
using testing::TempDir;

constexpr char kDemoEmail[] = "demo@quillbay.test";
constexpr char kNoAccountLine[] =
    "Oops! There is no Quillbay account with this email address.";
constexpr char kCheckConnection[] = "Please check Internet Connection";
constexpr double kCents = 1e-9;

int ThisYear() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  return parts.tm_year + 1900;
}

// Sign-up fields of a complete, valid account in Texas with a card.
StringArray ValidSignUp(const std::string& email) {
  return {"Ann",
          "Lee",
          email,
          "secret1",
          "5 Congress Ave",
          "",
          "Austin",
          "TX",
          "78701",
          "512-555-0100",
          "",
          "Ann Lee",
          "4111 1111 1111 1111",
          "01",
          std::to_string(ThisYear() + 3),
          "78701"};
}

// One photo's print line: quantities of 4 x 6, 5 x 7, 8 x 10 and wallet.
TextGrid PrintLine(int q4x6, int q5x7 = 0, int q8x10 = 0, int wallet = 0) {
  return TextGrid::FromRows({{std::to_string(q4x6), "0", "0"},
                             {std::to_string(q5x7), "0", "0"},
                             {std::to_string(q8x10), "0", "0"},
                             {std::to_string(wallet), "0", "0"}});
}

// What PlaceOrder hands back, in the shapes of the order form's values.
struct Quote {
  bool ok = false;
  PrintLineCollection gcolOrderLines;
  TextDictionary gdicOrderIndex;
  TextGrid gsaSizeTotals;
  TextGrid gsaFreePrints;
  std::string gsOrderId;
  std::string msShipping;
  TextGrid gsaOrderTax;
  StringArray gsaCouponResult;
  double mdCostOfPrints = 0;
  double orderTotal = 0;
  std::string errCode;
  std::string errText;
};

class ClientAgainstServiceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    service_ = std::make_unique<ServiceProcess>(
        QBPD_SERVICE_PROGRAM, data_.path(),
        std::vector<std::string>{"--seed-demo"});
    ASSERT_TRUE(service_->ok()) << service_->error();
    demo_password_ = service_->demo_password();
    ASSERT_FALSE(demo_password_.empty());
    gsSiteUrl = service_->site();
    gsSiteAddress = service_->base();
    client_ = MakeServiceClient(host_);
  }

  // Every test ends with the service stopped as a user stops it. The client
  // goes first: the service lets an idle kept-alive connection hold its stop
  // for seconds.
  void TearDown() override {
    client_.reset();
    if (service_ && service_->pid() > 0) {
      EXPECT_EQ(service_->Terminate(), 0);
    }
  }

  // Logs in and keeps the codes where the connection form keeps them.
  void LogIn(const std::string& email, const std::string& password) {
    StringArray codes;
    ASSERT_TRUE(
        client_->LoginUser(gsSiteUrl, email, password, codes, errCode, errText))
        << errCode << " " << errText;
    session_.gsAuthCode = codes[0];
    gsUserCode = codes[1];
    session_.gsUserEmail = email;
  }

  // Makes an account through sign-up; the new account is logged in.
  void SignUp(const StringArray& fields) {
    StringArray result;
    ASSERT_TRUE(
        client_->RegisterUser(gsSiteUrl, fields, result, errCode, errText))
        << errCode << " " << errText;
    session_.gsAuthCode = result[0];
    session_.gsUserEmail = fields[2];
  }

  // A JPEG of its own in the photo folder under `name`.
  std::string Photo(const std::string& name, std::uint32_t seed) {
    return photos_.WriteFile(name, testing::MakeJpeg(64, 48, seed, 90))
        .string();
  }

  // The upload address exactly as the upload engine builds it, unescaped.
  std::string UploadUrl(const std::string& path) const {
    return gsSiteAddress + "/exuploadimages?authcode=" + session_.gsAuthCode +
           "&numimages=1&albumid=" + session_.gsAlbumId +
           "&albumname=" + gsAlbumName + "&sourcecode=QBC&file=" + path;
  }

  // Uploads one file as the upload engine does; the album that now holds it
  // becomes the run's album.
  bool Upload(const std::string& path, std::string& imageId, bool& fatal) {
    errCode.clear();
    errText.clear();
    std::string album = session_.gsAlbumId;
    const bool ok = client_->UploadFile(UploadUrl(path), path, errCode, errText,
                                        "File", album, imageId, fatal);
    session_.gsAlbumId = album;
    return ok;
  }

  TextGrid Albums() {
    TextGrid gasAlbums;
    EXPECT_TRUE(client_->GetAlbumList(gsSiteUrl, session_.gsAuthCode, gasAlbums,
                                      errCode, errText))
        << errCode << " " << errText;
    return gasAlbums;
  }

  Quote PlaceOrder(const std::string& coupon,
                   const PrintLineCollection& lines,
                   const TextDictionary& index,
                   const StringArray* ship_to = nullptr) {
    Quote q;
    q.gcolOrderLines = lines;
    q.gdicOrderIndex = index;
    q.ok = client_->PlaceOrder(
        gsSiteUrl, session_.gsAuthCode, gsUserCode, coupon, q.gcolOrderLines,
        q.gdicOrderIndex, q.gsaSizeTotals, q.gsaFreePrints, q.gsOrderId,
        q.msShipping, q.gsaOrderTax, q.gsaCouponResult, q.mdCostOfPrints,
        q.orderTotal, q.errCode, q.errText, ship_to);
    return q;
  }

  // An order of one photo per quantity, keyed by position, before upload.
  static std::pair<PrintLineCollection, TextDictionary> OrderOf(
      const std::vector<int>& quantities_4x6) {
    PrintLineCollection lines;
    TextDictionary index;
    for (size_t i = 0; i < quantities_4x6.size(); ++i) {
      const std::string key = "/photos/p" + std::to_string(i + 1) + ".jpg";
      lines.Add(PrintLine(quantities_4x6[i]), key);
      index.Add(std::to_string(i + 1), key);
    }
    return {lines, index};
  }

  TempDir data_;
  TempDir photos_;
  ScriptedHost host_;
  std::unique_ptr<ServiceProcess> service_;
  // The demonstration account's password, random for every service.
  std::string demo_password_;
  std::unique_ptr<ctlExtAPI> client_;
  Session session_;
  // Values of the online forms that the session object leaves to them.
  std::string gsSiteUrl;
  std::string gsSiteAddress;
  std::string gsUserCode;
  std::string gsAlbumName = "Holiday";
  std::string errCode;
  std::string errText;
};

TEST_F(ClientAgainstServiceTest, LoginGivesTheSessionCodesOrSaysWhy) {
  // The address is compared without regard to case.
  LogIn("Demo@Quillbay.TEST", demo_password_);
  EXPECT_EQ(session_.gsAuthCode.size(), 64u);
  EXPECT_EQ(session_.gsAuthCode.find_first_not_of("0123456789abcdef"),
            std::string::npos);
  EXPECT_FALSE(gsUserCode.empty());
  EXPECT_EQ(Albums()(1, 0), "Demo album");

  struct Case {
    const char* email;
    const char* password;
    const char* code;
  };
  const Case cases[] = {
      {"nobody@quillbay.test", demo_password_.c_str(), "2006"},  // no account
      {"", demo_password_.c_str(), "2006"},  // no address at all
      {kDemoEmail, "demo12345", "2007"},     // wrong password
  };
  for (const Case& c : cases) {
    StringArray codes = {"kept", "kept"};
    errCode.clear();
    errText.clear();
    EXPECT_FALSE(client_->LoginUser(gsSiteUrl, c.email, c.password, codes,
                                    errCode, errText));
    EXPECT_EQ(errCode, c.code) << c.email;
    EXPECT_FALSE(errText.empty());
    EXPECT_EQ(codes, (StringArray{"kept", "kept"}));
  }
  errCode.clear();
  StringArray codes;
  client_->LoginUser(gsSiteUrl, "x@quillbay.test", "pw", codes, errCode,
                     errText);
  EXPECT_NE(errText.find(kNoAccountLine), std::string::npos) << errText;

  // A second login opens a second session; the first one stays good.
  const std::string first = session_.gsAuthCode;
  LogIn(kDemoEmail, demo_password_);
  EXPECT_NE(session_.gsAuthCode, first);
  TextGrid albums;
  EXPECT_TRUE(
      client_->GetAlbumList(gsSiteUrl, first, albums, errCode, errText));
}

TEST_F(ClientAgainstServiceTest, SignUpRefusalsCarryTheFieldsCode) {
  struct Case {
    size_t field;
    const char* value;
    const char* code;
  };
  const Case cases[] = {
      {0, "", "2001"},                      // first name missing
      {1, "", "2002"},                      // last name missing
      {2, "ann@", "2003"},                  // no domain
      {3, "abc", "2004"},                   // password too short
      {9, "555/0100", "2005"},              // phone with a slash
      {4, "", "2008"},                      // street missing, city given
      {7, "ZZ", "2011"},                    // unknown state
      {8, "7870", "2012"},                  // zip of four digits
      {8, "94105", "2013"},                 // a California zip in Texas
      {12, "4111 1111 1111", "2016"},       // twelve digits
      {13, "13", "2017"},                   // no thirteenth month
      {14, "2001", "2018"},                 // long expired
      {12, "4111 1111 1111 1112", "2019"},  // check digit wrong
      {15, "ABCDE", "2020"},                // billing zip not digits
  };
  for (const Case& c : cases) {
    StringArray fields = ValidSignUp("ann@example.test");
    fields[c.field] = c.value;
    StringArray result = {"untouched"};
    errCode.clear();
    errText.clear();
    EXPECT_FALSE(
        client_->RegisterUser(gsSiteUrl, fields, result, errCode, errText));
    EXPECT_EQ(errCode, c.code) << "field " << c.field << " = " << c.value;
    EXPECT_FALSE(errText.empty()) << c.code;
    EXPECT_EQ(result, StringArray{"untouched"});
  }

  // With several fields wrong, the account step's field is named first.
  StringArray fields = ValidSignUp("not an address");
  fields[12] = "1234";
  StringArray result;
  EXPECT_FALSE(
      client_->RegisterUser(gsSiteUrl, fields, result, errCode, errText));
  EXPECT_EQ(errCode, "2003");

  // A valid sign-up with the demo's address in other letters is a duplicate.
  fields = ValidSignUp("DEMO@quillbay.test");
  EXPECT_FALSE(
      client_->RegisterUser(gsSiteUrl, fields, result, errCode, errText));
  EXPECT_EQ(errCode, "2021");
}

TEST_F(ClientAgainstServiceTest, SignUpLogsInAndUserInfoShowsTheMaskedCard) {
  const StringArray fields = ValidSignUp("ann@example.test");
  SignUp(fields);
  std::string gsAccountStatus;
  StringArray gsaUserName;
  StringArray gsaUserAddress;
  StringArray gsaUserCard;
  ASSERT_TRUE(client_->GetUserInfo(gsSiteUrl, session_.gsAuthCode,
                                   gsAccountStatus, gsaUserName, gsaUserAddress,
                                   gsaUserCard, errCode, errText))
      << errCode << " " << errText;
  EXPECT_EQ(gsAccountStatus, "FUL");
  ASSERT_EQ(gsaUserName.size(), 5u);
  EXPECT_EQ(gsaUserName[0], "ann@example.test");
  EXPECT_EQ(gsaUserName[1], "Ann");
  EXPECT_EQ(gsaUserName[2], "Lee");
  ASSERT_EQ(gsaUserAddress.size(), 8u);
  EXPECT_EQ(gsaUserAddress[3], "5 Congress Ave");
  EXPECT_EQ(gsaUserAddress[5], "Austin");
  EXPECT_EQ(gsaUserAddress[6], "TX");
  EXPECT_EQ(gsaUserAddress[7], "78701");
  // The full number never comes back; January, "01" on the card, counts
  // from 0.
  ASSERT_EQ(gsaUserCard.size(), 5u);
  EXPECT_EQ(gsaUserCard, (StringArray{"Ann Lee", "XXXXXXXXXXXX1111", "0",
                                      fields[14], "78701"}));

  // The password of the sign-up is the login's.
  LogIn("ann@example.test", "secret1");

  // Without address and card the account is a light one with empty cells.
  StringArray bare(4);
  bare[0] = "Bo";
  bare[1] = "Bell";
  bare[2] = "bo@example.test";
  bare[3] = "secret2";
  SignUp(bare);
  gsaUserCard = {"stale"};
  ASSERT_TRUE(client_->GetUserInfo(gsSiteUrl, session_.gsAuthCode,
                                   gsAccountStatus, gsaUserName, gsaUserAddress,
                                   gsaUserCard, errCode, errText));
  EXPECT_EQ(gsAccountStatus, "LTE");
  EXPECT_EQ(gsaUserCard, StringArray(5));
  EXPECT_EQ(gsaUserAddress[3], "");

  // The demo account, seeded with a card, shows it masked as well.
  LogIn(kDemoEmail, demo_password_);
  ASSERT_TRUE(client_->GetUserInfo(gsSiteUrl, session_.gsAuthCode,
                                   gsAccountStatus, gsaUserName, gsaUserAddress,
                                   gsaUserCard, errCode, errText));
  EXPECT_EQ(gsAccountStatus, "FUL");
  EXPECT_EQ(gsaUserCard[1], "XXXXXXXXXXXX1111");
  EXPECT_EQ(gsaUserAddress[6], "CA");
}

TEST_F(ClientAgainstServiceTest, TheFirstUploadMakesTheAlbumAndTheNextFillIt) {
  LogIn(kDemoEmail, demo_password_);
  // A name and a path that hold every separator of the upload address.
  gsAlbumName = "Trip & Friends #2 = 100% + more";
  const std::string first = Photo("my photos/a & b #1.jpg", 1);
  const std::string second = Photo("my photos/c=d+e%20f.jpg", 2);

  session_.gsAlbumId.clear();
  std::string first_id;
  bool fatal = true;
  ASSERT_TRUE(Upload(first, first_id, fatal)) << errCode << " " << errText;
  EXPECT_FALSE(fatal);
  EXPECT_FALSE(session_.gsAlbumId.empty());
  EXPECT_EQ(first_id.rfind('P', 0), 0u) << first_id;
  const std::string album = session_.gsAlbumId;

  std::string second_id;
  ASSERT_TRUE(Upload(second, second_id, fatal)) << errCode << " " << errText;
  EXPECT_EQ(session_.gsAlbumId, album);
  EXPECT_NE(second_id, first_id);

  // The album list, oldest first, has the name exactly as typed.
  const TextGrid gasAlbums = Albums();
  ASSERT_EQ(gasAlbums.Rows(), 2);
  ASSERT_EQ(gasAlbums.Columns(), 2);
  EXPECT_EQ(gasAlbums(1, 0), "Demo album");
  EXPECT_EQ(gasAlbums(0, 1), album);
  EXPECT_EQ(gasAlbums(1, 1), gsAlbumName);

  TextDictionary photos;
  photos.Add("stale", "0");
  ASSERT_TRUE(client_->GetAlbumPhotos(gsSiteUrl, session_.gsAuthCode, album,
                                      photos, errCode, errText));
  ASSERT_EQ(photos.Count(), 2);
  EXPECT_FALSE(photos.Exists("stale"));
  EXPECT_EQ(photos.Item(first_id), "1");
  EXPECT_EQ(photos.Item(second_id), "2");

  // Both files arrived whole: the service holds exactly their bytes.
  std::vector<std::string> stored;
  for (const auto& entry : fs::directory_iterator(data_ / "photos" / album)) {
    stored.push_back(ReadFile(entry.path()));
  }
  ASSERT_EQ(stored.size(), 2u);
  for (const std::string& path : {first, second}) {
    EXPECT_EQ(std::count(stored.begin(), stored.end(), ReadFile(path)), 1)
        << path;
  }

  // An album that isn't there, or another account's, has no photos to give.
  EXPECT_FALSE(client_->GetAlbumPhotos(gsSiteUrl, session_.gsAuthCode, "999999",
                                       photos, errCode, errText));
  EXPECT_EQ(errCode, "3001");
  EXPECT_EQ(photos.Count(), 2);
}

TEST_F(ClientAgainstServiceTest, UploadRefusalsSayWhetherTheRunCanGoOn) {
  LogIn(kDemoEmail, demo_password_);
  std::string image;
  bool fatal = false;

  // A refused photo concerns that photo only.
  const std::string text =
      photos_.WriteFile("notes.jpg", "just some text").string();
  EXPECT_FALSE(Upload(text, image, fatal));
  EXPECT_EQ(errCode, "3002");
  EXPECT_FALSE(fatal);

  // A photo above the size limit of the service is refused alone too, even
  // though the service stops reading it early.
  const fs::path huge = photos_ / "huge.jpg";
  {
    std::ofstream out(huge, std::ios::binary);
    out << testing::MakeJpeg(16, 16, 3, 80);
  }
  fs::resize_file(huge, 51u * 1024 * 1024);
  fatal = true;
  EXPECT_FALSE(Upload(huge.string(), image, fatal));
  EXPECT_EQ(errCode, "3003") << errText;
  EXPECT_FALSE(fatal);

  // Without an album name nothing can go into a new album.
  const std::string photo = Photo("ok.jpg", 4);
  gsAlbumName = "";
  EXPECT_FALSE(Upload(photo, image, fatal));
  EXPECT_EQ(errCode, "3004");
  EXPECT_TRUE(fatal);

  // An album that isn't the account's, or a session that isn't valid, fails
  // every photo that would follow.
  session_.gsAlbumId = "424242";
  fatal = false;
  EXPECT_FALSE(Upload(photo, image, fatal));
  EXPECT_EQ(errCode, "3001");
  EXPECT_TRUE(fatal);
  EXPECT_EQ(session_.gsAlbumId, "424242");

  session_.gsAlbumId.clear();
  gsAlbumName = "Fine";
  session_.gsAuthCode = std::string(64, 'a');
  fatal = false;
  EXPECT_FALSE(Upload(photo, image, fatal));
  EXPECT_EQ(errCode, "1001");
  EXPECT_TRUE(fatal);
  EXPECT_TRUE(image.empty());
}

TEST_F(ClientAgainstServiceTest, ShareTakesValidAddressesIntoTheAddressBook) {
  SignUp(ValidSignUp("ann@example.test"));
  StringArray gasShareEmails = {"kept"};
  // A new account's address book is empty: a false that is no error.
  EXPECT_FALSE(client_->GetAddressBook(gsSiteUrl, session_.gsAuthCode,
                                       gasShareEmails, errCode, errText));
  EXPECT_EQ(errCode, "1002");
  EXPECT_EQ(gasShareEmails, StringArray{"kept"});

  std::string image;
  bool fatal = false;
  ASSERT_TRUE(Upload(Photo("share.jpg", 5), image, fatal)) << errText;

  std::string accepted = "stale";
  const StringArray recipients = {"zoe@example.test", "nobody", "",
                                  "Max@Example.test"};
  ASSERT_TRUE(client_->ShareAlbum(gsSiteUrl, session_.gsAuthCode,
                                  session_.gsAlbumId, recipients, "Look",
                                  "Our trip", "1", accepted, errCode, errText))
      << errCode << " " << errText;
  EXPECT_EQ(accepted, "zoe@example.test,Max@Example.test");

  ASSERT_TRUE(client_->GetAddressBook(gsSiteUrl, session_.gsAuthCode,
                                      gasShareEmails, errCode, errText));
  EXPECT_EQ(gasShareEmails,
            (StringArray{"zoe@example.test", "Max@Example.test"}));

  // No valid address: still a success, with nobody accepted.
  ASSERT_TRUE(client_->ShareAlbum(gsSiteUrl, session_.gsAuthCode,
                                  session_.gsAlbumId, {"a@", "b"}, "", "", "0",
                                  accepted, errCode, errText));
  EXPECT_EQ(accepted, "");

  // The demo's album is not this account's to share.
  accepted = "kept";
  EXPECT_FALSE(client_->ShareAlbum(gsSiteUrl, session_.gsAuthCode, "1",
                                   recipients, "", "", "1", accepted, errCode,
                                   errText));
  EXPECT_EQ(errCode, "3001");
  EXPECT_EQ(accepted, "kept");
}

TEST_F(ClientAgainstServiceTest, PriceListHasTheTiersAndTheSurchargeRow) {
  // No login is needed for the prices.
  PriceTierDictionary gdicPriceTiers;
  TextGrid gsaShippingBands;
  ASSERT_TRUE(client_->GetPriceList(gsSiteUrl, gdicPriceTiers, gsaShippingBands,
                                    errCode, errText))
      << errCode << " " << errText;
  ASSERT_EQ(gdicPriceTiers.Count(), 4);
  EXPECT_EQ(gdicPriceTiers.Item(1),
            TextGrid::FromRows({{"1", "24", "0.29"},
                                {"25", "99", "0.25"},
                                {"100", "9999", "0.19"}}));
  EXPECT_EQ(gdicPriceTiers.Item(3)(0, 2), "3.99");
  EXPECT_EQ(gdicPriceTiers.Item(4)(2, 2), "1.09");
  EXPECT_EQ(gsaShippingBands, TextGrid::FromRows({{"1", "25", "2.99"},
                                                  {"26", "50", "4.99"},
                                                  {"51", "100", "6.99"},
                                                  {"101", "0", "1.5"}}));
}

TEST_F(ClientAgainstServiceTest, QuoteAppliesOneCouponAndRefusesOthers) {
  LogIn(kDemoEmail, demo_password_);
  // Two photos, 15 prints of 4 x 6 each: 30 at the 25-99 price of 0.25.
  const auto [lines, index] = OrderOf({15, 15});

  const Quote saved = PlaceOrder("SAVE10", lines, index);
  ASSERT_TRUE(saved.ok) << saved.errCode << " " << saved.errText;
  EXPECT_FALSE(saved.gsOrderId.empty());
  EXPECT_EQ(saved.gsaSizeTotals(0, 0), "30");
  EXPECT_EQ(saved.gsaSizeTotals(0, 1), "0.25");
  EXPECT_NEAR(std::stod(saved.gsaSizeTotals(0, 2)), 7.50, kCents);
  EXPECT_EQ(saved.gsaSizeTotals(1, 0), "0");
  // The account's free offer: ten 4 x 6 prints, worth 2.50.
  EXPECT_EQ(saved.gsaFreePrints(0, 0), "10");
  EXPECT_NEAR(std::stod(saved.gsaFreePrints(0, 1)), 2.50, kCents);
  EXPECT_EQ(saved.gsaFreePrints(0, 2), "4 x 6");
  // Ten percent of the 5.00 left after the free prints.
  ASSERT_EQ(saved.gsaCouponResult.size(), 4u);
  EXPECT_EQ(saved.gsaCouponResult[0], "SAVE10");
  EXPECT_EQ(saved.gsaCouponResult[1], "10");
  EXPECT_NEAR(std::stod(saved.gsaCouponResult[2]), -0.50, kCents);
  EXPECT_EQ(saved.gsaCouponResult[3], "1");
  EXPECT_NEAR(saved.mdCostOfPrints, 4.50, kCents);
  EXPECT_NEAR(std::stod(saved.msShipping), 4.99, kCents);
  // California tax, 7.25 % of 9.49, rounded to cents.
  EXPECT_EQ(saved.gsaOrderTax(0, 0), "CA");
  EXPECT_EQ(saved.gsaOrderTax(0, 1), "7.25");
  EXPECT_NEAR(std::stod(saved.gsaOrderTax(0, 2)), 0.69, kCents);
  EXPECT_NEAR(saved.orderTotal, 10.18, kCents);
  // Each line comes back priced, under its own key.
  ASSERT_EQ(saved.gcolOrderLines.Count(), 2);
  EXPECT_EQ(saved.gcolOrderLines.KeyAt(2), "/photos/p2.jpg");
  EXPECT_EQ(saved.gcolOrderLines.Item(2)(0, 1), "0.25");
  EXPECT_NEAR(std::stod(saved.gcolOrderLines.Item(2)(0, 2)), 3.75, kCents);
  EXPECT_EQ(saved.gdicOrderIndex.Item("2"), "/photos/p2.jpg");

  struct Refusal {
    const char* coupon;
    const char* message;
  };
  const Refusal refusals[] = {
      {"FIVEOFF", "The coupon FIVEOFF needs an order of at least 10."},
      {"OLD2001", "The coupon OLD2001 has expired."},
      {"NOPE", "The coupon code NOPE is not valid."},
  };
  for (const Refusal& r : refusals) {
    const Quote refused = PlaceOrder(r.coupon, lines, index);
    ASSERT_TRUE(refused.ok) << refused.errText;
    EXPECT_EQ(refused.gsaCouponResult,
              (StringArray{r.coupon, r.message, "0", "0"}));
    // The order is priced as if no coupon had been typed.
    EXPECT_NEAR(refused.mdCostOfPrints, 5.00, kCents);
    EXPECT_NE(refused.gsOrderId, saved.gsOrderId);
  }

  // Enough prints for the fixed coupon's minimum: 50 at 0.25 is 12.50.
  const auto [big_lines, big_index] = OrderOf({50});
  const Quote fixed = PlaceOrder("FIVEOFF", big_lines, big_index);
  ASSERT_TRUE(fixed.ok);
  EXPECT_EQ(fixed.gsaCouponResult[1], "5");
  EXPECT_EQ(fixed.gsaCouponResult[3], "1");
  EXPECT_NEAR(fixed.mdCostOfPrints, 12.50 - 2.50 - 5.00, kCents);

  // Without prints it is a price quote only: first-tier prices, no order.
  const auto [empty_lines, empty_index] = OrderOf({0, 0});
  const Quote nothing = PlaceOrder("", empty_lines, empty_index);
  EXPECT_TRUE(nothing.ok);
  EXPECT_EQ(nothing.gsOrderId, "");
  EXPECT_EQ(nothing.gsaSizeTotals(0, 1), "0.29");
}

TEST_F(ClientAgainstServiceTest, ShippingAddsASurchargePerStartedTwentyFive) {
  LogIn(kDemoEmail, demo_password_);
  struct Case {
    int prints;
    double shipping;
  };
  const Case cases[] = {
      {25, 2.99},    // end of the first band
      {26, 4.99},    // start of the second
      {100, 6.99},   // end of the last real band
      {101, 8.49},   // first print beyond: one surcharge
      {125, 8.49},   // 24 beyond the surcharge row's lower: still one
      {126, 9.99},   // 25 beyond: two
      {151, 11.49},  // 50 beyond: three
  };
  for (const Case& c : cases) {
    const auto [lines, index] = OrderOf({c.prints});
    const Quote q = PlaceOrder("", lines, index);
    ASSERT_TRUE(q.ok) << q.errText;
    EXPECT_NEAR(std::stod(q.msShipping), c.shipping, kCents) << c.prints;
    // What the order form shows needs no more than cents.
    EXPECT_LE(q.msShipping.size() - q.msShipping.find('.'), 3u) << q.msShipping;
  }

  // Shipped elsewhere, the order is taxed by the state it goes to.
  const auto [lines, index] = OrderOf({30});
  const StringArray gsaShipTo = {"", "Max",    "Moe", "1 Broadway",
                                 "", "Albany", "NY",  "12207"};
  const Quote q = PlaceOrder("", lines, index, &gsaShipTo);
  ASSERT_TRUE(q.ok) << q.errText;
  EXPECT_EQ(q.gsaOrderTax(0, 0), "NY");
  EXPECT_EQ(q.gsaOrderTax(0, 1), "4");
  // 30 x 0.25 = 7.50 less 2.50 free, plus 4.99 shipping: 4 % of 9.99.
  EXPECT_NEAR(std::stod(q.gsaOrderTax(0, 2)), 0.40, kCents);
}

TEST_F(ClientAgainstServiceTest, ConfirmNeedsTheUploadedPhotosAndTheCoupon) {
  LogIn(kDemoEmail, demo_password_);
  gsAlbumName = "Prints";
  std::string first;
  std::string second;
  bool fatal = false;
  ASSERT_TRUE(Upload(Photo("one.jpg", 6), first, fatal)) << errText;
  ASSERT_TRUE(Upload(Photo("two.jpg", 7), second, fatal)) << errText;

  // After the upload the order index is the album's photos by image id.
  TextDictionary gdicOrderIndex;
  ASSERT_TRUE(client_->GetAlbumPhotos(gsSiteUrl, session_.gsAuthCode,
                                      session_.gsAlbumId, gdicOrderIndex,
                                      errCode, errText));
  PrintLineCollection gcolOrderLines;
  gcolOrderLines.Add(PrintLine(12, 1), first);
  gcolOrderLines.Add(PrintLine(0, 0, 2), second);
  const Quote quote = PlaceOrder("SAVE10", gcolOrderLines, gdicOrderIndex);
  ASSERT_TRUE(quote.ok) << quote.errText;
  ASSERT_EQ(quote.gsaCouponResult[3], "1");

  struct Attempt {
    const char* coupon;
    const char* code;
  };
  // The coupon of the confirmation must be the quote's.
  const Attempt wrong_coupons[] = {{"", "4004"}, {"FIVEOFF", "4004"}};
  for (const Attempt& a : wrong_coupons) {
    errCode.clear();
    EXPECT_FALSE(client_->ConfirmOrder(gsSiteUrl, session_.gsAuthCode,
                                       quote.gsOrderId, a.coupon, errCode,
                                       errText));
    EXPECT_EQ(errCode, a.code) << a.coupon;
  }
  errCode.clear();
  ASSERT_TRUE(client_->ConfirmOrder(gsSiteUrl, session_.gsAuthCode,
                                    quote.gsOrderId, "SAVE10", errCode,
                                    errText))
      << errCode << " " << errText;
  EXPECT_EQ(errCode, "");
  // A confirmed order can't be confirmed again.
  EXPECT_FALSE(client_->ConfirmOrder(gsSiteUrl, session_.gsAuthCode,
                                     quote.gsOrderId, "SAVE10", errCode,
                                     errText));
  EXPECT_EQ(errCode, "4001");

  // The free offer is used up by the confirmed order.
  const Quote after = PlaceOrder("", gcolOrderLines, gdicOrderIndex);
  ASSERT_TRUE(after.ok);
  EXPECT_EQ(after.gsaFreePrints(0, 0), "");

  // A quote keyed by paths, made before any upload, can't be made final.
  const auto [lines, index] = OrderOf({5});
  const Quote unuploaded = PlaceOrder("", lines, index);
  ASSERT_TRUE(unuploaded.ok);
  EXPECT_FALSE(client_->ConfirmOrder(gsSiteUrl, session_.gsAuthCode,
                                     unuploaded.gsOrderId, "", errCode,
                                     errText));
  EXPECT_EQ(errCode, "4003");
}

TEST_F(ClientAgainstServiceTest, AddressUpdateRenewsTheSessionCode) {
  LogIn(kDemoEmail, demo_password_);
  const std::string old_code = session_.gsAuthCode;
  const StringArray address = {"", "Dana",   "Demo", "2 Pine St",
                               "", "Austin", "TX",   "78701"};
  const StringArray card = {"Dana Demo", "XXXXXXXXXXXX1111", "11", "2035",
                            "94105"};
  StringArray codes;
  ASSERT_TRUE(client_->UpdateUserAddress(
      gsSiteUrl, session_.gsAuthCode, kDemoEmail, demo_password_, address, card,
      codes, errCode, errText, false, ""))
      << errCode << " " << errText;
  ASSERT_FALSE(codes.empty());
  EXPECT_NE(codes[0], old_code);
  session_.gsAuthCode = codes[0];

  // The old code is spent.
  TextGrid albums;
  EXPECT_FALSE(
      client_->GetAlbumList(gsSiteUrl, old_code, albums, errCode, errText));
  EXPECT_EQ(errCode, "1001");

  std::string status;
  StringArray name;
  StringArray stored_address;
  StringArray stored_card;
  ASSERT_TRUE(client_->GetUserInfo(gsSiteUrl, session_.gsAuthCode, status, name,
                                   stored_address, stored_card, errCode,
                                   errText));
  EXPECT_EQ(stored_address[3], "2 Pine St");
  EXPECT_EQ(stored_address[6], "TX");
  EXPECT_EQ(stored_card[1], "XXXXXXXXXXXX1111");

  // A new number is checked and stored masked.
  StringArray new_card = card;
  new_card[1] = "5555 5555 5555 4444";
  ASSERT_TRUE(client_->UpdateUserAddress(
      gsSiteUrl, session_.gsAuthCode, kDemoEmail, demo_password_, address,
      new_card, codes, errCode, errText, true, "XXXXXXXXXXXX1111"))
      << errCode << " " << errText;
  session_.gsAuthCode = codes[0];
  ASSERT_TRUE(client_->GetUserInfo(gsSiteUrl, session_.gsAuthCode, status, name,
                                   stored_address, stored_card, errCode,
                                   errText));
  EXPECT_EQ(stored_card[1], "XXXXXXXXXXXX4444");

  // A refused address keeps the session as it was.
  StringArray bad = address;
  bad[7] = "787";
  codes = {"kept"};
  EXPECT_FALSE(client_->UpdateUserAddress(gsSiteUrl, session_.gsAuthCode,
                                          kDemoEmail, demo_password_, bad, card,
                                          codes, errCode, errText, false, ""));
  EXPECT_EQ(errCode, "2012");
  EXPECT_EQ(codes, StringArray{"kept"});
  EXPECT_TRUE(client_->GetAlbumList(gsSiteUrl, session_.gsAuthCode, albums,
                                    errCode, errText));
}

TEST_F(ClientAgainstServiceTest, UpgradeIsOfferedAndDownloadedWhole) {
  const std::string url = gsSiteAddress + "/download/upgrade.xml";
  std::string location;
  std::string version;
  std::string size;
  std::string notes;
  EXPECT_TRUE(
      client_->GetUpgradeInfo(url, "1.0.9", location, version, size, notes));
  EXPECT_EQ(version, "1.1.0");
  EXPECT_EQ(location, gsSiteAddress + "/download/upgrade1.exe");
  // The same version, written shorter, is no upgrade.
  EXPECT_FALSE(
      client_->GetUpgradeInfo(url, "1.1", location, version, size, notes));

  TempDir target;
  std::string saved;
  std::string why;
  ASSERT_TRUE(
      client_->DownloadFile(location, target.path().string(), saved, why))
      << why;
  EXPECT_EQ(saved, (target / "upgrade1.exe").string());
  EXPECT_EQ(std::to_string(fs::file_size(saved)), size);
}

// The service dies while a call waits for it: the connection is gone, which
// the callers show as "Please check Internet Connection".
TEST_F(ClientAgainstServiceTest, AServiceKilledDuringACallGivesCodeZero) {
  LogIn(kDemoEmail, demo_password_);
  // Frozen, the service takes the request but can't answer; it is killed
  // while the call pumps the host's events.
  ASSERT_TRUE(service_->Freeze());
  host_.QueueInside("service dies", [this] { service_->Kill(); });
  TextGrid gasAlbums = TextGrid::FromRows({{"kept"}, {"kept"}});
  errCode.clear();
  EXPECT_FALSE(client_->GetAlbumList(gsSiteUrl, session_.gsAuthCode, gasAlbums,
                                     errCode, errText));
  EXPECT_EQ(errCode, "0");
  EXPECT_EQ(errText, kCheckConnection);
  EXPECT_EQ(gasAlbums(0, 0), "kept");
  EXPECT_FALSE(client_->IsBusy());
  EXPECT_FALSE(client_->IsCancelled());
  EXPECT_GT(host_.PumpCount(), 0);

  // With the service gone, the next call fails the same way.
  std::string status;
  StringArray name;
  StringArray address;
  StringArray card;
  errCode.clear();
  EXPECT_FALSE(client_->GetUserInfo(gsSiteUrl, session_.gsAuthCode, status,
                                    name, address, card, errCode, errText));
  EXPECT_EQ(errCode, "0");
}

TEST_F(ClientAgainstServiceTest, AServiceKilledDuringAnUploadEndsTheRun) {
  LogIn(kDemoEmail, demo_password_);
  const std::string photo = Photo("last.jpg", 8);
  ASSERT_TRUE(service_->Freeze());
  host_.QueueInside("service dies", [this] { service_->Kill(); });
  session_.gsAlbumId = "1";
  std::string image = "kept";
  bool fatal = false;
  EXPECT_FALSE(Upload(photo, image, fatal));
  EXPECT_EQ(errCode, "0");
  EXPECT_TRUE(fatal);
  EXPECT_EQ(image, "kept");
  EXPECT_EQ(session_.gsAlbumId, "1");
}

}  // namespace
}  // namespace qbpd
