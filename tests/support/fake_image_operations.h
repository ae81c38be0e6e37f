#ifndef QBPD_TESTS_SUPPORT_FAKE_IMAGE_OPERATIONS_H_
#define QBPD_TESTS_SUPPORT_FAKE_IMAGE_OPERATIONS_H_

#include "platform/image_operations.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace qbpd::testing {

// What a test sees of and tells the fake image library's rotation.
struct FakeRotationState {
  // "source -> destination angle", in order.
  std::vector<std::string> rotations;
  // Every rotation fails.
  bool fail_all = false;
  // Rotations of these sources fail.
  std::set<std::string> failing_sources;
  // Runs before each rotation, with its source (a test can press Cancel
  // there, or delete the file).
  std::function<void(const std::string& source)> before;
};

// The image library for tests: thumbnails and measures are the real
// library's, the batch rotation is imitated. A rotation reads the source's
// size and writes a test photo of the turned size at the destination, to a
// temporary file renamed over it, so that a file is turned whole or not at
// all; a failing switch, or a source that can't be read, writes nothing and
// returns 0.
class FakeImageOperations : public ImageOperations {
 public:
  FakeImageOperations(std::unique_ptr<ImageOperations> real,
                      std::shared_ptr<FakeRotationState> state);

  int GenerateThumbnailExt(const std::string& source,
                           const std::string& thumbnail,
                           int size,
                           int quality) override;
  int GenerateThumbnailAndBuffer(const std::string& source,
                                 std::string& buffer,
                                 int size,
                                 int quality) override;
  int GetImageWidth(const std::string& path) override;
  int GetImageHeight(const std::string& path) override;
  int GetExifOrientation(const std::string& path) override;
  ExifPreview CompareExifPreview(const std::string& path) override;
  int ImageRotation(const std::string& source,
                    const std::string& destination,
                    int angle) override;
  int DeleteThumbnailFile(const std::string& source) override;
  int DeleteThumbnailFolder(const std::string& folder) override;

 private:
  std::unique_ptr<ImageOperations> real_;
  std::shared_ptr<FakeRotationState> state_;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_IMAGE_OPERATIONS_H_
