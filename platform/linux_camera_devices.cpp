#include "platform/camera_devices.h"
#include "platform/drive_tokens.h"
#include "platform/mount_table.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace qbpd {
namespace {

class LinuxCameraDevices final : public CameraDevices {
 public:
  LinuxCameraDevices(std::string helper, std::string data_folder)
      : helper_(std::move(helper)), data_folder_(std::move(data_folder)) {}
  ~LinuxCameraDevices() override { (void)HelperRunning(); }

  std::string GetAvailableDeviceList() override {
    std::string list;
    for (const DetectedCamera& camera : DetectCameras()) {
      list += CameraDeviceText(camera) + "|";
    }
    std::vector<DriveToken> tokens;
    (void)AssignDriveTokens(Table(), RemovableMediaFolders(ReadMountTable()),
                            tokens);
    for (const DriveToken& token : tokens) {
      list += token.token + "|";
    }
    return list;
  }

  std::string DriveFolder(const std::string& token) override {
    return DriveTokenFolder(Table(), token);
  }

  bool StartImageAcq(const std::string& argument) override {
    (void)HelperRunning();
    std::string program = helper_;
    std::string arg = argument;
    char* argv[] = {program.data(), arg.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null",
                                     O_RDONLY, 0);
    pid_t pid = -1;
    const int r =
        ::posix_spawn(&pid, program.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (r != 0) {
      return false;
    }
    pid_ = pid;
    return true;
  }

  bool HelperRunning() override {
    if (pid_ <= 0) {
      return false;
    }
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) == 0) {
      return true;
    }
    pid_ = -1;
    return false;
  }

 private:
  std::string Table() const { return data_folder_ + "/" + kDriveTableName; }

  std::string helper_;
  std::string data_folder_;
  pid_t pid_ = -1;
};

class NoCameraDevices final : public CameraDevices {
 public:
  std::string GetAvailableDeviceList() override { return ""; }
  std::string DriveFolder(const std::string&) override { return ""; }
  bool StartImageAcq(const std::string&) override { return false; }
  bool HelperRunning() override { return false; }
};

}  // namespace

std::unique_ptr<CameraDevices> MakeNoCameraDevices() {
  return std::make_unique<NoCameraDevices>();
}

std::unique_ptr<CameraDevices> MakeLinuxCameraDevices(std::string helper,
                                                      std::string data_folder) {
  return std::make_unique<LinuxCameraDevices>(std::move(helper),
                                              std::move(data_folder));
}

}  // namespace qbpd
