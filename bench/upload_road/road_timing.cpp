#include "bench/upload_road/road_timing.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace qbpd {

namespace fs = std::filesystem;

HttpResponse LoggedTransport::Perform(const HttpRequest& request,
                                      const Pump& pump) {
  if (request.file) {
    log_.file = request.file->path;
    log_.started = Clock::now();
    if (log_.transfers.empty()) {
      log_.first_started = log_.started;
    }
  }
  HttpResponse response = inner_->Perform(request, pump);
  if (request.file) {
    log_.ended = Clock::now();
    log_.transfers.push_back(
        {request.file->path, log_.host ? log_.host->TakeWaited() : 0,
         std::chrono::duration<double>(log_.ended - log_.started).count()});
    if (response.failure == HttpFailure::kNone) {
      std::error_code error;
      const auto size = fs::file_size(request.file->path, error);
      log_.bytes_sent += error ? 0 : static_cast<double>(size);
    }
    log_.file.clear();
  }
  return response;
}

void ResetPeakMemory() {
  std::ofstream("/proc/self/clear_refs") << "5";
}
double PeakMemoryMb() {
  std::ifstream in("/proc/self/status");
  std::string line;
  while (std::getline(in, line)) {
    if (line.rfind("VmHWM:", 0) == 0) {
      return std::atof(line.c_str() + 6) / 1024.0;
    }
  }
  return 0;
}

}  // namespace qbpd
