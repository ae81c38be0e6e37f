#include "camera/image_acquisition.h"

#include "camera/camera_lines.h"
#include "platform/atomic_file.h"
#include "platform/drive_tokens.h"
#include "platform/file_transfer.h"
#include "platform/places.h"
#include "platform/transfer_ahead.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

namespace qbpd {
namespace {

constexpr int kTakePollMs = 50;
// Photos saved before their folder is flushed once for all of them; only
// then may they leave the camera.
constexpr std::size_t kFlushBatch = 32;
// Photos written by one save before any of them is flushed: so many, or
// fewer that reach so many bytes.
constexpr std::size_t kBatch = 16;
constexpr std::size_t kBatchBytes = 64 << 20;
// Photos whose saves may wait while the next photo comes from the camera,
// and the most bytes they may hold (written, not yet flushed).
constexpr std::size_t kSavesAhead = 2 * kBatch;
constexpr std::size_t kAheadBytes = 160 << 20;
// Threads saving: while one batch is flushed and read back, the next one is
// written.
constexpr std::size_t kThreads = 2;
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
  // Each photo is written as the camera hands it over; the saves (flush,
  // read back, name) run on threads of their own when the transfer can
  // make them, while the next photo comes from the camera. The camera
  // itself is used from this thread only.
  std::unique_ptr<TransferAhead> ahead;
  std::vector<std::unique_ptr<FileTransfer>> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    if (std::unique_ptr<FileTransfer> own = run.transfer->Another()) {
      threads.push_back(std::move(own));
    }
  }
  if (threads.size() == kThreads) {
    ahead = std::make_unique<TransferAhead>(std::move(threads));
  }
  std::size_t added = 0;
  std::size_t taken = 0;
  // A save that failed ends the run; the saves under way when a photo could
  // not be fetched are still taken.
  bool save_failed = false;
  // The bytes of each photo handed to a save, and of those not taken yet.
  std::vector<std::size_t> sizes;
  std::size_t ahead_bytes = 0;
  // Photos saved whose folder is not flushed yet.
  std::vector<std::size_t> unflushed;
  // Flushes the folder once for the photos saved since the last time, and
  // only then deletes them from the camera when asked.
  auto flush = [&] {
    if (unflushed.empty()) {
      return;
    }
    std::string error;
    if (!run.transfer->FlushFolder(destination, error)) {
      // The copies are there but not safely: the camera keeps them all.
      failed = save_failed = true;
      result.error = error;
      unflushed.clear();
      return;
    }
    for (std::size_t index : unflushed) {
      std::string ignored;
      // A photo the camera keeps is no loss; the copy is on disk.
      if (run.delete_from_camera && camera->Delete(files[index], ignored)) {
        ++result.deleted;
      }
    }
    unflushed.clear();
  };
  // Takes the next save's result: a name taken meanwhile gets the next
  // number; a saved photo may then be deleted from the camera.
  auto take = [&](const std::string& content_if_here) {
    const CameraFile& file = files[taken];
    // A save on a thread flushed the folder itself; one here is flushed below.
    bool flushed = ahead != nullptr;
    TransferResult saved =
        ahead ? *ahead->TakeNext()
              : run.transfer->Store(
                    content_if_here,
                    destination + "/" + PictureName(base, number++, file.name));
    while (saved.status == TransferStatus::kTargetExists) {
      flushed = false;
      if (ahead) {
        // The photo went with the job; it is fetched again.
        std::string again;
        if (!camera->Download(file, again, result.error)) {
          failed = save_failed = true;
          return;
        }
        saved = run.transfer->Store(
            again, destination + "/" + PictureName(base, number++, file.name));
      } else {
        saved = run.transfer->Store(
            content_if_here,
            destination + "/" + PictureName(base, number++, file.name));
      }
    }
    if (ahead) {
      ahead_bytes -= sizes[taken];
    }
    ++taken;
    if (!saved.ok()) {
      failed = save_failed = true;
      result.error = saved.error;
      return;
    }
    ++result.copied;
    std::string ignored;
    if (!flushed) {
      unflushed.push_back(taken - 1);
      if (unflushed.size() >= kFlushBatch) {
        flush();
      }
    } else if (run.delete_from_camera && camera->Delete(file, ignored)) {
      // A photo the camera keeps is no loss; the copy is on disk.
      ++result.deleted;
    }
    if (run.progress) {
      run.progress(static_cast<int>(taken), static_cast<int>(files.size()));
    }
  };
  // Photos fetched for the next save, and its start on a thread.
  std::vector<TransferItem> batch;
  std::size_t batch_bytes = 0;
  auto submit = [&] {
    if (batch.empty()) {
      return;
    }
    const std::size_t count = batch.size();
    ahead_bytes += batch_bytes;
    batch_bytes = 0;
    ahead->Add(
        [&destination, items = std::move(batch)](FileTransfer& t) mutable {
          // The folder is flushed here, once for the batch; a photo counts
          // as saved, and may leave the camera, only after it.
          std::vector<TransferResult> saved =
              PlaceAllAndFlush(t, items, destination);
          // A file that was not named leaves no temporary file behind.
          items.clear();
          return saved;
        },
        count);
    added += count;
    batch.clear();
  };
  for (std::size_t i = 0; !failed && i < files.size(); ++i) {
    if (run.stop_requested && run.stop_requested()) {
      stopped = true;
      break;
    }
    const CameraFile& file = files[i];
    if (!ahead) {
      std::string content;
      if (!camera->Download(file, content, result.error)) {
        failed = true;
        break;
      }
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
    TransferResult begun;
    std::shared_ptr<PieceWriter> writer = run.transfer->Begin(target, begun);
    if (!writer) {
      failed = true;
      result.error = begun.error;
      break;
    }
    std::size_t bytes = 0;
    std::string write_error;
    const bool fetched = camera->DownloadPieces(
        file,
        [&](const unsigned char* data, std::size_t size) {
          bytes += size;
          return writer->Append(data, size, write_error);
        },
        result.error);
    if (!fetched) {
      // The writer goes with its temporary file: no half photo is left. The
      // photos in hand are saved as after a photo that could not be fetched.
      if (!write_error.empty()) {
        result.error = write_error;
      }
      failed = true;
      break;
    }
    sizes.push_back(bytes);
    batch_bytes += bytes;
    TransferItem item;
    item.written = std::move(writer);
    item.target = std::move(target);
    // The camera keeps its photos unless asked to delete them: then each
    // copy is read back from the disk, otherwise as the system serves it.
    item.from_disk = run.delete_from_camera;
    batch.push_back(std::move(item));
    if (batch.size() == kBatch || batch_bytes >= kBatchBytes) {
      submit();
    }
    // Saves may wait while the next photo is fetched.
    while (!failed && taken < added &&
           (added - taken > kSavesAhead || ahead_bytes > kAheadBytes)) {
      take("");
    }
  }
  // The photos in hand are saved, also after a stop or a photo that could not
  // be fetched; not after a save failed.
  if (ahead && !save_failed) {
    submit();
  }
  while (ahead && !save_failed && taken < added) {
    take("");
  }
  flush();
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
