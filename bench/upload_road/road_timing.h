// What the road benchmark measures the program with: the scripted host
// with the window's events timed on the real clock, the libcurl transport
// noting its file transfers, and the peak resident memory.
#ifndef QBPD_BENCH_UPLOAD_ROAD_ROAD_TIMING_H_
#define QBPD_BENCH_UPLOAD_ROAD_ROAD_TIMING_H_

#include "platform/forms/scripted_host.h"
#include "platform/http_transport.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qbpd {

using Clock = std::chrono::steady_clock;

inline double Since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// The scripted host, with the window's events timed on the real clock: every
// pump (DoEvents, Sleep) and every idle step is a moment when a waiting event
// would run, and the longest gap between two of them is the longest wait an
// event could have had. Work on another core is waited for as the desktop
// waits for it, pumping, not as scripts do.
class TimedHost final : public ScriptedHost {
 public:
  void DoEvents() override {
    Mark();
    ScriptedHost::DoEvents();
  }
  void Sleep(int ms) override {
    Mark();
    ScriptedHost::Sleep(ms);
  }
  void WaitForWork(const std::function<bool()>& done) override {
    const auto start = Clock::now();
    Host::WaitForWork(done);
    waited_ += Clock::now() - start;
  }
  // The time spent waiting for work on the other core since the last call.
  double TakeWaited() {
    const double seconds = std::chrono::duration<double>(waited_).count();
    waited_ = {};
    return seconds;
  }
  void Mark() {
    const auto now = Clock::now();
    if (measuring_ && now - last_ > longest_) {
      longest_ = now - last_;
      longest_at_ = describe_ ? describe_() : "";
    }
    last_ = now;
  }
  // Says, when a gap is the longest so far, where the run is at its end.
  void DescribeMoments(std::function<std::string()> describe) {
    describe_ = std::move(describe);
  }
  const std::string& LongestAt() const { return longest_at_; }
  void Measure(bool on) {
    Mark();
    measuring_ = on;
    if (on) {
      longest_ = {};
    }
  }
  // Leaves out the time between a pause and its end (the user's own).
  void Pause(bool paused) {
    Mark();
    measuring_ = !paused;
  }
  double LongestMs() const {
    return std::chrono::duration<double, std::milli>(longest_).count();
  }

 private:
  bool measuring_ = false;
  Clock::time_point last_ = Clock::now();
  Clock::duration longest_{};
  Clock::duration waited_{};
  std::function<std::string()> describe_;
  std::string longest_at_;
};

// When the photo transfers of the run started and ended.
struct TransferLog {
  std::string file;  // the photo in transfer, "" between transfers
  Clock::time_point started;
  Clock::time_point ended;
  Clock::time_point first_started;  // the run's first file transfer
  double bytes_sent = 0;            // the files whose transfer was answered
  // Every transfer: the file, how long the engine waited for the work on
  // the other core before it, how long it took.
  struct Transfer {
    std::string file;
    double waited_s = 0;
    double seconds = 0;
  };
  std::vector<Transfer> transfers;
  TimedHost* host = nullptr;  // whose waits count
};

// The libcurl transport, optionally throttled, noting its file transfers.
class LoggedTransport final : public HttpTransport {
 public:
  LoggedTransport(HttpTransportOptions options, TransferLog& log)
      : inner_(MakeCurlTransport(options)), log_(log) {}
  HttpResponse Perform(const HttpRequest& request, const Pump& pump) override;
  void Cancel() override { inner_->Cancel(); }

 private:
  std::unique_ptr<HttpTransport> inner_;
  TransferLog& log_;
};

// The peak of the bench's resident memory since the last reset, in MB.
void ResetPeakMemory();
double PeakMemoryMb();

}  // namespace qbpd

#endif  // QBPD_BENCH_UPLOAD_ROAD_ROAD_TIMING_H_
