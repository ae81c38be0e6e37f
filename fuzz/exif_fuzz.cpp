// libFuzzer target: the EXIF reading the project owns, over any bytes as a
// photo file: the JPEG segment walk and preview check of a thumbnail made
// from the camera's preview, and the camera facts the photo information
// shows. The bytes are a real file (an anonymous one in memory), read by
// the same calls the program makes. Neither may read out of bounds or hang,
// and what they give must make sense.

#include "platform/camera_facts.h"
#include "platform/exif_preview_thumbnail.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

void Check(bool holds) {
  if (!holds) {
    std::abort();
  }
}

// One file for the whole run, its contents replaced for each input.
int PhotoFile() {
  static const int fd = memfd_create("photo.jpg", 0);
  Check(fd >= 0);
  return fd;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const int fd = PhotoFile();
  Check(::ftruncate(fd, 0) == 0);
  Check(size == 0 || ::pwrite(fd, data, size, 0) == static_cast<ssize_t>(size));

  const qbpd::PreviewThumbnail thumbnail =
      qbpd::ThumbnailFromExifPreview(fd, 160, 80);
  const bool taken = thumbnail.verdict == qbpd::PreviewVerdict::kTaken;
  Check(taken == !thumbnail.jpeg.empty());
  if (taken) {
    Check(thumbnail.jpeg.size() > 4 && thumbnail.jpeg[0] == 0xFF &&
          thumbnail.jpeg[1] == 0xD8);
  }

  const qbpd::CameraFacts facts =
      qbpd::ReadCameraFacts("/proc/self/fd/" + std::to_string(fd));
  for (const std::string* text :
       {&facts.make, &facts.model, &facts.date_taken}) {
    Check(text->find('\0') == std::string::npos);
    Check(text->empty() || (text->front() != ' ' && text->back() != ' '));
  }
  Check((facts.exposure_numerator == 0) == (facts.exposure_denominator == 0));
  Check(std::isfinite(facts.focal_length_mm) && facts.focal_length_mm >= 0);
  return 0;
}
