#ifndef QBPD_TESTS_SUPPORT_FAKE_CAMERA_DEVICES_H_
#define QBPD_TESTS_SUPPORT_FAKE_CAMERA_DEVICES_H_

#include "platform/camera_devices.h"
#include "platform/file_transfer.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
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

// The real verified transfer, with steps that fail on purpose: a file whose
// name is in `fail` gets that status when placed or stored (and nothing is
// made), no file can be begun while `fail_begin` is set, a folder flush fails
// while `fail_flush` is set, or when this transfer placed a file named in
// `fail_flush_after` since its last flush; a source whose name is in `keep`
// can't be removed. Every call is recorded in `calls` of the transfer that took
// it, and in order in `log` of the first one (the transfers of other threads
// too; Note adds other steps there).
class FakeFileTransfer final : public FileTransfer {
 public:
  FakeFileTransfer() : real_(MakeVerifiedFileTransfer()) {}
  TransferResult Place(const std::string& source,
                       const std::string& target,
                       bool replace) override {
    Note("place " + source + " -> " + target);
    return Faulted(source,
                   [&] { return real_->Place(source, target, replace); });
  }
  TransferResult Store(const std::string& content,
                       const std::string& target) override {
    Note("store " + target);
    return Faulted(target, [&] { return real_->Store(content, target); });
  }
  std::shared_ptr<PieceWriter> Begin(const std::string& target,
                                     TransferResult& result) override {
    Note("begin " + target);
    if (fail_begin) {
      result.status = TransferStatus::kTargetFailed;
      result.error = "injected failure to begin " + NameOf(target);
      return nullptr;
    }
    return real_->Begin(target, result);
  }
  // The items whose names are in `fail` get their injected failure; the
  // others go to the real transfer as one batch.
  std::vector<TransferResult> PlaceAll(
      std::vector<TransferItem>& items) override {
    ++batches;
    std::vector<TransferResult> results(items.size());
    std::vector<TransferItem> real_items;
    std::vector<std::size_t> real_index;
    for (std::size_t i = 0; i < items.size(); ++i) {
      const std::string& key =
          items[i].source.empty() ? items[i].target : items[i].source;
      Note(items[i].source.empty()
               ? "store " + items[i].target
               : "place " + items[i].source + " -> " + items[i].target);
      bool passes = false;
      results[i] = Faulted(key, [&] {
        passes = true;
        return TransferResult{};
      });
      if (passes) {
        real_items.push_back(std::move(items[i]));
        real_index.push_back(i);
      }
    }
    std::vector<TransferResult> done = real_->PlaceAll(real_items);
    for (std::size_t i = 0; i < done.size(); ++i) {
      results[real_index[i]] = std::move(done[i]);
    }
    return results;
  }
  bool FlushFolder(const std::string& folder, std::string& error) override {
    Note("flush " + folder);
    const bool fails = fail_flush || flush_fails_;
    flush_fails_ = false;
    if (fails) {
      error = "injected failure to flush " + folder;
      return false;
    }
    return real_->FlushFolder(folder, error);
  }
  bool RemoveSource(const std::string& source, std::string& error) override {
    Note("remove " + source);
    if (keep.count(NameOf(source)) > 0) {
      error = "injected failure to delete " + NameOf(source);
      return false;
    }
    return real_->RemoveSource(source, error);
  }

  // With `on_threads`, the transfers of other threads fail as this one
  // does (each records its own calls).
  std::unique_ptr<FileTransfer> Another() override {
    if (!on_threads) {
      return nullptr;
    }
    auto other = std::make_unique<FakeFileTransfer>();
    other->fail = fail;
    other->fail_begin = fail_begin;
    other->fail_flush = fail_flush;
    other->fail_flush_after = fail_flush_after;
    other->keep = keep;
    other->first_ = first_ != nullptr ? first_ : this;
    return other;
  }

  // Records a step in `calls` and in the first transfer's `log`.
  void Note(const std::string& call) {
    calls.push_back(call);
    FakeFileTransfer& first = first_ != nullptr ? *first_ : *this;
    std::lock_guard<std::mutex> lock(first.log_mutex_);
    first.log.push_back(call);
  }

  // File name (not path) to the status its transfer fails with.
  std::map<std::string, TransferStatus> fail;
  bool fail_begin = false;
  bool fail_flush = false;
  std::set<std::string> fail_flush_after;
  // Batches placed through PlaceAll.
  int batches = 0;
  std::set<std::string> keep;
  bool on_threads = false;
  std::vector<std::string> calls;
  std::vector<std::string> log;

 private:
  static std::string NameOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
  }

  TransferResult Faulted(const std::string& path,
                         const std::function<TransferResult()>& real) {
    flush_fails_ = flush_fails_ || fail_flush_after.count(NameOf(path)) > 0;
    auto it = fail.find(NameOf(path));
    if (it == fail.end()) {
      return real();
    }
    TransferResult result;
    result.status = it->second;
    result.error = "injected failure of " + NameOf(path);
    return result;
  }

  std::unique_ptr<FileTransfer> real_;
  FakeFileTransfer* first_ = nullptr;
  std::mutex log_mutex_;
  bool flush_fails_ = false;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_CAMERA_DEVICES_H_
