// Requests a careful attacker would send: unknown and foreign photos, fields
// of the wrong JSON type, and failures inside the service. Every answer is
// the protocol's, and none shows how the service is built.

#include "tests/service/service_fixture.h"

#include <filesystem>
#include <fstream>

namespace qbpd::service {
namespace {

using nlohmann::json;

// Nothing of the machine or the code may reach a client.
void ExpectNothingRevealed(const std::string& body,
                           const std::filesystem::path& data_dir) {
  EXPECT_EQ(body.find(data_dir.string()), std::string::npos) << body;
  for (const char* word : {"SELECT", "INSERT", "sqlite", "what()", "filesystem",
                           "exception", ".cpp", "/tmp/"}) {
    EXPECT_EQ(body.find(word), std::string::npos) << word << " in " << body;
  }
}

TEST_F(ServiceTest, PhotoRouteAnswersAsTheProtocolSays) {
  const std::string code = DemoLogin();
  const json uploaded = Upload(code, "", "Mine", kJpeg).second;
  const std::string image = uploaded["imageId"];

  auto own = client_->Get(("/photo/" + image + "/u_=" + code).c_str());
  ASSERT_TRUE(own);
  EXPECT_EQ(own->status, 200);
  EXPECT_EQ(own->body, kJpeg);
  EXPECT_EQ(own->get_header_value("Content-Type"), "image/jpeg");
  EXPECT_EQ(own->get_header_value("X-Content-Type-Options"), "nosniff");

  auto fields = ValidFields();
  fields[2] = "other@example.test";
  const std::string other =
      Call("RegisterUser", {{"fields", fields}}).second["result"][0];
  struct Case {
    std::string path;
    int status;
  };
  const Case cases[] = {
      {"/photo/P99999/u_=" + code, 404},          // unknown photo
      {"/photo/X1/u_=" + code, 404},              // not an image id
      {"/photo//u_=" + code, 404},                // no image id
      {"/photo/" + image + "/u_=" + other, 404},  // another account's photo
      {"/photo/" + image + "/u_=", 403},          // no session code
      {"/photo/" + image + "/u_=0badc0de", 403},  // unknown session code
  };
  for (const auto& c : cases) {
    auto [status, page] = Page(c.path);
    EXPECT_EQ(status, c.status) << c.path;
    EXPECT_NE(page.find("<html"), std::string::npos) << c.path;
    if (c.status == 403) {
      EXPECT_NE(page.find("Please log in again."), std::string::npos);
    }
    ExpectNothingRevealed(page, dir_.path());
  }

  // A photo whose file went missing on the server is not there either.
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(dir_ / "photos")) {
    if (entry.is_regular_file()) {
      std::filesystem::remove(entry.path());
    }
  }
  auto [gone_status, gone] = Page("/photo/" + image + "/u_=" + code);
  EXPECT_EQ(gone_status, 404);
  ExpectNothingRevealed(gone, dir_.path());
}

TEST_F(ServiceTest, WrongJsonTypesAnswer400WithTheEnvelope) {
  const std::string code = DemoLogin();
  struct Case {
    const char* operation;
    json body;
  };
  const std::string album = Upload(code, "", "Typed", kPng).second["albumId"];
  const Case cases[] = {
      {"PlaceOrder",
       {{"orderLines", {{{"key", 5}, {"rows", {{"1", "0", "0"}}}}}}}},
      {"PlaceOrder",
       {{"orderLines", {{{"key", {1}}, {"rows", {{"1", "0", "0"}}}}}}}},
      {"PlaceOrder", {{"orderIndex", {{"P1", 1}}}}},
      {"PlaceOrder", {{"shipTo", "CA"}}},
      {"ShareAlbum", {{"albumId", 7}}},
      {"ShareAlbum", {{"albumId", album}, {"emails", {{"a@b.test"}}}}},
      {"ConfirmOrder", {{"orderId", 1.5}}},
      {"UpdateUserAddress", {{"cardChanged", "yes"}}},
      // The wrong type counts even where an earlier check would refuse.
      {"ShareAlbum", {{"albumId", "99999"}, {"access", 1}}},
      {"ConfirmOrder", {{"orderId", "99999"}, {"couponCode", 10}}},
      {"UpdateUserAddress", {{"email", "nobody@x.test"}, {"card", "1234"}}},
      {"GetAlbumPhotos", {{"albumId", json::object()}}},
  };
  for (const auto& c : cases) {
    json body = c.body;
    body["authCode"] = code;
    auto [status, answer] = Call(c.operation, body);
    EXPECT_EQ(status, 400) << c.operation << " " << body.dump();
    EXPECT_EQ(answer["ok"], false) << body.dump();
    EXPECT_EQ(answer["errCode"], "9999") << body.dump();
  }
  // A session code of the wrong type is malformed too, not a lost session,
  // and a malformed order is malformed without a session as well.
  EXPECT_EQ(Call("GetAlbumList", {{"authCode", 12}}).first, 400);
  EXPECT_EQ(
      Call("PlaceOrder", {{"orderLines", {{{"key", 5}, {"rows", {{"1"}}}}}}})
          .first,
      400);
}

// Every field of every operation with every kind of wrong value: the service
// answers each with an envelope and never with a failure of its own.
TEST_F(ServiceTest, NoFieldOfAnyTypeBreaksAnOperation) {
  const std::string code = DemoLogin();
  const char* operations[] = {
      "LoginUser",    "RegisterUser",   "GetUserInfo",      "GetPriceList",
      "GetAlbumList", "GetAddressBook", "ShareAlbum",       "GetAlbumPhotos",
      "PlaceOrder",   "ConfirmOrder",   "UpdateUserAddress"};
  const char* fields[] = {"email",       "password",   "albumId",    "emails",
                          "access",      "orderLines", "orderIndex", "shipTo",
                          "couponCode",  "orderId",    "address",    "card",
                          "cardChanged", "fields"};
  const json values[] = {5,
                         -1.5,
                         true,
                         json::array(),
                         json::object(),
                         {1},
                         {{1}},
                         {{"a", 1}},
                         {{{"key", 5}, {"rows", {{"1"}}}}},
                         {{{"rows", {{1}}}}},
                         {{{"key", "k"}, {"rows", "1"}}},
                         std::string("\0x", 2)};
  int answered = 0;
  for (const char* operation : operations) {
    for (const char* field : fields) {
      for (const auto& value : values) {
        json body = {{"authCode", code}};
        body[field] = value;
        auto [status, answer] = Call(operation, body);
        EXPECT_TRUE(status == 200 || status == 400)
            << status << " " << operation << " " << body.dump();
        EXPECT_TRUE(answer.is_object() && answer.contains("errCode"))
            << operation << " " << body.dump();
        ++answered;
      }
    }
  }
  EXPECT_EQ(answered, 11 * 14 * 12);
}

TEST_F(ServiceTest, AFailureInsideTheServiceRevealsNothing) {
  const std::string code = DemoLogin();
  const std::string album = Upload(code, "", "Full", kPng).second["albumId"];
  // The album's photo folder cannot be made: a file stands in its place.
  const auto folder = dir_ / "photos" / album;
  std::filesystem::remove_all(folder);
  std::ofstream(folder) << "in the way";
  auto [status, answer] = Upload(code, album, "", kPng);
  EXPECT_EQ(status, 500);
  EXPECT_EQ(answer["errCode"], "9999");
  EXPECT_EQ(answer["fatal"], true);
  ExpectNothingRevealed(answer.dump(), dir_.path());
  // The service is still there.
  EXPECT_TRUE(Call("GetAlbumList", {{"authCode", code}}).second["ok"]);
}

}  // namespace
}  // namespace qbpd::service
