#include "editor/file_rotation.h"

#include "core/application.h"
#include "core/quil_mod.h"
#include "editor/fixed_names.h"
#include "platform/access_check.h"
#include "platform/image_operations.h"

namespace qbpd {
namespace {

constexpr int kQuarterLeft = -90;
constexpr int kQuarterRight = 90;

bool IsJpegExtension(const std::string& ext) {
  return ext == "JPG" || ext == "JPEG" || ext == "JPE";
}

}  // namespace

void PrepareFileRotation(Application& app,
                         const std::string& path,
                         int direction) {
  app.images().PrepareImageRotation(
      path, direction == kRotateLeft ? kQuarterLeft : kQuarterRight);
}

bool RotateOneFile(Application& app,
                   int index,
                   const std::string& path,
                   int direction,
                   RotationNotice notice,
                   const RotationHooks& hooks) {
  Session& s = app.session();
  const std::string ext = UpperExtension(path);
  std::string folder = s.gsSelectedFolder;
  if (!folder.empty() && folder.back() != '/') {
    folder += '/';
  }
  std::string destination = path;
  bool new_file = false;
  if (!IsJpegExtension(ext) || IsReadOnlyFile(path)) {
    destination = folder + GetFixedFileName(path, folder) + ".jpg";
    new_file = true;
    if (IsJpegExtension(ext)) {
      const std::string will = notice == RotationNotice::kCurrentPhoto
                                   ? "The file will be saved with '"
                                   : "The file will save with '";
      app.host().MsgBox("The file '" + FileNamePart(path) +
                            "' is a read-only file. " + will +
                            FileNamePart(destination) + "'.",
                        kMbInformation, s.gsAppTitle);
    }
  }
  const int angle = direction == kRotateLeft ? kQuarterLeft : kQuarterRight;
  if (app.images().ImageRotation(path, destination, angle) != 1) {
    return false;
  }
  if (hooks.generate_thumbnail && !hooks.generate_thumbnail(destination)) {
    return true;
  }
  if (!new_file) {
    if (hooks.same_file_turned) {
      hooks.same_file_turned(index, destination);
    }
  } else if (hooks.new_file) {
    hooks.new_file(index, destination);
  }
  return true;
}

}  // namespace qbpd
