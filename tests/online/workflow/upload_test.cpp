// The upload road after the connection: the album choice, the transfer
// screen's engine (copies of non-JPEG photos, the URL, the album id from the
// first answer, failures, cancels, estimates) and the result page's links.
#include "online/album_name.h"
#include "online/frm_upload_album_infm.h"
#include "online/frm_upload_congrats.h"
#include "online/frm_upload_imgs.h"
#include "tests/online/online_fixture.h"
#include "tests/support/bmp_writer.h"

#include <filesystem>
#include <fstream>

namespace qbpd::testing_support {
namespace {

namespace fs = std::filesystem;
using UploadTest = OnlineTest;

UploadFileReply Sent(const std::string& album, const std::string& image) {
  UploadFileReply r;
  r.albumId = album;
  r.imageId = image;
  return r;
}

// Every file in the run's temp folder whose name ends in ".jpg" directly
// under it: the copies the engine made.
std::vector<std::string> CopiesIn(const std::string& folder) {
  std::vector<std::string> out;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end;
       it.increment(error)) {
    if (it->is_regular_file() && it->path().extension() == ".jpg") {
      out.push_back(it->path().string());
    }
  }
  return out;
}

class UploadRoad : public UploadTest {
 protected:
  // Logs in by the stored pair and reaches the album form with `albums`.
  void ReachAlbumForm(int photos, GetAlbumListReply albums) {
    WritePhotos(photos);
    Start();
    Select(photos);
    StoreLogin("ann@example.com", "secret", "True");
    client().Queue(LoginOk("CODE", "USER"));
    client().Queue(std::move(albums));
    QueueClick("frmMainWindow", "imgUpload");
  }
  std::vector<RecordedCall> Uploads() {
    std::vector<RecordedCall> out;
    for (const RecordedCall& call : client().Calls()) {
      if (call.operation == "UploadFile") {
        out.push_back(call);
      }
    }
    return out;
  }
};

TEST_F(UploadRoad, ANewAlbumGetsItsIdFromTheFirstAnswerAndTheResultPage) {
  ReachAlbumForm(3, Albums({""}, {""}));
  client().Queue(Sent("A9", "I1"));
  client().Queue(Sent("A9", "I2"));
  client().Queue(Sent("A9", "I3"));
  client().Queue(Albums({"A9"}, {"album 01/15"}));
  Queue("album form", [this] {
    auto& form = app().forms().Get<frmUploadAlbumInfm>();
    // No album yet: only the new album road, with the dated default.
    EXPECT_FALSE(form.optAddtoprev.Enabled());
    EXPECT_FALSE(form.cboPrevAlbum.Enabled());
    EXPECT_TRUE(form.optNewAlbumconn.Value());
    EXPECT_EQ(form.txtNewAlbumConn.Text(), "album 01/15");
  });
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  Queue("result page", [this] {
    auto& page = app().forms().Get<frmUploadCongrats>();
    EXPECT_TRUE(page.Visible());
    EXPECT_TRUE(page.lblCongratulations.Visible());
    EXPECT_EQ(page.lblPhotosUploaded.Caption(),
              "Your photos have been successfully added to your online "
              "album.");
    EXPECT_EQ(page.lblAlbumName.Caption(), "album 01/15");
    EXPECT_EQ(page.lblShare.Caption(), " your photos with family && friends.");
  });
  QueueClick("frmUploadCongrats", "lblViewLink");
  QueueClick("frmUploadCongrats", "lblShareLink");
  QueueClick("frmUploadCongrats", "lblOrdPrintsLink");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  const std::vector<RecordedCall> uploads = Uploads();
  ASSERT_EQ(uploads.size(), 3u);
  EXPECT_EQ(uploads[0].Input("url"),
            std::string(kAddress) +
                "/exuploadimages?authcode=CODE&numimages=1&albumid=&albumname="
                "album 01/15&sourcecode=QBC&file=" +
                Photo(1));
  EXPECT_EQ(uploads[0].Input("fieldName"), "File");
  // The second photo goes into the album the first one made.
  EXPECT_NE(uploads[1].Input("url").find("&albumid=A9&"), std::string::npos);
  EXPECT_EQ(Operations().back(), "GetAlbumList");
  EXPECT_EQ(session().giUploadedCount, 3);
  const std::string album =
      std::string(kAddress) + "/thumbnailshare/AlbumID=A9/u_=CODE";
  EXPECT_EQ(
      Opened(),
      (std::vector<std::string>{
          album, std::string(kAddress) + "/addressbook/AlbumID=A9/u_=CODE",
          album}));
  // Closed: the next upload starts with a new album.
  EXPECT_EQ(session().gsAlbumId, "");
  EXPECT_EQ(session().gsAlbumName, "");
  EXPECT_EQ(Find("frmUploadImgs"), nullptr);
}

TEST_F(UploadRoad, APngAndABmpGoAsJpegCopiesThatAreRemovedAfterwards) {
  WritePhotos(1);
  WriteDrawing("drawing.png", 90);
  {
    std::ofstream bmp(photos() / "scan.bmp", std::ios::binary);
    bmp << testing::EncodeBmp(testing::BmpLayout(32, 24),
                              [](int x, int y) { return (x * 8) << 16 | y; });
  }
  const std::string png_before = testing::ReadFile(photos() / "drawing.png");
  Start();
  Select(3);
  StoreLogin("ann@example.com", "secret", "True");
  client().Queue(LoginOk());
  client().Queue(Albums({""}, {""}));
  client().SetDefault(Sent("A1", "I"));
  client().SetDefault(Albums({"A1"}, {"x"}));
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  std::vector<std::string> files;
  for (const RecordedCall& call : client().Calls()) {
    if (call.operation == "UploadFile") {
      files.push_back(call.Input("filePath"));
    }
  }
  ASSERT_EQ(files.size(), 3u);
  const std::string temp = session().gsTempLoc;
  int copies = 0;
  for (const std::string& file : files) {
    if (file.rfind(temp, 0) == 0) {
      ++copies;
      EXPECT_EQ(fs::path(file).extension(), ".jpg") << file;
    }
  }
  EXPECT_EQ(copies, 2);
  EXPECT_TRUE(CopiesIn(temp).empty());
  // The user's photos were only read.
  EXPECT_EQ(testing::ReadFile(photos() / "drawing.png"), png_before);
  EXPECT_TRUE(fs::exists(photos() / "scan.bmp"));
}

TEST_F(UploadRoad, PngsInARowAreConvertedAheadAndAllCopiesGoAtTheEnd) {
  for (const char* name : {"a.png", "b.png", "c.png"}) {
    WriteDrawing(name, 60);
  }
  Start();
  Select(3);
  StoreLogin("ann@example.com", "secret", "True");
  client().Queue(LoginOk());
  client().Queue(Albums({""}, {""}));
  UploadFileReply slow = Sent("A1", "I");
  slow.wait_ms = 50;
  client().SetDefault(slow);
  client().SetDefault(Albums({"A1"}, {"x"}));
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  // While the first copy goes, it is a whole JPEG in the temp folder.
  QueueInside(
      "look",
      [this] {
        const std::string copy = session().gsTempLoc + "a.jpg";
        const std::string bytes = testing::ReadFile(copy);
        ASSERT_GT(bytes.size(), 2u);
        EXPECT_EQ(bytes.substr(0, 2), "\xFF\xD8");
      },
      /*skip=*/2);
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  std::vector<std::string> files;
  for (const RecordedCall& call : Uploads()) {
    files.push_back(fs::path(call.Input("filePath")).filename().string());
  }
  EXPECT_EQ(files, (std::vector<std::string>{"a.jpg", "b.jpg", "c.jpg"}));
  EXPECT_EQ(session().giUploadedCount, 3);
  EXPECT_TRUE(CopiesIn(session().gsTempLoc).empty());
}

TEST_F(UploadRoad, AnExistingAlbumGivesItsIdAndItsShortenedName) {
  const std::string long_name(60, 'n');
  ReachAlbumForm(1, Albums({"11", "22"}, {"Short", long_name}));
  client().Queue(Sent("22", "I1"));
  client().Queue(Albums({"22"}, {long_name}));
  QueueClick("frmUploadAlbumInfm", "optAddtoprev");
  Queue("choose", [this] {
    auto& form = app().forms().Get<frmUploadAlbumInfm>();
    EXPECT_EQ(form.cboPrevAlbum.ItemData(1), 2);
    user::ChooseItem(form.cboPrevAlbum, 1);
  });
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  Queue("result", [this] {
    const std::string shown =
        app().forms().Get<frmUploadCongrats>().lblAlbumName.Caption();
    EXPECT_LT(shown.size(), 60u);
    EXPECT_EQ(shown.substr(shown.size() - 3), "...");
  });
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  const RecordedCall& upload = client().Calls()[2];
  EXPECT_NE(upload.Input("url").find("&albumid=22&albumname=nnn"),
            std::string::npos);
  EXPECT_NE(upload.Input("url").find("...&sourcecode="), std::string::npos);
}

TEST_F(UploadRoad, ACancelInsideUploadFileSaysSoAfterAPhotoWent) {
  ReachAlbumForm(3, Albums({""}, {""}));
  client().Queue(Sent("A1", "I1"));
  UploadFileReply slow = Sent("A1", "I2");
  slow.wait_ms = 5000;
  client().Queue(slow);
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  QueueClickInside("frmUploadImgs", "imgCancelconn", /*skip=*/5);
  Queue("notice", [this] {
    EXPECT_EQ(FieldOf("frmMsgInfrm", "lblHead", "Caption").ToText(),
              "Sorry, Uploading Photo(s) has been cancelled.");
  });
  QueueClick("frmMsgInfrm", "imgOK");
  Run();
  EXPECT_EQ(client().CancelRequests(), 1);
  EXPECT_EQ(Uploads().size(), 2u);
  EXPECT_NE(Operations().back(), "GetAlbumList");
  EXPECT_TRUE(session().gbUploadCancelled);
  EXPECT_EQ(session().giUploadedCount, 1);
  EXPECT_EQ(Find("frmUploadImgs"), nullptr);
  EXPECT_EQ(Find("frmUploadCongrats"), nullptr);
}

TEST_F(UploadRoad, ACancelBeforeAnyPhotoWentJustCloses) {
  ReachAlbumForm(2, Albums({""}, {""}));
  UploadFileReply slow = Sent("A1", "I1");
  slow.wait_ms = 5000;
  client().Queue(slow);
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  QueueClickInside("frmUploadImgs", "imgCancelconn", /*skip=*/3);
  Run();
  EXPECT_EQ(client().CancelRequests(), 1);
  EXPECT_TRUE(Messages().empty());
  EXPECT_EQ(Find("frmUploadImgs"), nullptr);
  EXPECT_EQ(Find("frmMsgInfrm"), nullptr);
}

TEST_F(UploadRoad, ACancelBetweenPhotosPausesAndSendsNothingMore) {
  ReachAlbumForm(2, Albums({""}, {""}));
  client().Queue(Sent("A1", "I1"));
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  // The second round's pump: no transfer is running.
  QueueClickInside("frmUploadImgs", "imgCancelconn", /*skip=*/1);
  Run();
  EXPECT_EQ(client().CancelRequests(), 0);
  EXPECT_EQ(Uploads().size(), 1u);
  EXPECT_TRUE(session().gbUserCancelled);
  EXPECT_EQ(Find("frmUploadImgs"), nullptr);
  EXPECT_EQ(Find("frmUploadCongrats"), nullptr);
}

TEST_F(UploadRoad, ALostConnectionAfterOnePhotoStillEndsOnTheResultPage) {
  ReachAlbumForm(3, Albums({""}, {""}));
  client().Queue(Sent("A1", "I1"));
  UploadFileReply lost = Failure<UploadFileReply>("0", "no connection");
  lost.fatal = true;
  client().Queue(lost);
  client().Queue(Albums({"A1"}, {"x"}));
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  Queue("result", [this] {
    auto& page = app().forms().Get<frmUploadCongrats>();
    EXPECT_FALSE(page.lblCongratulations.Visible());
    EXPECT_EQ(page.lblPhotosUploaded.Caption(),
              "Sorry, some images could not be uploaded due to internet "
              "connectivity problem.");
  });
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  EXPECT_EQ(Uploads().size(), 2u);
}

TEST_F(UploadRoad, AMissingPhotoWinsOverTheLostConnectionOnTheResultPage) {
  ReachAlbumForm(3, Albums({""}, {""}));
  client().Queue(Sent("A1", "I1"));
  UploadFileReply lost = Failure<UploadFileReply>("0", "no connection");
  lost.fatal = true;
  client().Queue(lost);
  client().Queue(Albums({"A1"}, {"x"}));
  Queue("photo 2 goes before the engine", [this] { fs::remove(Photo(2)); });
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  Queue("result", [this] {
    EXPECT_EQ(
        app().forms().Get<frmUploadCongrats>().lblPhotosUploaded.Caption(),
        "Sorry, some images could not be uploaded as they are not exists in "
        "your computer.");
  });
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  EXPECT_TRUE(session().gbFileMissing);
}

TEST_F(UploadRoad, NothingSentGivesTheUnableBox) {
  ReachAlbumForm(2, Albums({""}, {""}));
  client().SetDefault(Failure<UploadFileReply>("5", "rejected"));
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  ExpectBox("Unable to upload the photos");
  Run();
  EXPECT_EQ(Uploads().size(), 2u);
  EXPECT_EQ(Find("frmUploadCongrats"), nullptr);
}

TEST_F(UploadRoad, ARejectionWhoseCodeIsItsTextEndsTheRunWithIt) {
  ReachAlbumForm(3, Albums({""}, {""}));
  client().Queue(Failure<UploadFileReply>("quota", "quota"));
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  ExpectBox("quota");
  Run();
  EXPECT_EQ(Uploads().size(), 1u);
  EXPECT_EQ(Find("frmUploadImgs"), nullptr);
}

// The estimate captions at their edges.
TEST(UploadCaptions, FollowTheLineSpeedTable) {
  EXPECT_EQ(frmUploadImgs::ModemCaption(9),
            "56k Modem....Less than 10 seconds");
  EXPECT_EQ(frmUploadImgs::ModemCaption(10), "56k Modem....10 secs");
  EXPECT_EQ(frmUploadImgs::ModemCaption(60), "56k Modem....60 secs");
  EXPECT_EQ(frmUploadImgs::ModemCaption(61), "56k Modem....1 mins and 1 secs");
  EXPECT_EQ(frmUploadImgs::DslCaption(0), "DSL cable....Less than 10 seconds");
  EXPECT_EQ(frmUploadImgs::DslCaption(59), "DSL cable.... 59 secs");
  EXPECT_EQ(frmUploadImgs::DslCaption(125), "DSL cable.... 2 mins and 5 secs");
  // 40 characters 2500 twips wide: 31 characters and "...".
  EXPECT_EQ(frmUploadImgs::PhotoCaption(std::string(40, 'a'), 2500),
            std::string(31, 'a') + "...");
  EXPECT_EQ(frmUploadImgs::PhotoCaption("a&b.jpg", 300), "a&&b.jpg");
}

TEST_F(UploadRoad, TheEstimateCountsEveryPhotoButTheCurrentOne) {
  WritePhotos(2);
  Start();
  Select(2);
  StoreLogin("ann@example.com", "secret", "True");
  client().Queue(LoginOk());
  client().Queue(Albums({""}, {""}));
  UploadFileReply first = Sent("A1", "I1");
  first.wait_ms = 30;
  client().Queue(first);
  client().SetDefault(Sent("A1", "I2"));
  client().SetDefault(Albums({"A1"}, {"x"}));
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  QueueInside(
      "look",
      [this] {
        auto& engine = app().forms().Get<frmUploadImgs>();
        const long long first_size =
            static_cast<long long>(fs::file_size(Photo(1)));
        const long long second_size =
            static_cast<long long>(fs::file_size(Photo(2)));
        EXPECT_EQ(engine.FieldValue("mlTotalBytes").ToLong(),
                  first_size + second_size);
        // While photo 1 goes, the estimate is photo 2's bytes.
        EXPECT_EQ(engine.FieldValue("mlSeconds56k").ToLong(),
                  second_size / 29491);
        EXPECT_EQ(engine.lblConnectonType_Time.Caption(),
                  frmUploadImgs::ModemCaption(second_size / 29491));
        EXPECT_EQ(engine.lblProgress.Caption(), "1 of 2");
      },
      /*skip=*/1);
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
}

// Album names as the album form checks them.
TEST(AlbumNames, TakeWhatTheRuleAllows) {
  EXPECT_TRUE(IsValidAlbumName("Summer 2026: beach & \"sun\""));
  EXPECT_TRUE(IsValidAlbumName("tab\there"));
  EXPECT_TRUE(IsValidAlbumName("caf\xC3\xA9"));  // é is a letter
  EXPECT_FALSE(IsValidAlbumName("bell\x07"));
  EXPECT_FALSE(IsValidAlbumName("times \xC3\x97"));  // × (215) is refused
  EXPECT_FALSE(IsValidAlbumName("curly {x}"));
  EXPECT_EQ(ShortenToWidth("abcdef", 100, 600), "abcdef");
  EXPECT_EQ(ShortenToWidth("abcdefghij", 800, 600), "abcde...");
}

TEST_F(UploadRoad, ABlankNameBecomesUntitledAndABadOneIsRefused) {
  ReachAlbumForm(1, Albums({""}, {""}));
  client().SetDefault(Sent("A1", "I1"));
  client().Queue(Albums({"A1"}, {"untitled album"}));
  QueueText("frmUploadAlbumInfm", "txtNewAlbumConn", "bad\x01name");
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  ExpectBox("Please enter valid characters for Album Name");
  QueueText("frmUploadAlbumInfm", "txtNewAlbumConn", "   ");
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  Queue("name", [this] { EXPECT_EQ(session().gsAlbumName, "untitled album"); });
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
}

}  // namespace
}  // namespace qbpd::testing_support
