#include "platform/camera_facts.h"

#include "tests/support/camera_facts_photo.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

using qbpd::testing::TempDir;
using qbpd::testing::TestCameraFacts;
using qbpd::testing::WriteCameraFactsPhoto;

TEST(CameraFactsTest, ReadsWhatTheCameraWrote) {
  TempDir dir;
  TestCameraFacts written;
  written.make = "Quillcam";
  written.model = "Quillcam QX-24";
  written.date_taken = "2024:05:17 14:03:09";
  written.exposure_numerator = 1;
  written.exposure_denominator = 250;
  written.focal_numerator = 355;
  written.focal_denominator = 10;
  written.iso = 400;
  const std::string path = (dir / "camera.jpg").string();
  ASSERT_TRUE(WriteCameraFactsPhoto(path, 64, 48, written));
  const CameraFacts facts = ReadCameraFacts(path);
  EXPECT_EQ(facts.make, "Quillcam");
  EXPECT_EQ(facts.model, "Quillcam QX-24");
  EXPECT_EQ(facts.date_taken, "2024:05:17 14:03:09");
  EXPECT_EQ(facts.exposure_numerator, 1u);
  EXPECT_EQ(facts.exposure_denominator, 250u);
  EXPECT_DOUBLE_EQ(facts.focal_length_mm, 35.5);
  EXPECT_EQ(facts.iso, 400);
  EXPECT_FALSE(facts.Empty());
}

TEST(CameraFactsTest, NothingMadeUpForPhotosWithoutThem) {
  TempDir dir;
  // EXIF data with an orientation only: no date of today appears.
  TestCameraFacts orientation_only;
  orientation_only.orientation = 6;
  const std::string path = (dir / "plain.jpg").string();
  ASSERT_TRUE(WriteCameraFactsPhoto(path, 32, 24, orientation_only));
  EXPECT_TRUE(ReadCameraFacts(path).Empty());
  // No EXIF data at all, no image, no file.
  ASSERT_TRUE(WriteCameraFactsPhoto((dir / "none.jpg").string(), 32, 24, {}));
  dir.WriteFile("text.jpg", "hello");
  for (const char* name : {"none.jpg", "text.jpg", "missing.jpg"}) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(ReadCameraFacts((dir / name).string()).Empty());
  }
}

}  // namespace
}  // namespace qbpd
