#include "platform/jpeg_turn.h"

#include <gtest/gtest.h>
#include <vips/vips8>

// jpeglib.h needs FILE and size_t declared first.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <string>
#include <vector>

namespace qbpd {
namespace {

// A JPEG made by libvips from a picture with detail in every block: slopes,
// waves and noise in three colours.
Bytes MakeJpeg(int width, int height, bool subsampled, bool grey = false) {
  const vips::VImage xy = vips::VImage::xyz(width, height);
  const vips::VImage noise = vips::VImage::gaussnoise(
      width, height, vips::VImage::option()->set("sigma", 12.0));
  const vips::VImage waves = ((xy[0] / 3.0).sin() * (xy[1] / 5.0).cos()) * 40.0;
  vips::VImage picture = (xy[0] * 1.5 + waves + noise)
                             .bandjoin(xy[1] * 1.2 - waves + 60)
                             .bandjoin(220 - xy[0] * 0.5 + noise)
                             .cast(VIPS_FORMAT_UCHAR)
                             .copy(vips::VImage::option()->set(
                                 "interpretation", VIPS_INTERPRETATION_sRGB));
  if (grey) {
    picture = picture.colourspace(VIPS_INTERPRETATION_B_W);
  }
  void* buffer = nullptr;
  std::size_t size = 0;
  picture.write_to_buffer(
      ".jpg", &buffer, &size,
      vips::VImage::option()->set("Q", 90)->set(
          "subsample_mode",
          subsampled ? VIPS_FOREIGN_SUBSAMPLE_ON : VIPS_FOREIGN_SUBSAMPLE_OFF));
  Bytes bytes(static_cast<std::uint8_t*>(buffer),
              static_cast<std::uint8_t*>(buffer) + size);
  g_free(buffer);
  return bytes;
}

vips::VImage Decode(const Bytes& jpeg, int shrink = 1) {
  return vips::VImage::new_from_buffer(
             jpeg.data(), jpeg.size(), "",
             vips::VImage::option()->set("shrink", shrink))
      .copy_memory();
}

// The source's decoding turned clockwise and then flipped left to right,
// as the turned file should show it.
vips::VImage Turned(const vips::VImage& image, int turn, bool mirror) {
  vips::VImage out = image;
  if (turn == 90) {
    out = out.rot90();
  } else if (turn == 180) {
    out = out.rot180();
  } else if (turn == 270) {
    out = out.rot270();
  }
  return mirror ? out.flip(VIPS_DIRECTION_HORIZONTAL) : out;
}

double MeanDifference(const vips::VImage& a, const vips::VImage& b) {
  return (a.cast(VIPS_FORMAT_FLOAT) - b.cast(VIPS_FORMAT_FLOAT)).abs().avg();
}

double MostDifference(const vips::VImage& a, const vips::VImage& b) {
  return (a.cast(VIPS_FORMAT_FLOAT) - b.cast(VIPS_FORMAT_FLOAT)).abs().max();
}

// The brightness plane's quantised coefficients of a JPEG, by block row,
// and its first quantisation table, read with libjpeg.
struct Coefficients {
  int blocks_wide = 0;
  int blocks_high = 0;
  std::vector<std::vector<JCOEF>> rows;  // 64 per block, natural order
  std::vector<int> steps;
};

Coefficients ReadBrightness(const Bytes& jpeg) {
  jpeg_decompress_struct info{};
  jpeg_error_mgr error{};
  info.err = jpeg_std_error(&error);
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, jpeg.data(), static_cast<unsigned long>(jpeg.size()));
  jpeg_read_header(&info, TRUE);
  jvirt_barray_ptr* arrays = jpeg_read_coefficients(&info);
  Coefficients out;
  const jpeg_component_info& luma = info.comp_info[0];
  out.blocks_wide = static_cast<int>(luma.width_in_blocks);
  out.blocks_high = static_cast<int>(luma.height_in_blocks);
  for (int row = 0; row < out.blocks_high; ++row) {
    JBLOCKARRAY blocks = info.mem->access_virt_barray(
        reinterpret_cast<j_common_ptr>(&info), arrays[0],
        static_cast<JDIMENSION>(row), 1, FALSE);
    out.rows.emplace_back(&blocks[0][0][0],
                          &blocks[0][0][0] + out.blocks_wide * DCTSIZE2);
  }
  for (int k = 0; k < DCTSIZE2; ++k) {
    out.steps.push_back(luma.quant_table->quantval[k]);
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return out;
}

TEST(JpegTurnTest, EveryTurnAndMirrorOfWholeBlocksIsLossless) {
  // 4:2:0 in whole 16-pixel blocks, and 4:4:4 in whole 8-pixel ones.
  for (const bool subsampled : {true, false}) {
    const Bytes source = MakeJpeg(96, subsampled ? 64 : 72, subsampled);
    const vips::VImage decoded = Decode(source);
    for (const int turn : {0, 90, 180, 270}) {
      for (const bool mirror : {false, true}) {
        SCOPED_TRACE(std::to_string(turn) + (mirror ? " mirrored" : "") +
                     (subsampled ? " 4:2:0" : " 4:4:4"));
        const std::optional<TurnedJpeg> turned = TurnJpeg(source, turn, mirror);
        ASSERT_TRUE(turned.has_value());
        EXPECT_TRUE(turned->exact);
        const vips::VImage shown = Decode(turned->jpeg);
        const vips::VImage expected = Turned(decoded, turn, mirror);
        ASSERT_EQ(shown.width(), expected.width());
        ASSERT_EQ(shown.height(), expected.height());
        // The decoder's integer rounding alone (and its colour smoothing's
        // alternating rounding), which moved blocks shift.
        EXPECT_LT(MeanDifference(shown, expected), 0.2);
        EXPECT_LE(MostDifference(shown, expected), 4.0);
        // Turned back (a mirrored turn is its own way back), every
        // coefficient is the source's again.
        const std::optional<TurnedJpeg> back =
            TurnJpeg(turned->jpeg, mirror ? turn : (360 - turn) % 360, mirror);
        ASSERT_TRUE(back.has_value());
        EXPECT_TRUE(back->exact);
        const Coefficients original = ReadBrightness(source);
        const Coefficients again = ReadBrightness(back->jpeg);
        EXPECT_TRUE(again.rows == original.rows);
        EXPECT_EQ(again.steps, original.steps);
      }
    }
  }
}

TEST(JpegTurnTest, APartialColourBlockIsRequantisedAndTheBrightnessMoved) {
  // 4000 x 3000 in small: 120 rows are 15 whole brightness blocks but 7.5
  // colour blocks, so a right turn lands every brightness block whole and no
  // colour block.
  const Bytes source = MakeJpeg(160, 120, true);
  const std::optional<TurnedJpeg> turned = TurnJpeg(source, 90, false);
  ASSERT_TRUE(turned.has_value());
  EXPECT_FALSE(turned->exact);
  const vips::VImage shown = Decode(turned->jpeg);
  const vips::VImage expected = Decode(source).rot90();
  ASSERT_EQ(shown.width(), 120);  // nothing trimmed
  ASSERT_EQ(shown.height(), 160);
  const double whole = MeanDifference(shown, expected);
  const double strip =
      MeanDifference(shown.crop(0, 0, 16, 160), expected.crop(0, 0, 16, 160));
  std::printf(
      "[ figures  ] turn with the colour requantised: mean difference %.3f "
      "levels, %.3f in the left strip, at most %.0f\n",
      whole, strip, MostDifference(shown, expected));
  EXPECT_LT(whole, 0.5);
  EXPECT_LT(strip, 0.5);
  // The brightness blocks are the source's, moved: transposed, and flipped
  // left to right (odd horizontal frequencies negated).
  const Coefficients before = ReadBrightness(source);
  const Coefficients after = ReadBrightness(turned->jpeg);
  ASSERT_EQ(after.blocks_wide, before.blocks_high);
  ASSERT_EQ(after.blocks_high, before.blocks_wide);
  int differing = 0;
  for (int by = 0; by < after.blocks_high; ++by) {
    for (int bx = 0; bx < after.blocks_wide; ++bx) {
      const JCOEF* moved =
          &after.rows[static_cast<std::size_t>(by)][bx * DCTSIZE2];
      const JCOEF* from =
          &before.rows[static_cast<std::size_t>(before.blocks_high - 1 - bx)]
                      [by * DCTSIZE2];
      for (int v = 0; v < DCTSIZE; ++v) {
        for (int u = 0; u < DCTSIZE; ++u) {
          const int sign = u % 2 == 1 ? -1 : 1;
          differing += moved[v * DCTSIZE + u] != sign * from[u * DCTSIZE + v];
        }
      }
    }
  }
  EXPECT_EQ(differing, 0);
  for (int v = 0; v < DCTSIZE; ++v) {
    for (int u = 0; u < DCTSIZE; ++u) {
      EXPECT_EQ(after.steps[v * DCTSIZE + u], before.steps[u * DCTSIZE + v]);
    }
  }
  // A left turn of the same photo lands every block whole.
  const std::optional<TurnedJpeg> left = TurnJpeg(source, 270, false);
  ASSERT_TRUE(left.has_value());
  EXPECT_TRUE(left->exact);
}

// How far one encoding at quality 95 (the editor's own, with the same
// subsampling) strays from `picture`: the yardstick of a turn that can't
// be lossless.
double OneEncodingAt95(const vips::VImage& picture) {
  void* buffer = nullptr;
  std::size_t size = 0;
  picture.write_to_buffer(".jpg", &buffer, &size,
                          vips::VImage::option()->set("Q", 95)->set(
                              "subsample_mode", VIPS_FOREIGN_SUBSAMPLE_ON));
  const Bytes bytes(static_cast<std::uint8_t*>(buffer),
                    static_cast<std::uint8_t*>(buffer) + size);
  g_free(buffer);
  return MeanDifference(Decode(bytes), picture);
}

TEST(JpegTurnTest, OddSizesTurnRightInEveryDirection) {
  // Neither side a whole block of either plane, and a picture full of
  // fine detail: every plane is made again.
  const Bytes source = MakeJpeg(101, 77, true);
  const vips::VImage decoded = Decode(source);
  for (const int turn : {90, 180, 270}) {
    for (const bool mirror : {false, true}) {
      SCOPED_TRACE(std::to_string(turn) + (mirror ? " mirrored" : ""));
      const std::optional<TurnedJpeg> turned = TurnJpeg(source, turn, mirror);
      ASSERT_TRUE(turned.has_value());
      // A transpose alone never moves a partial block to the near edge.
      EXPECT_EQ(turned->exact, turn == 90 && mirror);
      const vips::VImage shown = Decode(turned->jpeg);
      const vips::VImage expected = Turned(decoded, turn, mirror);
      ASSERT_EQ(shown.width(), expected.width());
      ASSERT_EQ(shown.height(), expected.height());
      const double ours = MeanDifference(shown, expected);
      const double yardstick = OneEncodingAt95(expected);
      std::printf(
          "[ figures  ] %d%s: %.2f levels from the source, one encoding at "
          "95 %.2f\n",
          turn, mirror ? " mirrored" : "", ours, yardstick);
      EXPECT_LT(ours, yardstick * 1.1);
      // The edges that a plain lossless turn would get wrong are right.
      const int w = expected.width();
      const int h = expected.height();
      EXPECT_LT(
          MeanDifference(shown.crop(0, 0, 8, h), expected.crop(0, 0, 8, h)),
          yardstick * 1.5);
      EXPECT_LT(
          MeanDifference(shown.crop(0, 0, w, 8), expected.crop(0, 0, w, 8)),
          yardstick * 1.5);
    }
  }
}

TEST(JpegTurnTest, GreyPhotosTurnAndTheSmallPictureIsTheEighthSizeDecoding) {
  const Bytes grey = MakeJpeg(64, 48, false, true);
  const std::optional<TurnedJpeg> turned_grey = TurnJpeg(grey, 90, false);
  ASSERT_TRUE(turned_grey.has_value());
  EXPECT_TRUE(turned_grey->exact);
  EXPECT_EQ(Decode(turned_grey->jpeg).bands(), 1);

  const Bytes source = MakeJpeg(400, 304, true);
  const std::optional<TurnedJpeg> turned = TurnJpeg(source, 90, false);
  ASSERT_TRUE(turned.has_value());
  ASSERT_EQ(turned->small_width, 38);
  ASSERT_EQ(turned->small_height, 50);
  ASSERT_EQ(turned->small_rgb.size(), 38U * 50U * 3U);
  const vips::VImage small = vips::VImage::new_from_memory(
      const_cast<std::uint8_t*>(turned->small_rgb.data()),
      turned->small_rgb.size(), 38, 50, 3, VIPS_FORMAT_UCHAR);
  const vips::VImage eighth = Decode(turned->jpeg, 8);
  ASSERT_EQ(eighth.width(), 38);
  EXPECT_LT(MeanDifference(small, eighth), 3.0);
}

TEST(JpegTurnTest, RefusesWhatItCannotTurn) {
  EXPECT_FALSE(TurnJpeg({}, 90, false).has_value());
  EXPECT_FALSE(TurnJpeg(Bytes(1000, 0x42), 90, false).has_value());
  // Cut off in its header.
  Bytes source = MakeJpeg(64, 48, true);
  EXPECT_FALSE(TurnJpeg(Bytes(source.begin(), source.begin() + 100), 90, false)
                   .has_value());
  // A CMYK photo is left to the decoding road.
  const vips::VImage cmyk =
      vips::VImage::black(32, 32, vips::VImage::option()->set("bands", 4))
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_CMYK));
  void* buffer = nullptr;
  std::size_t size = 0;
  cmyk.write_to_buffer(".jpg", &buffer, &size);
  const Bytes cmyk_jpeg(static_cast<std::uint8_t*>(buffer),
                        static_cast<std::uint8_t*>(buffer) + size);
  g_free(buffer);
  EXPECT_FALSE(TurnJpeg(cmyk_jpeg, 90, false).has_value());
}

}  // namespace
}  // namespace qbpd
