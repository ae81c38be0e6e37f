// Files a careful attacker would hand the program, made here in a private
// folder and put through the real image paths: the thumbnail, the photo view
// and its measures. Each fails cleanly or shows; none aborts or blocks.

#include "platform/clipboard.h"
#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "tests/platform/hostile_files.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

constexpr int kThumbnailSize = 85;
constexpr int kQuality = 70;
constexpr std::pair<int, int> kViews[] = {{0, 0},
                                          {1, 1},
                                          {85, 85},
                                          {333, 200},
                                          {1920, 1080}};

vips::VImage Grey(int width, int height, int bands) {
  return (vips::VImage::black(width, height,
                              vips::VImage::option()->set("bands", bands)) +
          128)
      .cast(VIPS_FORMAT_UCHAR);
}

void SaveJpeg(const vips::VImage& image,
              const fs::path& path,
              bool progressive = false) {
  image.jpegsave(path.c_str(),
                 vips::VImage::option()->set("interlace", progressive));
}

class HostileImageTest : public ::testing::Test {
 protected:
  HostileImageTest()
      : images_(MakeVipsImageOperations((temp_ / "cache").string())),
        view_(MakeVipsDisplayControl()) {}

  // Runs `photo` through every image path. Returns whether the thumbnail
  // was made and whether the view took the photo.
  std::pair<bool, bool> Attack(const fs::path& photo) {
    const bool thumbnail = images_->GenerateThumbnailExt(
                               photo.string(), (temp_ / "thumb.jpg").string(),
                               kThumbnailSize, kQuality) == 1;
    std::string buffer;
    const bool cached =
        images_->GenerateThumbnailAndBuffer(photo.string(), buffer,
                                            kThumbnailSize, kQuality) == 1;
    EXPECT_EQ(thumbnail, cached) << photo;
    bool shown = false;
    // Views from a sliver to a wide screen, before and after the first
    // size is known.
    for (const auto& [width, height] : kViews) {
      view_->SetViewSize(width, height);
      const bool loaded = view_->LoadPhoto(photo.string());
      EXPECT_TRUE(!shown || loaded) << photo << " in " << width;
      shown = loaded;
      if (loaded) {
        TryEveryZoom(photo);
      }
    }
    return {thumbnail, shown};
  }

  // The measures, and every zoom and turn a person can reach; a zoom may be
  // refused (a fit that would pass the largest shown side) but never fail
  // the picture that is shown.
  void TryEveryZoom(const fs::path& photo) {
    EXPECT_GT(view_->PhotoWidth(), 0);
    EXPECT_GT(view_->PhotoHeight(), 0);
    std::vector<std::uint8_t> rgb;
    for (int turn = 0; turn < 4; ++turn) {
      for (const int percent : {1, 50, 1600}) {
        view_->ZoomTo(percent);
        EXPECT_GE(view_->ShownWidth(), 1);
        EXPECT_GE(view_->ShownHeight(), 1);
        EXPECT_TRUE(view_->Render(0, 0, 640, 480, rgb)) << photo;
      }
      if (view_->ZoomFitToWidth()) {
        EXPECT_TRUE(view_->Render(0, 0, 640, 480, rgb)) << photo;
      }
      view_->RotateView(90);
    }
  }

  // The thumbnail's and the view's verdict on `photo`, in one view size.
  std::pair<bool, bool> Verdict(const fs::path& photo) {
    std::string buffer;
    const bool thumbnail =
        images_->GenerateThumbnailAndBuffer(photo.string(), buffer,
                                            kThumbnailSize, kQuality) == 1;
    view_->SetViewSize(640, 480);
    return {thumbnail, view_->LoadPhoto(photo.string())};
  }

  // A thumbnail of `photo`, decoded; its width and height.
  std::pair<int, int> ThumbnailSize(const fs::path& photo) {
    const fs::path out = temp_ / "measured.jpg";
    if (images_->GenerateThumbnailExt(photo.string(), out.string(),
                                      kThumbnailSize, kQuality) != 1) {
      return {0, 0};
    }
    const vips::VImage image = vips::VImage::new_from_file(out.c_str());
    return {image.width(), image.height()};
  }

  TempDir temp_;
  std::unique_ptr<ImageOperations> images_;
  std::unique_ptr<DisplayControl> view_;
};

TEST_F(HostileImageTest, ExtremeAspectRatiosScaleToAtLeastOnePixel) {
  const fs::path wide = temp_ / "wide.jpg";
  SaveJpeg(Grey(65500, 1, 3), wide);
  const fs::path wide_progressive = temp_ / "wide-progressive.jpg";
  SaveJpeg(Grey(65500, 1, 3), wide_progressive, /*progressive=*/true);
  const fs::path tall = temp_ / "tall.jpg";
  SaveJpeg(Grey(1, 65500, 3), tall);
  const fs::path tall_png = temp_ / "tall.png";
  Grey(2, 60000, 3).pngsave(tall_png.c_str());
  const fs::path cmyk = temp_ / "cmyk.jpg";
  SaveJpeg(Grey(6000, 4, 4)
               .copy(vips::VImage::option()->set("interpretation",
                                                 VIPS_INTERPRETATION_CMYK)),
           cmyk);

  for (const fs::path& photo : {wide, wide_progressive, cmyk}) {
    EXPECT_EQ(Attack(photo), std::make_pair(true, true)) << photo;
    const auto [width, height] = ThumbnailSize(photo);
    EXPECT_EQ(width, kThumbnailSize) << photo;
    EXPECT_EQ(height, 1) << photo;
  }
  for (const fs::path& photo : {tall, tall_png}) {
    EXPECT_EQ(Attack(photo), std::make_pair(true, true)) << photo;
    const auto [width, height] = ThumbnailSize(photo);
    EXPECT_EQ(width, 1) << photo;
    EXPECT_EQ(height, kThumbnailSize) << photo;
  }
  view_->SetViewSize(800, 600);
  ASSERT_TRUE(view_->LoadPhoto(wide.string()));
  EXPECT_EQ(view_->PhotoWidth(), 65500);
  EXPECT_EQ(view_->PhotoHeight(), 1);
}

// Noise compresses badly, so the file is long and a cut lands inside the
// compressed data.
vips::VImage Noise(int width, int height) {
  std::vector<vips::VImage> bands;
  for (int band = 0; band < 3; ++band) {
    bands.push_back(vips::VImage::gaussnoise(width, height) * 3);
  }
  return vips::VImage::bandjoin(bands)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB));
}

void WriteCut(const fs::path& from, const fs::path& to, double keep) {
  const std::string bytes = testing::ReadFile(from);
  std::ofstream(to, std::ios::binary)
      << bytes.substr(0, static_cast<std::size_t>(bytes.size() * keep));
}

TEST_F(HostileImageTest, ACutJpegFailsTheSameWayWhateverTheThreadCount) {
  const fs::path whole = temp_ / "whole.jpg";
  SaveJpeg(Noise(800, 600), whole);
  const fs::path whole_progressive = temp_ / "whole-progressive.jpg";
  SaveJpeg(Noise(800, 600), whole_progressive, /*progressive=*/true);
  std::vector<fs::path> cut;
  for (const double keep : {0.3, 0.9, 0.999}) {
    for (const fs::path& from : {whole, whole_progressive}) {
      cut.push_back(temp_ /
                    (std::to_string(keep) + "-" + from.filename().string()));
      WriteCut(from, cut.back(), keep);
    }
  }
  // Only the last two bytes, the end-of-image marker, missing.
  const std::string bytes = testing::ReadFile(whole);
  cut.push_back(temp_ / "no-end.jpg");
  std::ofstream(cut.back(), std::ios::binary)
      << bytes.substr(0, bytes.size() - 2);
  // Bytes after the end of the picture (as some cameras write) are no cut.
  const fs::path trailer = temp_ / "trailer.jpg";
  std::ofstream(trailer, std::ios::binary) << bytes << "camera trailer";

  const int threads = vips_concurrency_get();
  for (const int concurrency : {1, 8, 2, 8, 1}) {
    vips_concurrency_set(concurrency);
    for (const fs::path& photo : cut) {
      EXPECT_EQ(Verdict(photo), std::make_pair(false, false))
          << photo << " with " << concurrency << " threads";
    }
    for (const fs::path& photo : {whole, whole_progressive, trailer}) {
      EXPECT_EQ(Verdict(photo), std::make_pair(true, true))
          << photo << " with " << concurrency << " threads";
    }
  }
  vips_concurrency_set(threads);
}

// Runs `attack` on another thread. A call that waits on the pipe for a
// writer (one that never comes) is a failure; the test then plays the
// writer to let it go.
void ExpectNoWaitOn(const fs::path& fifo, const std::function<void()>& attack) {
  std::packaged_task<void()> task(attack);
  std::future<void> done = task.get_future();
  std::thread runner(std::move(task));
  // Generous: an open that does not wait returns at once.
  if (done.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
    ADD_FAILURE() << "the program waited on the named pipe " << fifo;
    while (done.wait_for(std::chrono::milliseconds(10)) !=
           std::future_status::ready) {
      const int writer = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK);
      if (writer >= 0) {
        ::close(writer);
      }
    }
  }
  runner.join();
}

TEST_F(HostileImageTest, PhotosThatWouldTakeTooMuchAreRefusedBeforeDecoding) {
  // A progressive JPEG is decoded whole whatever the scale asked for: at
  // 16000 x 16000 its coefficients alone take 768 MB.
  const fs::path huge = temp_ / "huge-progressive.jpg";
  std::ofstream(huge, std::ios::binary) << testing::WithFrameSize(
      testing::Encoded(testing::Gradient(64, 48), ".jpg[interlace]"), 16000,
      16000);
  // A grey 16000 x 16000 progressive JPEG's header on a file of a few
  // hundred bytes: the decoder would fill in 256 megapixels of nothing.
  const fs::path lying = temp_ / "lying.jpg";
  std::ofstream(lying, std::ios::binary) << testing::WithFrameSize(
      testing::Encoded(testing::Gradient(64, 48).extract_band(0),
                       ".jpg[interlace]"),
      16000, 16000);
  // 64 MB of comment in 64 KB of PNG.
  const fs::path bomb = temp_ / "bomb.png";
  std::ofstream(bomb, std::ios::binary) << testing::PngWith(testing::Chunk(
      "zTXt", std::string("Comment\0\0", 9) +
                  testing::Deflated(std::string(64 << 20, 'A'))));
  for (const fs::path& photo : {huge, lying, bomb}) {
    EXPECT_EQ(Verdict(photo), std::make_pair(false, false)) << photo;
  }
}

TEST_F(HostileImageTest, ANamedPipeUnderAPhotosNameIsRefusedWithoutWaiting) {
  const fs::path fifo = temp_ / "photo.jpg";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  ExpectNoWaitOn(
      fifo, [&] { EXPECT_EQ(Attack(fifo), std::make_pair(false, false)); });
  // A link to a pipe is no photo either; nor is a folder or a device.
  const fs::path link = temp_ / "link.jpg";
  fs::create_symlink(fifo, link);
  ExpectNoWaitOn(
      fifo, [&] { EXPECT_EQ(Attack(link), std::make_pair(false, false)); });
  const fs::path folder = temp_ / "folder.jpg";
  fs::create_directory(folder);
  EXPECT_EQ(Attack(folder), std::make_pair(false, false));
  EXPECT_EQ(Attack("/dev/zero"), std::make_pair(false, false));
  // Nor does copying it to the clipboard wait.
  ExpectNoWaitOn(fifo, [&] {
    EXPECT_FALSE(MakeMemoryClipboard()->SetImageFromFile(fifo.string()));
  });
}

}  // namespace
}  // namespace qbpd
