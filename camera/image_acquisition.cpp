#include "camera/image_acquisition.h"

#include "camera/camera_lines.h"
#include "platform/atomic_file.h"
#include "platform/drive_tokens.h"
#include "platform/file_transfer.h"
#include "platform/places.h"

#include <filesystem>
#include <vector>

namespace qbpd {
namespace {

constexpr int kTakePollMs = 50;
constexpr int kFieldCount = 3;

bool WriteAnswer(const ImageAcquisitionRun& run, const std::string& line) {
  const std::string path = run.data_folder + "/" + kImgAcqFile;
  return WriteFileAtomically(path, line.data(), line.size());
}

std::vector<std::string> SplitFields(const std::string& argument) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (;;) {
    const std::size_t star = argument.find('*', start);
    fields.push_back(argument.substr(
        start, star == std::string::npos ? std::string::npos : star - start));
    if (star == std::string::npos) {
      return fields;
    }
    start = star + 1;
  }
}

}  // namespace

ImageAcquisitionResult RunImageAcquisition(const ImageAcquisitionRun& run) {
  ImageAcquisitionResult result;
  auto finish = [&](const char* code, const std::string& folder = "") {
    result.code = code;
    (void)WriteAnswer(run, MakeImgAcqLine(code, folder));
    return result;
  };
  const std::vector<std::string> fields = SplitFields(run.argument);
  if (fields.size() != kFieldCount || fields[0].empty() || fields[1].empty()) {
    result.error = "The command line is not device*folder*name.";
    return finish(kTransferFailed);
  }
  std::string device = fields[0];
  std::string destination = fields[1];
  const std::string& base = fields[2];
  while (destination.size() > 1 && destination.back() == '/') {
    destination.pop_back();
  }
  if (IsDriveText(device)) {
    const std::string folder =
        DriveTokenFolder(run.data_folder + "/" + kDriveTableName, device);
    if (folder.empty()) {
      result.error = "No medium is known as " + device + ".";
      return finish(kTransferFailed);
    }
    device = "disk:" + folder;
  }
  std::unique_ptr<CameraConnection> camera = run.open(device, result.error);
  if (!camera) {
    return finish(kTransferFailed);
  }
  std::vector<CameraFile> files;
  if (!camera->ListFiles(files, result.error)) {
    return finish(kTransferFailed);
  }
  if (files.empty()) {
    return finish(kTransferNothing);
  }
  if (!WriteAnswer(run, MakeImgAcqLine(kTransferBegun))) {
    result.error = "Cannot write the answer file in " + run.data_folder;
  }
  bool failed = false;
  bool stopped = false;
  if (!MakeFolders(destination)) {
    failed = true;
    result.error = "Cannot make the folder " + destination;
  }
  int number = 1;
  std::string content;
  for (std::size_t i = 0; !failed && i < files.size(); ++i) {
    if (run.stop_requested && run.stop_requested()) {
      stopped = true;
      break;
    }
    const CameraFile& file = files[i];
    if (!camera->Download(file, content, result.error)) {
      failed = true;
      break;
    }
    TransferResult saved;
    do {
      const std::string target =
          destination + "/" + PictureName(base, number++, file.name);
      saved = run.transfer->Save(content, target);
    } while (saved.status == TransferStatus::kTargetExists);
    if (!saved.ok()) {
      failed = true;
      result.error = saved.error;
      break;
    }
    ++result.copied;
    if (run.delete_from_camera) {
      std::string ignored;
      // A photo the camera keeps is no loss; the copy is on disk.
      if (camera->Delete(file, ignored)) {
        ++result.deleted;
      }
    }
    if (run.progress) {
      run.progress(static_cast<int>(i) + 1, static_cast<int>(files.size()));
    }
  }
  // The program reads "310" after its first wait; the last answer must not
  // replace it before then, or the program would miss the transfer's start.
  const std::string answer = run.data_folder + "/" + kImgAcqFile;
  for (int waited = 0; waited < run.take_wait_ms && run.sleep;
       waited += kTakePollMs) {
    std::error_code ignored;
    if (!std::filesystem::exists(answer, ignored)) {
      break;
    }
    run.sleep(kTakePollMs);
  }
  if (failed) {
    return finish(kTransferFailed);
  }
  if (stopped) {
    return finish(kTransferStopped);
  }
  return finish(kTransferDone, destination + "|");
}

}  // namespace qbpd
