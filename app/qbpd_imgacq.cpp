// qbpd-imgacq: the camera transfer helper. Started by the program with one
// argument, device*destination*base name; answers in ImgAcq.dat in the
// program's data folder. SIGTERM or SIGINT stops it after the photo in hand
// ("420").
#include "camera/image_acquisition.h"
#include "core/settings.h"
#include "platform/file_transfer.h"
#include "platform/places.h"
#include "platform/settings_store.h"

#include <atomic>
#include <cctype>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <thread>

namespace {

std::atomic<bool> stop_requested{false};

void RequestStop(int) {
  stop_requested = true;
}

}  // namespace

int main(int argc, char** argv) {
  std::string argument;
  for (int i = 1; i < argc; ++i) {
    argument += (i > 1 ? " " : "") + std::string(argv[i]);
  }
  std::signal(SIGTERM, RequestStop);
  std::signal(SIGINT, RequestStop);
  const qbpd::Places places = qbpd::FindPlaces();
  qbpd::MakeFolders(places.data, 0700);
  auto settings = qbpd::MakeSqliteSettingsStore(places.config + "/settings.db");
  std::string delete_status = qbpd::DropTrailingNul(
      settings->Read(qbpd::kCameraTransferKey, "DeleteImagesStatus"));
  for (char& c : delete_status) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  auto transfer = qbpd::MakeVerifiedFileTransfer();

  qbpd::ImageAcquisitionRun run;
  run.argument = argument;
  run.data_folder = places.data;
  run.delete_from_camera = delete_status == "TRUE";
  run.open = [](const std::string& device, std::string& error) {
    return qbpd::OpenCamera(device, error);
  };
  run.transfer = transfer.get();
  run.stop_requested = [] { return stop_requested.load(); };
  run.sleep = [](int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
  };
  const qbpd::ImageAcquisitionResult result = qbpd::RunImageAcquisition(run);
  std::fprintf(stderr, "qbpd-imgacq: %s, %d photos copied, %d deleted%s%s\n",
               result.code.c_str(), result.copied, result.deleted,
               result.error.empty() ? "" : ": ", result.error.c_str());
  return result.code == "300" || result.code == "410" ? 0 : 1;
}
