// The real service client, over libcurl, against the real qbpd-service
// program on a loopback port: every operation with the values that the
// online forms keep between calls.
#ifndef QBPD_TESTS_ONLINE_CLIENT_AGAINST_SERVICE_FIXTURE_H_
#define QBPD_TESTS_ONLINE_CLIENT_AGAINST_SERVICE_FIXTURE_H_

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

namespace qbpd::against_service {

namespace fs = std::filesystem;

using testing::ReadFile;
using testing::ServiceProcess;
using testing::TempDir;

inline constexpr char kDemoEmail[] = "demo@quillbay.test";
inline constexpr char kNoAccountLine[] =
    "Oops! There is no Quillbay account with this email address.";
inline constexpr char kCheckConnection[] = "Please check Internet Connection";
inline constexpr double kCents = 1e-9;

inline int ThisYear() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  return parts.tm_year + 1900;
}

// Sign-up fields of a complete, valid account in Texas with a card.
inline StringArray ValidSignUp(const std::string& email) {
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
inline TextGrid PrintLine(int q4x6,
                          int q5x7 = 0,
                          int q8x10 = 0,
                          int wallet = 0) {
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

}  // namespace qbpd::against_service

#endif  // QBPD_TESTS_ONLINE_CLIENT_AGAINST_SERVICE_FIXTURE_H_
