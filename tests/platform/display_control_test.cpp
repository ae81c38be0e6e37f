#include "platform/display_model.h"
#include "tests/support/bmp_writer.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::TempDir;

using Rgb = std::array<int, 3>;

// The test picture's quadrants: top left, top right, bottom left, bottom
// right. Any turn or mirror of the picture moves them somewhere else.
constexpr Rgb kRed = {220, 30, 30};
constexpr Rgb kGreen = {30, 200, 30};
constexpr Rgb kBlue = {30, 30, 220};
constexpr Rgb kYellow = {230, 220, 40};
// JPEG is lossy; its pixels are compared within this distance per channel.
constexpr int kJpegTolerance = 24;

std::vector<double> Terms(const Rgb& colour) {
  return {static_cast<double>(colour[0]), static_cast<double>(colour[1]),
          static_cast<double>(colour[2])};
}

vips::VImage Quadrants(int width, int height) {
  const vips::VImage xy = vips::VImage::xyz(width, height);
  const vips::VImage right = xy[0] >= width / 2;
  const vips::VImage bottom = xy[1] >= height / 2;
  const vips::VImage top_row = right.ifthenelse(Terms(kGreen), Terms(kRed));
  const vips::VImage bottom_row =
      right.ifthenelse(Terms(kYellow), Terms(kBlue));
  return bottom.ifthenelse(bottom_row, top_row)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB));
}

// Saves `image` as `path`, its kind taken from the extension (bitmaps are
// written by the test support, libvips has no bitmap writer).
void Save(const vips::VImage& image,
          const fs::path& path,
          int orientation = 0) {
  vips::VImage copy = image.copy();
  if (orientation != 0) {
    copy.set(VIPS_META_ORIENTATION, orientation);
  }
  if (path.extension() == ".bmp") {
    const vips::VImage memory = image.copy_memory();
    const auto* rgb = static_cast<const std::uint8_t*>(memory.data());
    const int width = memory.width();
    const std::string bytes = testing::EncodeBmp(
        testing::BmpLayout(width, memory.height()), [&](int x, int y) {
          const std::uint8_t* p = rgb + (std::size_t{1} * y * width + x) * 3;
          return std::uint32_t{p[0]} << 16 | std::uint32_t{p[1]} << 8 | p[2];
        });
    std::ofstream(path, std::ios::binary) << bytes;
    return;
  }
  copy.write_to_file(path.c_str(), vips::VImage::option()->set("Q", 95));
}

Rgb PixelAt(DisplayControl& display, int x, int y) {
  std::vector<std::uint8_t> rgb;
  if (!display.Render(x, y, 1, 1, rgb) || rgb.size() != 3) {
    ADD_FAILURE() << "no pixel at " << x << "," << y;
    return {-1, -1, -1};
  }
  return {rgb[0], rgb[1], rgb[2]};
}

::testing::AssertionResult Near(const Rgb& got,
                                const Rgb& want,
                                int tolerance) {
  for (int c = 0; c < 3; ++c) {
    if (std::abs(got[c] - want[c]) > tolerance) {
      return ::testing::AssertionFailure()
             << "got " << got[0] << "," << got[1] << "," << got[2] << " want "
             << want[0] << "," << want[1] << "," << want[2];
    }
  }
  return ::testing::AssertionSuccess();
}

// The colours at the middle of the four quadrants of the shown picture:
// top left, top right, bottom left, bottom right.
std::array<Rgb, 4> QuadrantColours(DisplayControl& display) {
  const int w = display.ShownWidth();
  const int h = display.ShownHeight();
  return {PixelAt(display, w / 4, h / 4), PixelAt(display, w * 3 / 4, h / 4),
          PixelAt(display, w / 4, h * 3 / 4),
          PixelAt(display, w * 3 / 4, h * 3 / 4)};
}

void ExpectQuadrants(DisplayControl& display,
                     const std::array<Rgb, 4>& want,
                     int tolerance) {
  const std::array<Rgb, 4> got = QuadrantColours(display);
  for (int i = 0; i < 4; ++i) {
    EXPECT_TRUE(Near(got[i], want[i], tolerance)) << "quadrant " << i;
  }
}

class DisplayControlTest : public ::testing::Test {
 protected:
  void SetUp() override { display_ = MakeVipsDisplayControl(); }

  std::string Photo(const std::string& name,
                    int width = 300,
                    int height = 200,
                    int orientation = 0) {
    const fs::path path = dir_ / name;
    Save(Quadrants(width, height), path, orientation);
    return path.string();
  }

  TempDir dir_;
  std::unique_ptr<DisplayControl> display_;
};

TEST_F(DisplayControlTest, LoadsEveryKindAtFullSizeAndTrueColours) {
  for (const char* name : {"p.jpg", "p.png", "p.tif", "p.bmp"}) {
    SCOPED_TRACE(name);
    const bool lossy = std::string(name) == "p.jpg";
    ASSERT_TRUE(display_->LoadPhoto(Photo(name)));
    EXPECT_TRUE(display_->HasPhoto());
    EXPECT_EQ(display_->PhotoWidth(), 300);
    EXPECT_EQ(display_->PhotoHeight(), 200);
    // A load starts at 100% and unrotated, whatever came before.
    EXPECT_EQ(display_->ZoomPercent(), 100);
    EXPECT_EQ(display_->ViewRotation(), 0);
    EXPECT_EQ(display_->ShownWidth(), 300);
    EXPECT_EQ(display_->ShownHeight(), 200);
    ExpectQuadrants(*display_, {kRed, kGreen, kBlue, kYellow},
                    lossy ? kJpegTolerance : 0);
    ASSERT_TRUE(display_->ZoomTo(50));
    ASSERT_TRUE(display_->RotateView(90));
  }
}

TEST_F(DisplayControlTest, GreyAndCmykJpegsShowInColour) {
  // One band, light on the left and dark on the right.
  const vips::VImage xy = vips::VImage::xyz(64, 32);
  const vips::VImage grey =
      (xy[0] < 32)
          .ifthenelse(std::vector<double>{200.0}, std::vector<double>{40.0})
          .cast(VIPS_FORMAT_UCHAR)
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_B_W));
  grey.jpegsave((dir_ / "grey.jpg").c_str());
  ASSERT_TRUE(display_->LoadPhoto((dir_ / "grey.jpg").string()));
  EXPECT_TRUE(Near(PixelAt(*display_, 8, 16), {200, 200, 200}, 4));
  EXPECT_TRUE(Near(PixelAt(*display_, 56, 16), {40, 40, 40}, 4));

  // Four bands of ink, none on the left, full cyan on the right.
  const vips::VImage cyan = (xy[0] < 32)
                                .ifthenelse(std::vector<double>{0, 0, 0, 0},
                                            std::vector<double>{255, 0, 0, 0});
  cyan.cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_CMYK))
      .jpegsave((dir_ / "cmyk.jpg").c_str());
  ASSERT_TRUE(display_->LoadPhoto((dir_ / "cmyk.jpg").string()));
  const Rgb paper = PixelAt(*display_, 8, 16);
  const Rgb ink = PixelAt(*display_, 56, 16);
  EXPECT_GT(paper[0], 200);
  EXPECT_GT(paper[2], 200);
  // Cyan ink takes the red away and leaves blue.
  EXPECT_LT(ink[0], 100);
  EXPECT_GT(ink[2], 150);
}

TEST_F(DisplayControlTest, ExifOrientationStandsThePhotoUpright) {
  struct Case {
    int tag;
    bool swaps;
    std::array<Rgb, 4> upright;
  };
  const Case cases[] = {
      {1, false, {kRed, kGreen, kBlue, kYellow}},
      // Mirrored left to right.
      {2, false, {kGreen, kRed, kYellow, kBlue}},
      {3, false, {kYellow, kBlue, kGreen, kRed}},
      // Stored lying on its side: turned a quarter clockwise to stand up.
      {6, true, {kBlue, kRed, kYellow, kGreen}},
      {8, true, {kGreen, kYellow, kRed, kBlue}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.tag);
    const std::string path =
        Photo("o" + std::to_string(c.tag) + ".jpg", 300, 200, c.tag);
    ASSERT_TRUE(display_->LoadPhoto(path));
    EXPECT_EQ(display_->PhotoWidth(), c.swaps ? 200 : 300);
    EXPECT_EQ(display_->PhotoHeight(), c.swaps ? 300 : 200);
    EXPECT_EQ(display_->ShownWidth(), display_->PhotoWidth());
    ExpectQuadrants(*display_, c.upright, kJpegTolerance);
  }
}

TEST_F(DisplayControlTest, RotateViewTurnsClockwiseAndUndoes) {
  ASSERT_TRUE(display_->LoadPhoto(Photo("r.png")));
  ASSERT_TRUE(display_->RotateView(90));
  EXPECT_EQ(display_->ViewRotation(), 90);
  EXPECT_EQ(display_->PhotoWidth(), 200);
  EXPECT_EQ(display_->PhotoHeight(), 300);
  EXPECT_EQ(display_->ShownWidth(), 200);
  ExpectQuadrants(*display_, {kBlue, kRed, kYellow, kGreen}, 0);

  // Three right turns make 270; its negation is the undo.
  ASSERT_TRUE(display_->RotateView(90));
  ASSERT_TRUE(display_->RotateView(90));
  EXPECT_EQ(display_->ViewRotation(), 270);
  ExpectQuadrants(*display_, {kGreen, kYellow, kRed, kBlue}, 0);
  ASSERT_TRUE(display_->RotateView(-270));
  EXPECT_EQ(display_->ViewRotation(), 0);
  ExpectQuadrants(*display_, {kRed, kGreen, kBlue, kYellow}, 0);

  // A turn that is no multiple of 90 changes nothing.
  EXPECT_FALSE(display_->RotateView(45));
  EXPECT_EQ(display_->ViewRotation(), 0);

  // Four quarter turns give back exactly the same pixels.
  std::vector<std::uint8_t> before;
  std::vector<std::uint8_t> after;
  ASSERT_TRUE(display_->ZoomTo(75));
  ASSERT_TRUE(display_->Render(0, 0, 1000, 1000, before));
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(display_->RotateView(-90));
  }
  ASSERT_TRUE(display_->Render(0, 0, 1000, 1000, after));
  EXPECT_EQ(before, after);
}

TEST_F(DisplayControlTest, FitToWidthFollowsTheViewAndItsScrollBar) {
  ASSERT_TRUE(display_->LoadPhoto(Photo("f.jpg", 1200, 800)));
  // Without a view there is no width to fit.
  EXPECT_FALSE(display_->ZoomFitToWidth());
  EXPECT_EQ(display_->ZoomPercent(), 100);

  // The photo fits in height: the whole width is used.
  display_->SetViewSize(400, 1000);
  ASSERT_TRUE(display_->ZoomFitToWidth());
  EXPECT_EQ(display_->ShownWidth(), 400);
  EXPECT_EQ(display_->ShownHeight(), 267);
  EXPECT_EQ(display_->ZoomPercent(), 33);
  ExpectQuadrants(*display_, {kRed, kGreen, kBlue, kYellow}, kJpegTolerance);

  // Taller than the view: the scroll bar's width is left free.
  display_->SetViewSize(400, 100);
  ASSERT_TRUE(display_->ZoomFitToWidth());
  EXPECT_EQ(display_->ShownWidth(), 400 - kDisplayScrollBarPx);
  EXPECT_EQ(display_->ZoomPercent(), 32);

  // After a quarter turn the photo's height is its width.
  display_->SetViewSize(400, 1000);
  ASSERT_TRUE(display_->RotateView(90));
  ASSERT_TRUE(display_->ZoomFitToWidth());
  EXPECT_EQ(display_->ShownWidth(), 400);
  EXPECT_EQ(display_->ShownHeight(), 600);
  EXPECT_EQ(display_->ZoomPercent(), 50);

  // A photo far wider than the view still reports a zoom it can go back to.
  display_->SetViewSize(4, 4);
  ASSERT_TRUE(display_->ZoomFitToWidth());
  EXPECT_EQ(display_->ZoomPercent(), 1);
  EXPECT_TRUE(display_->ZoomTo(display_->ZoomPercent()));
}

TEST_F(DisplayControlTest, ZoomToAcceptsOneToSixteenHundredPercent) {
  ASSERT_TRUE(display_->LoadPhoto(Photo("z.png", 300, 200)));
  for (int refused : {0, -25, 1601}) {
    EXPECT_FALSE(display_->ZoomTo(refused)) << refused;
  }
  EXPECT_EQ(display_->ZoomPercent(), 100);
  ASSERT_TRUE(display_->ZoomTo(1600));
  EXPECT_EQ(display_->ShownWidth(), 4800);
  EXPECT_EQ(display_->ShownHeight(), 3200);
  // A corner far into the enlarged picture has the corner's colour.
  EXPECT_TRUE(Near(PixelAt(*display_, 4790, 3190), kYellow, 0));
  ASSERT_TRUE(display_->ZoomTo(1));
  EXPECT_EQ(display_->ShownWidth(), 3);
  EXPECT_EQ(display_->ShownHeight(), 2);
  ASSERT_TRUE(display_->ZoomTo(25));
  EXPECT_EQ(display_->ShownWidth(), 75);
  EXPECT_EQ(display_->ShownHeight(), 50);
  ExpectQuadrants(*display_, {kRed, kGreen, kBlue, kYellow}, 0);
}

TEST_F(DisplayControlTest, RenderClipsToTheShownPicture) {
  ASSERT_TRUE(display_->LoadPhoto(Photo("c.png", 300, 200)));
  ASSERT_TRUE(display_->ZoomTo(50));
  std::vector<std::uint8_t> rgb;
  // Hanging over the top left corner: only the part inside is given.
  ASSERT_TRUE(display_->Render(-10, -20, 30, 40, rgb));
  EXPECT_EQ(rgb.size(), 20u * 20u * 3u);
  EXPECT_TRUE(Near({rgb[0], rgb[1], rgb[2]}, kRed, 0));
  // Over the bottom right corner.
  ASSERT_TRUE(display_->Render(140, 95, 100, 100, rgb));
  EXPECT_EQ(rgb.size(), 10u * 5u * 3u);
  EXPECT_TRUE(
      Near({rgb[rgb.size() - 3], rgb[rgb.size() - 2], rgb.back()}, kYellow, 0));
  // A row across the middle line changes colour there (the resampler may
  // ring for a few pixels beside the edge).
  ASSERT_TRUE(display_->Render(0, 10, 150, 1, rgb));
  ASSERT_EQ(rgb.size(), 150u * 3u);
  EXPECT_TRUE(Near({rgb[70 * 3], rgb[70 * 3 + 1], rgb[70 * 3 + 2]}, kRed, 0));
  EXPECT_TRUE(Near({rgb[80 * 3], rgb[80 * 3 + 1], rgb[80 * 3 + 2]}, kGreen, 0));
  // Nothing left of the rectangle.
  for (const auto& r : std::vector<std::array<int, 4>>{{150, 0, 10, 10},
                                                       {0, 100, 10, 10},
                                                       {-10, 0, 10, 10},
                                                       {0, 0, 0, 5}}) {
    EXPECT_FALSE(display_->Render(r[0], r[1], r[2], r[3], rgb))
        << r[0] << "," << r[1] << "," << r[2] << "," << r[3];
  }
}

TEST_F(DisplayControlTest, FinerZoomDecodesTheDetailAgain) {
  // Single-pixel stripes: a coarse decoding can only show them as grey.
  const int width = 1600;
  const int height = 800;
  const vips::VImage xy = vips::VImage::xyz(width, height);
  const vips::VImage stripes =
      ((xy[0] % 2) == 0)
          .cast(VIPS_FORMAT_UCHAR)
          .bandjoin(((xy[0] % 2) == 0))
          .bandjoin(((xy[0] % 2) == 0))
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_sRGB));
  const fs::path path = dir_ / "stripes.jpg";
  stripes.jpegsave(path.c_str(), vips::VImage::option()->set("Q", 100));

  display_->SetViewSize(200, 2000);
  ASSERT_TRUE(display_->LoadPhoto(path.string()));
  ASSERT_TRUE(display_->ZoomFitToWidth());
  EXPECT_EQ(display_->ZoomPercent(), 13);
  ASSERT_TRUE(display_->ZoomTo(100));
  std::vector<std::uint8_t> rgb;
  ASSERT_TRUE(display_->Render(400, 400, 8, 1, rgb));
  for (int x = 0; x + 1 < 8; ++x) {
    EXPECT_GT(std::abs(rgb[x * 3] - rgb[(x + 1) * 3]), 150) << x;
  }
}

TEST_F(DisplayControlTest, ZoomThatCannotDecodeKeepsTheZoomItHad) {
  const std::string path = Photo("later_cut.jpg", 1200, 800);
  display_->SetViewSize(300, 1000);
  ASSERT_TRUE(display_->LoadPhoto(path));
  ASSERT_TRUE(display_->ZoomFitToWidth());
  // The file is cut short behind the view's back; 100% needs it again.
  const std::string jpeg = ReadFile(path);
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      << jpeg.substr(0, jpeg.size() / 3);
  EXPECT_FALSE(display_->ZoomTo(100));
  EXPECT_EQ(display_->ZoomPercent(), 25);
  EXPECT_EQ(display_->ShownWidth(), 300);
  ExpectQuadrants(*display_, {kRed, kGreen, kBlue, kYellow}, kJpegTolerance);
  // A zoom the held decoding serves still works.
  EXPECT_TRUE(display_->ZoomTo(20));
}

TEST_F(DisplayControlTest, TransparentAndSixteenBitPhotos) {
  // Fully transparent pixels show the view's grey.
  const vips::VImage clear = Quadrants(40, 40).bandjoin_const({0}).copy(
      vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
  Save(clear, dir_ / "clear.png");
  ASSERT_TRUE(display_->LoadPhoto((dir_ / "clear.png").string()));
  EXPECT_TRUE(Near(PixelAt(*display_, 5, 5), {206, 206, 206}, 1));

  const vips::VImage deep =
      (Quadrants(40, 40).cast(VIPS_FORMAT_USHORT) * 257)
          .cast(VIPS_FORMAT_USHORT)
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_RGB16));
  Save(deep, dir_ / "deep.png");
  ASSERT_TRUE(display_->LoadPhoto((dir_ / "deep.png").string()));
  ExpectQuadrants(*display_, {kRed, kGreen, kBlue, kYellow}, 1);
}

// A black PNG of any size, one bit a pixel, written by hand: its pixel rows
// go into uncompressed deflate blocks, so a photo above the size bound can be
// made in a moment. With `rows` false the file stops after the header.
std::string BlackPng(std::uint32_t width, std::uint32_t height, bool rows) {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t n = 0; n < 256; ++n) {
    std::uint32_t c = n;
    for (int k = 0; k < 8; ++k) {
      c = (c & 1u) != 0 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
    }
    table[n] = c;
  }
  auto crc = [&table](const std::string& bytes) {
    std::uint32_t c = 0xFFFFFFFFu;
    for (unsigned char b : bytes) {
      c = table[(c ^ b) & 0xFFu] ^ (c >> 8);
    }
    return ~c;
  };
  auto be32 = [](std::uint32_t v) {
    return std::string{static_cast<char>(v >> 24), static_cast<char>(v >> 16),
                       static_cast<char>(v >> 8), static_cast<char>(v)};
  };
  auto chunk = [&](const std::string& type, const std::string& data) {
    return be32(static_cast<std::uint32_t>(data.size())) + type + data +
           be32(crc(type + data));
  };
  const std::string ihdr =
      be32(width) + be32(height) + std::string{1, 0, 0, 0, 0};
  std::string png = std::string("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", ihdr);
  if (rows) {
    // Each row: a filter byte and the bits, all zero.
    const std::size_t raw = std::size_t{height} * (1 + (width + 7) / 8);
    constexpr std::size_t kBlock = 65535;
    std::string zlib = "\x78\x01";
    for (std::size_t done = 0; done < raw;) {
      const std::size_t n = std::min(kBlock, raw - done);
      done += n;
      zlib += static_cast<char>(done == raw ? 1 : 0);
      zlib += static_cast<char>(n & 0xFF);
      zlib += static_cast<char>(n >> 8);
      zlib += static_cast<char>(~n & 0xFF);
      zlib += static_cast<char>((~n >> 8) & 0xFF);
      zlib.append(n, '\0');
    }
    // The Adler-32 sum of `raw` zero bytes.
    zlib += be32(static_cast<std::uint32_t>((raw % 65521) << 16 | 1));
    png += chunk("IDAT", zlib);
  }
  return png + chunk("IEND", "");
}

TEST_F(DisplayControlTest, PhotosAboveTheSizeBoundAreRefused) {
  display_->SetViewSize(150, 1000);
  // The hand-made PNG is a real photo when small.
  ASSERT_TRUE(display_->LoadPhoto(
      dir_.WriteFile("small.png", BlackPng(64, 32, true)).string()));
  EXPECT_EQ(display_->PhotoWidth(), 64);
  EXPECT_TRUE(Near(PixelAt(*display_, 10, 10), {0, 0, 0}, 0));
  // Complete and valid, but 16001 x 16000 is above 256 megapixels.
  EXPECT_FALSE(display_->LoadPhoto(
      dir_.WriteFile("big.png", BlackPng(16001, 16000, true)).string()));
  EXPECT_EQ(display_->PhotoWidth(), 64);
}

TEST_F(DisplayControlTest, RefusedFilesLeaveTheShownPhotoAlone) {
  display_->SetViewSize(150, 1000);
  ASSERT_TRUE(display_->LoadPhoto(Photo("kept.png", 300, 200)));
  ASSERT_TRUE(display_->RotateView(90));
  ASSERT_TRUE(display_->ZoomTo(50));

  const std::string jpeg = ReadFile(Photo("whole.jpg", 600, 400));
  const std::string refused[] = {
      dir_.WriteFile("notes.txt", "just some words\n"),
      // Text dressed as a photo by its name.
      dir_.WriteFile("notes.jpg", "just some words\n"),
      dir_.WriteFile("empty.png", ""),
      (dir_ / "missing.jpg").string(),
      dir_.WriteFile("half.jpg", jpeg.substr(0, jpeg.size() / 2)),
      // Headers claiming 17000 x 17000 pixels, with no pixels behind.
      dir_.WriteFile("huge.png", BlackPng(17000, 17000, false)),
      dir_.WriteFile("huge.bmp", testing::EncodeBmp(testing::BmpLayout(1, 1),
                                                    [](int, int) { return 0u; })
                                     .replace(18, 8,
                                              std::string("\x68\x42\x00\x00"
                                                          "\x68\x42\x00\x00",
                                                          8))),
  };
  for (const std::string& path : refused) {
    SCOPED_TRACE(path);
    EXPECT_FALSE(display_->LoadPhoto(path));
    EXPECT_TRUE(display_->HasPhoto());
    EXPECT_EQ(display_->PhotoWidth(), 200);
    EXPECT_EQ(display_->PhotoHeight(), 300);
    EXPECT_EQ(display_->ZoomPercent(), 50);
    EXPECT_EQ(display_->ViewRotation(), 90);
  }
  ExpectQuadrants(*display_, {kBlue, kRed, kYellow, kGreen}, 0);
}

TEST_F(DisplayControlTest, ClearDropsThePhoto) {
  ASSERT_TRUE(display_->LoadPhoto(Photo("gone.png")));
  display_->Clear();
  std::vector<std::uint8_t> rgb;
  EXPECT_FALSE(display_->HasPhoto());
  EXPECT_EQ(display_->PhotoWidth(), 0);
  EXPECT_EQ(display_->ShownWidth(), 0);
  EXPECT_FALSE(display_->Render(0, 0, 10, 10, rgb));
  EXPECT_FALSE(display_->ZoomTo(100));
  EXPECT_FALSE(display_->RotateView(90));
}

}  // namespace
}  // namespace qbpd
