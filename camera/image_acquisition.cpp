#include "camera/image_acquisition.h"

#include "camera/camera_lines.h"
#include "platform/atomic_file.h"
#include "platform/drive_tokens.h"
#include "platform/file_transfer.h"
#include "platform/places.h"
#include "platform/transfer_ahead.h"

#include <filesystem>
#include <memory>
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
  // The saves (flush, read back) run on a thread of their own when the
  // transfer can make one, while the next photo comes from the camera; the
  // camera itself is used from this thread only.
  std::unique_ptr<TransferAhead> ahead;
  if (std::unique_ptr<FileTransfer> own = run.transfer->Another()) {
    std::vector<std::unique_ptr<FileTransfer>> threads;
    threads.push_back(std::move(own));
    ahead = std::make_unique<TransferAhead>(std::move(threads));
  }
  std::size_t added = 0;
  std::size_t taken = 0;
  // A save that failed ends the run; the saves under way when a photo could
  // not be fetched are still taken.
  bool save_failed = false;
  // Takes the next save's result: a name taken meanwhile gets the next
  // number; a saved photo may then be deleted from the camera.
  auto take = [&](const std::string& content_if_here) {
    const CameraFile& file = files[taken];
    TransferResult saved =
        ahead ? *ahead->TakeNext()
              : run.transfer->Save(
                    content_if_here,
                    destination + "/" + PictureName(base, number++, file.name));
    while (saved.status == TransferStatus::kTargetExists) {
      if (ahead) {
        // The content went with the job; the file is fetched again.
        std::string again;
        if (!camera->Download(file, again, result.error)) {
          failed = save_failed = true;
          return;
        }
        saved = run.transfer->Save(
            again, destination + "/" + PictureName(base, number++, file.name));
      } else {
        saved = run.transfer->Save(
            content_if_here,
            destination + "/" + PictureName(base, number++, file.name));
      }
    }
    ++taken;
    if (!saved.ok()) {
      failed = save_failed = true;
      result.error = saved.error;
      return;
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
      run.progress(static_cast<int>(taken), static_cast<int>(files.size()));
    }
  };
  for (std::size_t i = 0; !failed && i < files.size(); ++i) {
    if (run.stop_requested && run.stop_requested()) {
      stopped = true;
      break;
    }
    const CameraFile& file = files[i];
    std::string content;
    if (!camera->Download(file, content, result.error)) {
      failed = true;
      break;
    }
    if (!ahead) {
      take(content);
      continue;
    }
    // The name is given now, in the photos' order; a name taken on the disk
    // is passed over as the save would pass over it.
    std::string target;
    std::error_code ignored;
    do {
      target = destination + "/" + PictureName(base, number++, file.name);
    } while (std::filesystem::exists(target, ignored));
    ahead->Add([content = std::move(content), target](FileTransfer& t) {
      return t.Save(content, target);
    });
    ++added;
    // One save may wait while the next photo is fetched.
    while (!failed && added - taken > 1) {
      take("");
    }
  }
  while (ahead && !save_failed && taken < added) {
    take("");
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
