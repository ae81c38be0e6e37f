#include "tests/service/service_fixture.h"

namespace qbpd::service {
namespace {

using nlohmann::json;

TEST_F(ServiceTest, SignUpFieldCodes) {
  struct Case {
    int field;
    const char* value;
    const char* code;
  };
  const Case cases[] = {
      {0, "", "2001"},                   // first name missing
      {1, "Le\x01e", "2002"},            // control character
      {2, "ann@example", "2003"},        // no top-level domain
      {3, "abcd", "2004"},               // four characters
      {3, "abc def", "2004"},            // blank inside
      {9, "555-01x", "2005"},            // letter in the phone
      {4, "1, Main Street", "2008"},     // comma in street 1
      {4, "", "2008"},                   // address without street 1
      {5, "Apt \"3\"", "2009"},          // quotation mark in street 2
      {6, "San Francisco!", "2010"},     // punctuation in the city
      {7, "ZZ", "2011"},                 // unknown state
      {8, "9410", "2012"},               // four-digit zip
      {7, "NY", "2013"},                 // NY with a California zip
      {11, "Ann <Lee>", "2014"},         // markup in the name on card
      {12, "4111 1111", "2016"},         // too short
      {13, "13", "2017"},                // no such month
      {14, "2025", "2018"},              // expired
      {12, "4111111111111112", "2019"},  // check digit
      {15, "9410x", "2020"},             // billing zip
  };
  for (const auto& c : cases) {
    auto fields = ValidFields();
    fields[c.field] = c.value;
    auto [status, answer] = Call("RegisterUser", {{"fields", fields}});
    EXPECT_EQ(status, 200);
    EXPECT_FALSE(answer["ok"]) << c.field << " " << c.value;
    EXPECT_EQ(answer["errCode"], c.code) << c.field << " " << c.value;
    EXPECT_FALSE(answer["errText"].get<std::string>().empty());
  }

  auto [status, answer] = Call("RegisterUser", {{"fields", ValidFields()}});
  ASSERT_TRUE(answer["ok"]) << answer.dump();
  EXPECT_EQ(answer["result"][0].get<std::string>().size(), 64u);

  // The same address in other letters is the same account.
  auto fields = ValidFields();
  fields[2] = "ANN@Example.test";
  auto [again_status, again] = Call("RegisterUser", {{"fields", fields}});
  EXPECT_EQ(again["errCode"], "2021");
  EXPECT_EQ(again["errText"],
            "A Quillbay account with your email address already exists.");
}

TEST_F(ServiceTest, AddressAndCardAreOptional) {
  auto fields = ValidFields();
  for (int i = 4; i < 16; ++i) {
    fields[i] = "";
  }
  fields[7] = "---";
  auto [status, answer] = Call("RegisterUser", {{"fields", fields}});
  ASSERT_TRUE(answer["ok"]) << answer.dump();
  auto [info_status, info] =
      Call("GetUserInfo", {{"authCode", answer["result"][0]}});
  EXPECT_EQ(info["accountType"], "LTE");
  EXPECT_EQ(info["card"], json({"", "", "", "", ""}));
}

TEST_F(ServiceTest, LoginGoodAndBad) {
  EXPECT_EQ(DemoLogin().size(), 64u);
  // Two logins give two different session codes.
  EXPECT_NE(DemoLogin(), DemoLogin());

  auto [status, unknown] =
      Call("LoginUser", {{"email", "nobody@quillbay.test"}, {"password", "x"}});
  EXPECT_EQ(status, 200);
  EXPECT_FALSE(unknown["ok"]);
  EXPECT_EQ(unknown["errCode"], "2006");
  EXPECT_EQ(unknown["errText"],
            "Oops! There is no Quillbay account with this email address.");

  auto [wrong_status, wrong] =
      Call("LoginUser", {{"email", kDemoEmail}, {"password", "demo12345"}});
  EXPECT_EQ(wrong["errCode"], "2007");
}

TEST_F(ServiceTest, EveryOperationWantsALiveSession) {
  const char* operations[] = {
      "GetUserInfo",    "GetAlbumList", "GetAddressBook", "ShareAlbum",
      "GetAlbumPhotos", "PlaceOrder",   "ConfirmOrder",   "UpdateUserAddress"};
  for (const char* operation : operations) {
    for (const char* code : {"", "0000", "' OR 1=1 --"}) {
      auto [status, answer] = Call(operation, {{"authCode", code}});
      EXPECT_EQ(answer["errCode"], "1001") << operation << " " << code;
    }
  }
  // A code stops working after eight idle hours, but use keeps it alive.
  const std::string code = DemoLogin();
  now_ += 7 * 3600;
  EXPECT_TRUE(Call("GetAlbumList", {{"authCode", code}}).second["ok"]);
  now_ += 7 * 3600;
  EXPECT_TRUE(Call("GetAlbumList", {{"authCode", code}}).second["ok"]);
  now_ += 8 * 3600 + 1;
  EXPECT_EQ(Call("GetAlbumList", {{"authCode", code}}).second["errCode"],
            "1001");
}

TEST_F(ServiceTest, MalformedRequestsGetTheEnvelope) {
  struct Case {
    const char* operation;
    const char* body;
    int status;
  };
  const Case cases[] = {
      {"LoginUser", "{\"email\": ", 400},              // cut off
      {"LoginUser", "[1, 2]", 400},                    // not an object
      {"LoginUser", "{\"email\": 5}", 400},            // number for text
      {"RegisterUser", "{\"fields\": \"Ann\"}", 400},  // text for an array
      {"RegisterUser", "{\"fields\": [1]}", 400},      // number in the array
      {"NoSuchThing", "{}", 404},
  };
  for (const auto& c : cases) {
    auto [status, answer] = Raw(c.operation, c.body);
    EXPECT_EQ(status, c.status) << c.body;
    EXPECT_EQ(answer["ok"], false) << c.body;
    EXPECT_EQ(answer["errCode"], "9999") << c.body;
  }
  const std::string code = DemoLogin();
  auto [status, answer] =
      Call("PlaceOrder", {{"authCode", code}, {"orderLines", {{{"rows", 5}}}}});
  EXPECT_EQ(status, 400);
  // The service is still there.
  EXPECT_TRUE(Call("GetAlbumList", {{"authCode", code}}).second["ok"]);
}

TEST_F(ServiceTest, UploadMakesAnAlbumAndFillsIt) {
  const std::string code = DemoLogin();
  auto [status, first] = Upload(code, "", "Summer", kPng);
  ASSERT_EQ(status, 200);
  ASSERT_TRUE(first["ok"]) << first.dump();
  EXPECT_FALSE(first["fatal"]);
  const std::string album = first["albumId"];
  auto [second_status, second] = Upload(code, album, "ignored", kJpeg);
  ASSERT_TRUE(second["ok"]) << second.dump();
  EXPECT_EQ(second["albumId"], album);

  auto [list_status, list] = Call("GetAlbumList", {{"authCode", code}});
  EXPECT_EQ(list["albums"][0].back(), album);
  EXPECT_EQ(list["albums"][1].back(), "Summer");
  EXPECT_EQ(list["albums"][1][0], "Demo album");

  auto [photos_status, photos] =
      Call("GetAlbumPhotos", {{"authCode", code}, {"albumId", album}});
  EXPECT_EQ(photos["photos"],
            json::array({json::array({first["imageId"], "1"}),
                         json::array({second["imageId"], "2"})}));

  // The service names the files itself; the client's path is never used.
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(dir_ / "photos")) {
    EXPECT_NE(entry.path().filename(), "a.png");
  }
}

TEST_F(ServiceTest, UploadRefusals) {
  const std::string code = DemoLogin();
  struct Case {
    std::string code, album, content, err;
    bool fatal;
    int status;
  };
  const Case cases[] = {
      {code, "", "plain text, not a photo", "3002", false, 200},
      {code, "", "GIF89a....", "3002", false, 200},
      {code, "", "", "3002", false, 200},
      {code, "", kJpegMagicOnly, "3002", false, 200},
      {code, "", kPngMagicOnly, "3002", false, 200},
      {code, "", kJpegOfNoSize, "3002", false, 200},
      {code, "", std::string(kTestUploadLimit + 1, '\xFF'), "3003", false, 413},
      {"not-a-session", "", kPng, "1001", true, 200},
      {code, "99999", kPng, "3001", true, 200},  // no such album
      {code, "abc", kPng, "3001", true, 200},
  };
  for (const auto& c : cases) {
    auto [status, answer] = Upload(c.code, c.album, "Refused", c.content);
    EXPECT_EQ(status, c.status) << c.err;
    EXPECT_FALSE(answer["ok"]) << c.err;
    EXPECT_EQ(answer["errCode"], c.err);
    EXPECT_EQ(answer["fatal"], c.fatal) << c.err;
  }
  // Far above the limit the transport itself refuses, still with the envelope.
  auto [status, answer] =
      Upload(code, "", "Big", std::string(kTestUploadLimit * 2, 'x'));
  EXPECT_EQ(status, 413);
  EXPECT_EQ(answer["errCode"], "3003");
  // Nothing refused made an album.
  auto [list_status, list] = Call("GetAlbumList", {{"authCode", code}});
  EXPECT_EQ(list["albums"][1], json({"Demo album"}));
}

TEST_F(ServiceTest, CardIsStoredAndReturnedMasked) {
  auto [status, answer] = Call("RegisterUser", {{"fields", ValidFields()}});
  ASSERT_TRUE(answer["ok"]) << answer.dump();
  const std::string code = answer["result"][0];
  auto [info_status, info] = Call("GetUserInfo", {{"authCode", code}});
  EXPECT_EQ(info["accountType"], "FUL");
  EXPECT_EQ(info["profile"], json({"ann@example.test", "Ann", "Lee", "", ""}));
  EXPECT_EQ(info["address"], json({"", "Ann", "Lee", "1 Main Street", "",
                                   "San Francisco", "CA", "94105"}));
  // January is month 0.
  EXPECT_EQ(info["card"],
            json({"Ann Lee", "XXXXXXXXXXXX1111", "0", "2031", "94105"}));
  // Not even the database file holds the whole number.
  const std::string db = testing::ReadFile(dir_ / "service.db") +
                         testing::ReadFile(dir_ / "service.db-wal");
  EXPECT_EQ(db.find("4111111111111111"), std::string::npos);
  EXPECT_EQ(db.find("4111 1111 1111 1111"), std::string::npos);

  // Writing the masked number back keeps the card; the code is renewed.
  json card = info["card"];
  card[2] = "5";  // June
  auto [update_status, update] =
      Call("UpdateUserAddress", {{"authCode", code},
                                 {"email", "ann@example.test"},
                                 {"password", "secret1"},
                                 {"address", info["address"]},
                                 {"card", card},
                                 {"cardChanged", true},
                                 {"storedCardNumber", "XXXXXXXXXXXX1111"}});
  ASSERT_TRUE(update["ok"]) << update.dump();
  const std::string renewed = update["session"][0];
  EXPECT_NE(renewed, code);
  EXPECT_EQ(Call("GetUserInfo", {{"authCode", code}}).second["errCode"],
            "1001");
  auto [after_status, after] = Call("GetUserInfo", {{"authCode", renewed}});
  EXPECT_EQ(after["card"],
            json({"Ann Lee", "XXXXXXXXXXXX1111", "5", "2031", "94105"}));

  // A new number is checked and masked in its turn.
  card[1] = "3782 822463 10005";
  auto [new_status, new_card] =
      Call("UpdateUserAddress", {{"authCode", renewed},
                                 {"email", "ann@example.test"},
                                 {"password", "secret1"},
                                 {"address", info["address"]},
                                 {"card", card},
                                 {"cardChanged", true}});
  ASSERT_TRUE(new_card["ok"]) << new_card.dump();
  EXPECT_EQ(Call("GetUserInfo", {{"authCode", new_card["session"][0]}})
                .second["card"][1],
            "XXXXXXXXXXX0005");
}

TEST_F(ServiceTest, ShareAcceptsOnlyValidAddresses) {
  const std::string code = DemoLogin();
  const std::string album = Upload(code, "", "Party", kPng).second["albumId"];
  EXPECT_FALSE(Call("GetAddressBook", {{"authCode", code}}).second["ok"]);
  auto [status, answer] =
      Call("ShareAlbum", {{"authCode", code},
                          {"albumId", album},
                          {"emails",
                           {"bob@example.test", "not an address", "",
                            " Cy@Example.test ", "BOB@example.test", "x@y"}},
                          {"subject", "Party"},
                          {"message", "Look"},
                          {"access", "0"}});
  ASSERT_TRUE(answer["ok"]) << answer.dump();
  EXPECT_EQ(answer["accepted"], "bob@example.test,Cy@Example.test");

  auto [none_status, none] = Call("ShareAlbum", {{"authCode", code},
                                                 {"albumId", album},
                                                 {"emails", {"bad", ""}},
                                                 {"access", "1"}});
  EXPECT_TRUE(none["ok"]);
  EXPECT_EQ(none["accepted"], "");

  auto [book_status, book] = Call("GetAddressBook", {{"authCode", code}});
  EXPECT_EQ(book["emails"], json({"bob@example.test", "Cy@Example.test"}));

  auto [page_status, page] =
      Page("/addressbook/AlbumID=" + album + "/u_=" + code);
  EXPECT_EQ(page_status, 200);
  EXPECT_NE(page.find("restricted access: bob@example.test,Cy@Example.test"),
            std::string::npos);
}

json Line(const std::string& key, int q4x6, int q5x7, int q8x10, int qwallet) {
  json rows = json::array();
  for (int q : {q4x6, q5x7, q8x10, qwallet}) {
    rows.push_back({std::to_string(q), "0", "0"});
  }
  return {{"key", key}, {"rows", rows}};
}

double Amount(const json& text) {
  return std::stod(text.get<std::string>());
}

TEST_F(ServiceTest, OrderQuoteArithmetic) {
  const std::string code = DemoLogin();
  json request = {
      {"authCode", code},
      {"couponCode", "SAVE10"},
      {"orderLines", {Line("k1", 20, 0, 1, 0), Line("k2", 10, 0, 1, 0)}},
      {"orderIndex", json::array({json::array({"1", "/p/a.jpg"}),
                                  json::array({"2", "/p/b.jpg"})})}};
  auto [status, quote] = Call("PlaceOrder", request);
  ASSERT_TRUE(quote["ok"]) << quote.dump();
  // 30 prints of 4 x 6 take the 25-99 tier for every line.
  EXPECT_EQ(quote["sizeTotals"][0], json({"30", "0.25", "7.5"}));
  EXPECT_EQ(quote["sizeTotals"][2], json({"2", "3.99", "7.98"}));
  EXPECT_EQ(quote["orderLines"][0]["key"], "k1");
  EXPECT_EQ(quote["orderLines"][0]["rows"][0], json({"20", "0.25", "5"}));
  EXPECT_EQ(quote["orderIndex"], request["orderIndex"]);
  // The demo account still has ten free 4 x 6 prints.
  EXPECT_EQ(quote["freePrints"], json({{"10", "2.5", "4 x 6"}}));
  EXPECT_EQ(quote["couponResult"], json({"SAVE10", "10", "-1.3", "1"}));
  EXPECT_DOUBLE_EQ(Amount(quote["costOfPrints"]), 11.68);
  EXPECT_DOUBLE_EQ(Amount(quote["shipping"]), 4.99);  // 32 prints
  EXPECT_EQ(quote["orderTax"], json({{"CA", "7.25", "1.21"}}));
  EXPECT_DOUBLE_EQ(Amount(quote["orderTotal"]), 17.88);
  EXPECT_FALSE(quote["orderId"].get<std::string>().empty());

  // A refused coupon says why and takes nothing off.
  request["couponCode"] = "OLD2001";
  auto [refused_status, refused] = Call("PlaceOrder", request);
  EXPECT_EQ(refused["couponResult"],
            json({"OLD2001", "The coupon OLD2001 has expired.", "0", "0"}));
  EXPECT_DOUBLE_EQ(Amount(refused["costOfPrints"]), 12.98);

  // Shipping to another state changes the tax.
  request["shipTo"] = {"", "Al", "Bo", "1 Elm", "", "Austin", "TX", "73301"};
  EXPECT_EQ(Call("PlaceOrder", request).second["orderTax"][0][0], "TX");

  // The surcharge rows beyond the shipping bands.
  struct Case {
    int prints;
    double shipping;
  };
  for (const Case& c : {Case{101, 8.49}, Case{125, 8.49}, Case{126, 9.99}}) {
    json order = {{"authCode", code},
                  {"orderLines", {Line("k", c.prints, 0, 0, 0)}}};
    EXPECT_DOUBLE_EQ(Amount(Call("PlaceOrder", order).second["shipping"]),
                     c.shipping)
        << c.prints;
  }
  // No prints: a price quote with nothing to confirm.
  json empty = {{"authCode", code}, {"orderLines", {Line("k", 0, 0, 0, 0)}}};
  const json zero = Call("PlaceOrder", empty).second;
  EXPECT_EQ(zero["ok"], true);
  EXPECT_EQ(zero["orderId"], "");
  EXPECT_EQ(zero["sizeTotals"][0][1], "0.29");
  EXPECT_EQ(Call("ConfirmOrder", {{"authCode", code}, {"orderId", ""}})
                .second["errCode"],
            "4001");
}

TEST_F(ServiceTest, ConfirmNeedsUploadedPhotos) {
  const std::string code = DemoLogin();
  json request = {
      {"authCode", code},
      {"orderLines", {Line("k1", 2, 0, 0, 0)}},
      {"orderIndex", json::array({json::array({"1", "/p/a.jpg"})})}};
  const std::string quoted = Call("PlaceOrder", request).second["orderId"];
  EXPECT_EQ(Call("ConfirmOrder", {{"authCode", code}, {"orderId", quoted}})
                .second["errCode"],
            "4003");

  const json uploaded = Upload(code, "", "album 03/01", kJpeg).second;
  request["orderIndex"] =
      json::array({json::array({uploaded["imageId"], "1"})});
  const std::string order = Call("PlaceOrder", request).second["orderId"];
  auto [status, confirmed] =
      Call("ConfirmOrder", {{"authCode", code}, {"orderId", order}});
  EXPECT_TRUE(confirmed["ok"]) << confirmed.dump();
  EXPECT_EQ(Call("ConfirmOrder", {{"authCode", code}, {"orderId", order}})
                .second["errCode"],
            "4001");
  // The free prints are used up by the confirmed order.
  EXPECT_EQ(Call("PlaceOrder", request).second["freePrints"],
            json({{"", "", ""}}));

  auto [page_status, page] = Page("/orderstatus/o=" + order + "/u_=" + code);
  EXPECT_EQ(page_status, 200);
  EXPECT_NE(page.find("confirmed"), std::string::npos);
  // Another account's session sees no such order.
  auto fields = ValidFields();
  const std::string other =
      Call("RegisterUser", {{"fields", fields}}).second["result"][0];
  EXPECT_EQ(Page("/orderstatus/o=" + order + "/u_=" + other).first, 404);
}

TEST_F(ServiceTest, PagesEscapeAndCheckTheSession) {
  const std::string code = DemoLogin();
  const std::string name = "<script>alert(1)</script>";
  const json uploaded =
      Upload(code, "", name, kPng, "C:/<b>bold</b>.png").second;
  const std::string album = uploaded["albumId"];
  auto [status, page] =
      Page("/thumbnailshare/AlbumID=" + album + "/u_=" + code);
  EXPECT_EQ(status, 200);
  EXPECT_EQ(page.find("<script>"), std::string::npos);
  EXPECT_NE(page.find("&lt;script&gt;alert(1)&lt;/script&gt;"),
            std::string::npos);
  EXPECT_EQ(page.find("<b>"), std::string::npos);

  const std::string paths[] = {
      "/thumbnailshare/AlbumID=" + album + "/u_=",
      "/thumbnailshare/AlbumID=" + album + "/u_=0123",
      "/addressbook/AlbumID=" + album + "/u_=nope",
      "/orderstatus/o=1/u_=nope",
  };
  for (const auto& path : paths) {
    auto [refused_status, refused] = Page(path);
    EXPECT_EQ(refused_status, 403) << path;
    EXPECT_EQ(refused.find(name), std::string::npos);
  }
  EXPECT_EQ(Page("/").first, 200);
  EXPECT_EQ(Page("/forgotpassword/t_=0").first, 200);
  auto photo = client_->Get(
      ("/photo/" + uploaded["imageId"].get<std::string>() + "/u_=" + code)
          .c_str());
  ASSERT_TRUE(photo);
  EXPECT_EQ(photo->body, kPng);
}

TEST_F(ServiceTest, SqlMetacharactersAreJustText) {
  const std::string code = DemoLogin();
  const std::string name = "x'); DROP TABLE albums; --\"";
  const std::string album = Upload(code, "", name, kPng).second["albumId"];
  auto [status, list] = Call("GetAlbumList", {{"authCode", code}});
  EXPECT_EQ(list["albums"][1].back(), name);
  auto fields = ValidFields();
  fields[0] = "O'Brien";
  fields[1] = "Robert'); DELETE FROM accounts;--";
  fields[2] = "o'brien@example.test";
  const std::string other =
      Call("RegisterUser", {{"fields", fields}}).second["result"][0];
  auto [info_status, info] = Call("GetUserInfo", {{"authCode", other}});
  EXPECT_EQ(info["profile"][1], "O'Brien");
  EXPECT_EQ(info["profile"][2], fields[1]);
  EXPECT_EQ(DemoLogin().size(), 64u);
}

TEST_F(ServiceTest, UpgradeFiles) {
  auto [status, xml] = Page("/download/upgrade.xml");
  EXPECT_EQ(status, 200);
  EXPECT_NE(xml.find("<version>1.1.0</version>"), std::string::npos);
  const std::string location =
      "http://127.0.0.1:" + std::to_string(port_) + "/download/upgrade1.exe";
  EXPECT_NE(xml.find("<location>" + location + "</location>"),
            std::string::npos);
  auto [file_status, file] = Page("/download/upgrade1.exe");
  EXPECT_EQ(file_status, 200);
  EXPECT_NE(xml.find("<size>" + std::to_string(file.size()) + "</size>"),
            std::string::npos);
}

TEST_F(ServiceTest, PriceListShape) {
  auto [status, prices] = Call("GetPriceList", json::object());
  ASSERT_TRUE(prices["ok"]);
  ASSERT_EQ(prices["priceTiers"].size(), 4u);
  EXPECT_EQ(prices["priceTiers"][0][0], "1");
  EXPECT_EQ(prices["priceTiers"][0][1][0], json({"1", "24", "0.29"}));
  EXPECT_EQ(prices["shippingBands"].back(), json({"101", "0", "1.5"}));
}

}  // namespace
}  // namespace qbpd::service
