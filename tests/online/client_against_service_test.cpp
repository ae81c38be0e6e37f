// The service client against a real qbpd-service: logins, sign-up, albums
// and uploads, sharing, the upgrade, and a service that dies mid-call.
#include "core/settings.h"
#include "tests/online/client_against_service_fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qbpd::against_service {
namespace {

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

TEST_F(ClientAgainstServiceTest, UpgradeIsOfferedAndDownloadedWhole) {
  const std::string url = gsSiteAddress + "/download/upgrade.xml";
  std::string location;
  std::string version;
  std::string size;
  std::string notes;
  // Unless told another, the service offers this build's own version: an
  // older program is offered it, this build is not.
  const std::string own(ProgramVersion());
  EXPECT_TRUE(
      client_->GetUpgradeInfo(url, "0", location, version, size, notes));
  EXPECT_EQ(version, own);
  EXPECT_EQ(location, gsSiteAddress + "/download/upgrade1.exe");
  EXPECT_FALSE(
      client_->GetUpgradeInfo(url, own, location, version, size, notes));

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
}  // namespace qbpd::against_service
