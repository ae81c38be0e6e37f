// A broken JPEG is refused alike by the thumbnail maker and by the photo
// view, at every scale the view decodes at: damaged coded data, tables and
// markers, in baseline and progressive photos.

#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "platform/whole_decode_mark.h"
#include "tests/platform/hostile_files.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

// A noisy picture: its coded data fills most of the file.
std::string NoisyJpeg(const char* suffix) {
  const int width = 640;
  const int height = 480;
  const vips::VImage base = testing::Gradient(width, height);
  const vips::VImage noisy =
      (base + vips::VImage::gaussnoise(width, height) * 12)
          .cast(VIPS_FORMAT_UCHAR)
          .copy(vips::VImage::option()->set("interpretation",
                                            VIPS_INTERPRETATION_sRGB));
  return testing::Encoded(noisy, suffix);
}

// Where the coded data of the (last) scan starts.
std::size_t ScanData(const std::string& jpeg) {
  const std::size_t sos = jpeg.rfind("\xff\xda");
  const std::size_t length = (static_cast<std::uint8_t>(jpeg[sos + 2]) << 8) |
                             static_cast<std::uint8_t>(jpeg[sos + 3]);
  return sos + 2 + length;
}

struct Damage {
  const char* what;
  std::string (*apply)(std::string jpeg);
};

std::string FlipInData(std::string j, double at) {
  const std::size_t start = ScanData(j);
  const std::size_t i =
      start + static_cast<std::size_t>((j.size() - 2 - start) * at);
  j[i] = static_cast<char>(j[i] ^ 0x5a);
  return j;
}

const Damage kDamages[] = {
    {"a byte flipped early in the data",
     [](std::string j) { return FlipInData(j, 0.05); }},
    {"a byte flipped half-way",
     [](std::string j) { return FlipInData(j, 0.5); }},
    {"a byte flipped near the end",
     [](std::string j) { return FlipInData(j, 0.97); }},
    {"a run of zeros in the data",
     [](std::string j) {
       const std::size_t i = (ScanData(j) + j.size()) / 2;
       j.replace(i, 64, std::string(64, '\0'));
       return j;
     }},
    {"a run of ones in the data",
     [](std::string j) {
       const std::size_t i = (ScanData(j) + j.size()) / 2;
       j.replace(i, 64, std::string(64, '\xff'));
       return j;
     }},
    {"an end marker half-way",
     [](std::string j) {
       const std::size_t i = (ScanData(j) + j.size()) / 2;
       j.replace(i, 2, "\xff\xd9");
       return j;
     }},
    {"a restart marker half-way",
     [](std::string j) {
       const std::size_t i = (ScanData(j) + j.size()) / 2;
       j.replace(i, 2, "\xff\xd3");
       return j;
     }},
    {"a frame header's marker half-way",
     [](std::string j) {
       const std::size_t i = (ScanData(j) + j.size()) / 2;
       j.replace(i, 2, "\xff\xc0");
       return j;
     }},
    {"a scan header's marker half-way",
     [](std::string j) {
       const std::size_t i = (ScanData(j) + j.size()) / 2;
       j.replace(i, 2, "\xff\xda");
       return j;
     }},
    {"cut half-way, the end marker put back",
     [](std::string j) {
       const std::size_t i = (ScanData(j) + j.size()) / 2;
       return j.substr(0, i) + "\xff\xd9";
     }},
    {"the data cut to a tenth, the end marker put back",
     [](std::string j) {
       const std::size_t start = ScanData(j);
       return j.substr(0, start + (j.size() - start) / 10) + "\xff\xd9";
     }},
    {"a Huffman table damaged",
     [](std::string j) {
       const std::size_t dht = j.find("\xff\xc4");
       for (std::size_t i = dht + 5; i < dht + 21; ++i) {
         j[i] = '\x10';
       }
       return j;
     }},
    {"a quantisation table zeroed",
     [](std::string j) {
       const std::size_t dqt = j.find("\xff\xdb");
       j.replace(dqt + 5, 64, std::string(64, '\0'));
       return j;
     }},
};

class BrokenJpegAgreementTest : public ::testing::TestWithParam<const char*> {
 protected:
  TempDir temp_;
};

TEST_P(BrokenJpegAgreementTest, TheThumbnailAndTheViewRefuseTheSameFiles) {
  const std::string whole = NoisyJpeg(GetParam());
  const auto images = MakeVipsImageOperations((temp_ / "cache").string());
  int refused = 0;
  for (const Damage& damage : kDamages) {
    SCOPED_TRACE(damage.what);
    const std::string photo = temp_.WriteFile("photo.jpg", damage.apply(whole));
    const bool thumbnail = images->GenerateThumbnailExt(
                               photo, (temp_ / "t.jpg").string(), 85, 70) == 1;
    refused += thumbnail ? 0 : 1;
    // A thumbnail the cache would let stand in for the photo is one whose
    // photo the view loads.
    while (!ChangedBeforeNow(IdentityOfPath(photo).value())) {
      std::this_thread::yield();
    }
    std::string entry;
    images->GenerateThumbnailAndBuffer(photo, entry, 85, 70);
    EXPECT_EQ(images->CachedStandIn(photo).has_value(), thumbnail);
    // The view at an eighth, a quarter, a half and the full size.
    for (const int view_width : {80, 160, 320, 640}) {
      const auto display = MakeVipsDisplayControl();
      display->SetViewSize(view_width, 10000);
      EXPECT_EQ(display->LoadPhoto(photo), thumbnail)
          << "view " << view_width << " wide";
    }
  }
  // The damages are real: some of them are refused.
  EXPECT_GT(refused, 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds,
                         BrokenJpegAgreementTest,
                         ::testing::Values(".jpg", ".jpg[interlace]"));

}  // namespace
}  // namespace qbpd
