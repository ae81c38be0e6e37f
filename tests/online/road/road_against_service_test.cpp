// The whole upload road through the program's forms with the real client
// against a real qbpd-service on 127.0.0.1: login, a new album, twenty
// photos that the service then holds byte for byte; a second upload into
// that album; and the service killed in the middle of a run.
#include "online/frm_upload_album_infm.h"
#include "online/frm_upload_congrats.h"
#include "platform/forms/runtime_error.h"
#include "platform/http_transport.h"
#include "tests/online/online_fixture.h"
#include "tests/online/service_process.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace qbpd::testing_support {
namespace {

namespace fs = std::filesystem;
constexpr char kDemoEmail[] = "demo@quillbay.test";

class RoadTest : public OnlineTest {
 protected:
  void SetUp() override {
    service_ = std::make_unique<testing::ServiceProcess>(
        QBPD_SERVICE_PROGRAM, service_dir_.path(),
        std::vector<std::string>{"--seed-demo"});
    ASSERT_TRUE(service_->ok()) << service_->error();
    site_ = service_->site();
    address_ = service_->base();
    real_client_ = true;
  }

  void StartWithPhotos(int count) {
    WritePhotos(count);
    Start();
    Select(count);
    StoreLogin(kDemoEmail, service_->demo_password(), "True");
  }

  // The album's photos as the service gives them back, by image id order:
  // fetched through the album's photo pages with the session code.
  std::vector<std::string> AlbumPhotoBytes(const std::string& album_id) {
    std::unique_ptr<ctlExtAPI> client =
        MakeServiceClient(host(), [] { return MakeCurlTransport(); });
    TextDictionary photos;
    std::string code, text;
    EXPECT_TRUE(client->GetAlbumPhotos(site_, session().gsAuthCode, album_id,
                                       photos, code, text))
        << code << " " << text;
    std::vector<std::string> out;
    auto transport = MakeCurlTransport();
    for (const std::string& id : photos.Keys()) {
      HttpRequest request;
      request.url = address_ + "/photo/" + id + "/u_=" + session().gsAuthCode;
      HttpResponse response = transport->Perform(request, [] { return true; });
      EXPECT_EQ(response.status, 200) << request.url;
      out.push_back(response.body);
    }
    return out;
  }

  std::vector<std::string> PhotoBytes(int count) const {
    std::vector<std::string> out;
    for (int i = 1; i <= count; ++i) {
      out.push_back(testing::ReadFile(Photo(i)));
    }
    return out;
  }

  testing::TempDir service_dir_;
  std::unique_ptr<testing::ServiceProcess> service_;
};

TEST_F(RoadTest, TwentyPhotosReachANewAlbumByteForByteAndASecondRunAddsToIt) {
  StartWithPhotos(20);
  const std::vector<std::string> before = PhotoBytes(20);
  std::string album_id;
  QueueClick("frmMainWindow", "imgUpload");
  QueueText("frmUploadAlbumInfm", "txtNewAlbumConn", "Road trip");
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  Queue("result", [this, &album_id] {
    auto& page = app().forms().Get<frmUploadCongrats>();
    EXPECT_EQ(page.lblPhotosUploaded.Caption(),
              "Your photos have been successfully added to your online "
              "album.");
    album_id = session().gsAlbumId;
  });
  QueueClick("frmUploadCongrats", "lblViewLink");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  ASSERT_FALSE(album_id.empty());
  EXPECT_EQ(session().giUploadedCount, 20);
  EXPECT_EQ(AlbumPhotoBytes(album_id), before);
  ASSERT_EQ(Opened().size(), 1u);
  EXPECT_EQ(Opened()[0], address_ + "/thumbnailshare/AlbumID=" + album_id +
                             "/u_=" + session().gsAuthCode);
  // The page the link opens shows the album's photos.
  auto transport = MakeCurlTransport();
  HttpRequest page;
  page.url = Opened()[0];
  const HttpResponse answer = transport->Perform(page, [] { return true; });
  EXPECT_EQ(answer.status, 200);
  EXPECT_NE(answer.body.find("Road trip"), std::string::npos);
  EXPECT_NE(answer.body.find("20 photo(s)"), std::string::npos);

  // Again, into the album that now exists: the session is alive.
  user::Click(main().imgClear);
  Select(2);
  QueueClick("frmMainWindow", "imgUpload");
  Queue("choose the album", [this] {
    auto& form = app().forms().Get<frmUploadAlbumInfm>();
    user::Click(form.optAddtoprev);
    for (int i = 0; i < form.cboPrevAlbum.ListCount(); ++i) {
      if (form.cboPrevAlbum.List(i) == "Road trip") {
        user::ChooseItem(form.cboPrevAlbum, i);
      }
    }
    EXPECT_EQ(form.cboPrevAlbum.Text(), "Road trip");
  });
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  std::vector<std::string> expected = before;
  expected.push_back(before[0]);
  expected.push_back(before[1]);
  EXPECT_EQ(AlbumPhotoBytes(album_id), expected);
  EXPECT_EQ(PhotoBytes(20), before);
}

// How many JPEG files the service keeps under its data folder.
int StoredJpegs(const fs::path& folder) {
  int count = 0;
  std::error_code error;
  for (fs::recursive_directory_iterator it(folder, error), end;
       !error && it != end; it.increment(error)) {
    std::error_code type_error;
    if (!it->is_regular_file(type_error)) {
      continue;
    }
    std::ifstream in(it->path(), std::ios::binary);
    char head[2] = {};
    if (in.read(head, 2) && head[0] == '\xFF' && head[1] == '\xD8') {
      ++count;
    }
  }
  return count;
}

TEST_F(RoadTest, TheServiceKilledMidRunEndsOnTheResultPageAndLosesNothing) {
  StartWithPhotos(8);
  const std::vector<std::string> before = PhotoBytes(8);
  // The service dies once it has stored two photos, whatever the program is
  // doing at that moment, as a crash would.
  std::atomic<bool> stop{false};
  const int stored_before = StoredJpegs(service_dir_.path());
  std::thread killer([this, &stop, stored_before] {
    while (!stop && StoredJpegs(service_dir_.path()) < stored_before + 2) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (!stop) {
      service_->Kill();
    }
  });
  QueueClick("frmMainWindow", "imgUpload");
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
  stop = true;
  killer.join();
  // The second photo may have been stored but never answered.
  EXPECT_GE(session().giUploadedCount, 1);
  EXPECT_LT(session().giUploadedCount, 8);
  EXPECT_EQ(PhotoBytes(8), before);
}

}  // namespace
}  // namespace qbpd::testing_support
