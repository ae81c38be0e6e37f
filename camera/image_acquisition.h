#ifndef QBPD_CAMERA_IMAGE_ACQUISITION_H_
#define QBPD_CAMERA_IMAGE_ACQUISITION_H_

#include "platform/camera_connection.h"

#include <functional>
#include <memory>
#include <string>

namespace qbpd {

class FileTransfer;

// One run of the camera transfer helper (qbpd-imgacq).
struct ImageAcquisitionRun {
  // The command line: device, destination folder and picture base name,
  // joined by "*".
  std::string argument;
  // The program's data folder: ImgAcq.dat and the drive tokens.
  std::string data_folder;
  // DeleteImagesStatus said "True": each photo leaves the camera once its
  // copy is verified.
  bool delete_from_camera = false;
  std::function<std::unique_ptr<CameraConnection>(const std::string& device,
                                                  std::string& error)>
      open;
  FileTransfer* transfer = nullptr;
  // The user asked the helper to stop (a signal); checked between photos.
  std::function<bool()> stop_requested;
  // Waits `ms` milliseconds (the wait for the program to take "310").
  std::function<void(int ms)> sleep;
  // How long the last answer waits for the program to take "310" before it
  // replaces it anyway.
  int take_wait_ms = 120000;
  // Each photo done (1-based count, total), for a progress line.
  std::function<void(int, int)> progress;
};

// What a run did.
struct ImageAcquisitionResult {
  // The last code written to ImgAcq.dat: "300", "400", "410" or "420".
  std::string code;
  int copied = 0;
  int deleted = 0;
  // Why it failed, for the helper's error output; "" otherwise.
  std::string error;
};

// Runs the transfer: "400" when the command line, the camera or its listing
// fails; "410" when the camera has no file; otherwise "310", then every file
// saved (verified) into the destination (made when missing) as the base name,
// a blank and its number, with the file's own extension, the next free
// number when a name is taken; each deleted from the camera only after its
// copy is verified and the folder that names it flushed (once for a batch of
// photos), and only when asked; a folder that can't be flushed is a failure
// and the camera keeps its photos. The last answer ("300" with the
// folder, "400" when a photo could not be fetched or saved, "420" when
// stopped) waits until the program has taken "310". Every write of
// ImgAcq.dat is atomic.
ImageAcquisitionResult RunImageAcquisition(const ImageAcquisitionRun& run);

}  // namespace qbpd

#endif  // QBPD_CAMERA_IMAGE_ACQUISITION_H_
