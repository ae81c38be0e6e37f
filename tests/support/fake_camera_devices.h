#ifndef QBPD_TESTS_SUPPORT_FAKE_CAMERA_DEVICES_H_
#define QBPD_TESTS_SUPPORT_FAKE_CAMERA_DEVICES_H_

#include "platform/camera_devices.h"
#include "platform/file_transfer.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace qbpd::testing {

// Devices in memory: the device list's answer, drive tokens mapped to
// folders, and a helper that starts (or fails to) and runs until told.
class FakeCameraDevices final : public CameraDevices {
 public:
  std::string GetAvailableDeviceList() override {
    ++list_calls;
    return device_list;
  }
  std::string DriveFolder(const std::string& token) override {
    auto it = drives.find(token);
    return it == drives.end() ? "" : it->second;
  }
  bool StartImageAcq(const std::string& argument) override {
    started.push_back(argument);
    if (fail_start) {
      return false;
    }
    running = true;
    if (on_start) {
      on_start(argument);
    }
    return true;
  }
  bool HelperRunning() override {
    if (on_running_check) {
      on_running_check();
    }
    return running;
  }

  std::string device_list;
  std::map<std::string, std::string> drives;
  bool fail_start = false;
  // The helper "runs" until a test says it ended.
  bool running = false;
  std::function<void(const std::string&)> on_start;
  // The helper's own work, done a step at a time whenever the program looks
  // whether it still runs (the program's waits do so at every poll).
  std::function<void()> on_running_check;
  std::vector<std::string> started;
  int list_calls = 0;
};

// The real verified transfer, with files that fail on purpose: a source
// whose name is in `fail` gets that status (and nothing is made), and every
// call is recorded.
class FakeFileTransfer final : public FileTransfer {
 public:
  FakeFileTransfer() : real_(MakeVerifiedFileTransfer()) {}
  TransferResult Copy(const std::string& source,
                      const std::string& target) override {
    calls.push_back("copy " + source + " -> " + target);
    return Faulted(source, [&] { return real_->Copy(source, target); });
  }
  TransferResult Move(const std::string& source,
                      const std::string& target) override {
    calls.push_back("move " + source + " -> " + target);
    return Faulted(source, [&] { return real_->Move(source, target); });
  }
  TransferResult Save(const std::string& content,
                      const std::string& target) override {
    calls.push_back("save " + target);
    return Faulted(target, [&] { return real_->Save(content, target); });
  }

  // With `on_threads`, the transfers of other threads fail as this one
  // does (each records its own calls).
  std::unique_ptr<FileTransfer> Another() override {
    if (!on_threads) {
      return nullptr;
    }
    auto other = std::make_unique<FakeFileTransfer>();
    other->fail = fail;
    return other;
  }

  // File name (not path) to the status its transfer fails with.
  std::map<std::string, TransferStatus> fail;
  bool on_threads = false;
  std::vector<std::string> calls;

 private:
  TransferResult Faulted(const std::string& path,
                         const std::function<TransferResult()>& real) {
    const std::size_t slash = path.rfind('/');
    const std::string name =
        slash == std::string::npos ? path : path.substr(slash + 1);
    auto it = fail.find(name);
    if (it == fail.end()) {
      return real();
    }
    TransferResult result;
    result.status = it->second;
    result.error = "injected failure of " + name;
    return result;
  }

  std::unique_ptr<FileTransfer> real_;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_CAMERA_DEVICES_H_
