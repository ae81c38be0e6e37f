// The JPEG copies of an upload's non-JPEG photos converted ahead: the hint
// goes to the image library at the click on Upload, before the login, and
// is taken back when the road ends, whether the photos went or the user
// cancelled on the way; no copy is written before the transfer screen asks.
#include "online/frm_upload_imgs.h"
#include "tests/online/online_fixture.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qbpd::testing_support {
namespace {

namespace fs = std::filesystem;

// One call the program made to the image library about copies.
struct CopyCall {
  std::string what;                  // "hint" or "convert"
  std::vector<std::string> photos;   // the hint's list, or the photo
  std::size_t service_calls = 0;     // how many service calls came before
  std::vector<std::string> in_temp;  // the ".jpg" files in the temp folder
};

// The real image library, noting the hints and conversions of copies.
class NotingImages final : public ImageOperations {
 public:
  NotingImages(std::unique_ptr<ImageOperations> real,
               std::function<CopyCall()> moment,
               std::vector<CopyCall>& calls)
      : real_(std::move(real)), moment_(std::move(moment)), calls_(calls) {}

  void PrepareJpegCopies(const std::vector<std::string>& sources) override {
    Note("hint", sources);
    real_->PrepareJpegCopies(sources);
  }
  int SaveImageAsJPEG(const std::string& source,
                      const std::string& target) override {
    Note("convert", {source});
    return real_->SaveImageAsJPEG(source, target);
  }

  int GenerateThumbnailExt(const std::string& source,
                           const std::string& thumbnail,
                           int size,
                           int quality) override {
    return real_->GenerateThumbnailExt(source, thumbnail, size, quality);
  }
  int GenerateThumbnailAndBuffer(const std::string& source,
                                 std::string& buffer,
                                 int size,
                                 int quality) override {
    return real_->GenerateThumbnailAndBuffer(source, buffer, size, quality);
  }
  int GetImageWidth(const std::string& path) override {
    return real_->GetImageWidth(path);
  }
  int GetImageHeight(const std::string& path) override {
    return real_->GetImageHeight(path);
  }
  int GetExifOrientation(const std::string& path) override {
    return real_->GetExifOrientation(path);
  }
  ExifPreview CompareExifPreview(const std::string& path) override {
    return real_->CompareExifPreview(path);
  }
  void PrepareThumbnails(const std::vector<std::string>& sources,
                         int size,
                         int quality) override {
    real_->PrepareThumbnails(sources, size, quality);
  }
  int DeleteThumbnailFile(const std::string& source) override {
    return real_->DeleteThumbnailFile(source);
  }
  int DeleteThumbnailFolder(const std::string& folder) override {
    return real_->DeleteThumbnailFolder(folder);
  }

 private:
  void Note(const std::string& what, const std::vector<std::string>& photos) {
    CopyCall call = moment_();
    call.what = what;
    call.photos = photos;
    calls_.push_back(std::move(call));
  }

  std::unique_ptr<ImageOperations> real_;
  std::function<CopyCall()> moment_;
  std::vector<CopyCall>& calls_;
};

class UploadCopiesAhead : public OnlineTest {
 protected:
  UploadCopiesAhead() {
    wrap_images_ = [this](std::unique_ptr<ImageOperations> real) {
      return std::make_unique<NotingImages>(
          std::move(real),
          [this] {
            CopyCall moment;
            moment.service_calls = client().Calls().size();
            std::error_code error;
            for (fs::directory_iterator it(session().gsTempLoc, error), end;
                 !error && it != end; it.increment(error)) {
              if (it->path().extension() == ".jpg") {
                moment.in_temp.push_back(it->path().filename().string());
              }
            }
            return moment;
          },
          calls_);
    };
  }
  // A photo folder of one JPEG photo and two PNG drawings; the program
  // started with the stored login and every photo ticked.
  void StartWithDrawings() {
    WritePhotos(1);
    for (const char* name : {"a.png", "b.png"}) {
      WriteDrawing(name, 70);
    }
    Start();
    Select(3);
    StoreLogin("ann@example.com", "secret", "True");
  }
  std::vector<std::string> Drawings() const {
    return {(photos() / "a.png").string(), (photos() / "b.png").string()};
  }
  std::vector<CopyCall> Hints() const {
    std::vector<CopyCall> out;
    for (const CopyCall& call : calls_) {
      if (call.what == "hint") {
        out.push_back(call);
      }
    }
    return out;
  }

  std::vector<CopyCall> calls_;
};

TEST_F(UploadCopiesAhead, TheHintGoesBeforeTheLoginAndIsTakenBackAtTheEnd) {
  StartWithDrawings();
  client().Queue(LoginOk());
  client().Queue(Albums({""}, {""}));
  UploadFileReply sent;
  sent.albumId = "A1";
  sent.imageId = "I";
  client().SetDefault(sent);
  client().SetDefault(Albums({"A1"}, {"x"}));
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmUploadAlbumInfm", "imgContinue");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  ASSERT_EQ(session().giUploadedCount, 3);
  const std::vector<CopyCall> hints = Hints();
  ASSERT_GE(hints.size(), 2u);
  // At the click: the drawings, before any call to the service.
  EXPECT_EQ(hints.front().photos, Drawings());
  EXPECT_EQ(hints.front().service_calls, 0u);
  // At the end of the road: taken back.
  EXPECT_TRUE(hints.back().photos.empty());
  // The copies are written by the transfer screen alone: after the login
  // and the album list, each once.
  int converted = 0;
  for (const CopyCall& call : calls_) {
    if (call.what == "convert") {
      ++converted;
      EXPECT_GE(call.service_calls, 2u) << call.photos.front();
      const std::string copy =
          fs::path(call.photos.front()).stem().string() + ".jpg";
      EXPECT_EQ(std::count(call.in_temp.begin(), call.in_temp.end(), copy), 0)
          << copy;
    }
  }
  EXPECT_EQ(converted, 2);
}

TEST_F(UploadCopiesAhead, ACancelInTheLoginTakesTheHintBackAndWritesNothing) {
  StartWithDrawings();
  LoginUserReply slow = LoginOk();
  slow.wait_ms = 5000;
  client().Queue(slow);
  QueueClick("frmMainWindow", "imgUpload");
  QueueClickInside("frmNetConn", "imgCancel", /*skip=*/3);
  Queue("after the click", [this] { host().Wait(500); });
  Run();
  EXPECT_EQ(Operations(), std::vector<std::string>{"LoginUser"});
  const std::vector<CopyCall> hints = Hints();
  ASSERT_EQ(hints.size(), 2u);
  EXPECT_EQ(hints[0].photos, Drawings());
  EXPECT_TRUE(hints[1].photos.empty());
  for (const CopyCall& call : calls_) {
    EXPECT_NE(call.what, "convert");
  }
  EXPECT_TRUE(hints[1].in_temp.empty());
  std::error_code error;
  for (fs::directory_iterator it(session().gsTempLoc, error), end;
       !error && it != end; it.increment(error)) {
    EXPECT_NE(it->path().extension(), ".jpg") << it->path();
  }
}

TEST_F(UploadCopiesAhead, OnlyPhotosWithoutAJpegNameAreHinted) {
  WritePhotos(2);
  Start();
  Select(2);
  StoreLogin("ann@example.com", "secret", "True");
  client().Queue(LoginOk());
  client().Queue(Albums({""}, {""}));
  QueueClick("frmMainWindow", "imgUpload");
  QueueClick("frmUploadAlbumInfm", "imgCancel");
  Run();
  const std::vector<CopyCall> hints = Hints();
  ASSERT_FALSE(hints.empty());
  EXPECT_TRUE(hints.front().photos.empty());
  EXPECT_TRUE(hints.back().photos.empty());
}

}  // namespace
}  // namespace qbpd::testing_support
