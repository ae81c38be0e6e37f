#include "tests/support/fake_image_operations.h"

#include <filesystem>

namespace qbpd::testing {

FakeImageOperations::FakeImageOperations(
    std::unique_ptr<ImageOperations> real,
    std::shared_ptr<FakeRotationState> state)
    : real_(std::move(real)), state_(std::move(state)) {}

int FakeImageOperations::GenerateThumbnailExt(const std::string& source,
                                              const std::string& thumbnail,
                                              int size,
                                              int quality) {
  return real_->GenerateThumbnailExt(source, thumbnail, size, quality);
}

int FakeImageOperations::GenerateThumbnailAndBuffer(const std::string& source,
                                                    std::string& buffer,
                                                    int size,
                                                    int quality) {
  return real_->GenerateThumbnailAndBuffer(source, buffer, size, quality);
}

int FakeImageOperations::GetImageWidth(const std::string& path) {
  return real_->GetImageWidth(path);
}

int FakeImageOperations::GetImageHeight(const std::string& path) {
  return real_->GetImageHeight(path);
}

int FakeImageOperations::GetExifOrientation(const std::string& path) {
  return real_->GetExifOrientation(path);
}

ExifPreview FakeImageOperations::CompareExifPreview(const std::string& path) {
  return real_->CompareExifPreview(path);
}

int FakeImageOperations::ImageRotation(const std::string& source,
                                       const std::string& destination,
                                       int angle) {
  if (state_->before) {
    state_->before(source);
  }
  state_->rotations.push_back(source + " -> " + destination + " " +
                              std::to_string(angle));
  if (state_->fail_all || state_->failing_sources.contains(source) ||
      (angle != 90 && angle != -90)) {
    return 0;
  }
  const int width = real_->GetImageWidth(source);
  const int height = real_->GetImageHeight(source);
  if (width <= 0 || height <= 0) {
    return 0;
  }
  const std::filesystem::path target(destination);
  const std::filesystem::path temporary =
      target.parent_path() / ("." + target.filename().string() + ".fake.jpg");
  if (!WriteTestPhoto(temporary.string(), height, width, /*seed=*/3)) {
    return 0;
  }
  std::error_code error;
  std::filesystem::rename(temporary, target, error);
  if (error) {
    std::filesystem::remove(temporary, error);
    return 0;
  }
  return 1;
}

int FakeImageOperations::DeleteThumbnailFile(const std::string& source) {
  return real_->DeleteThumbnailFile(source);
}

int FakeImageOperations::DeleteThumbnailFolder(const std::string& folder) {
  return real_->DeleteThumbnailFolder(folder);
}

}  // namespace qbpd::testing
