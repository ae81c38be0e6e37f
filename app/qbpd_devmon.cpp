// qbpd-devmon: the device monitor. Started with the desktop session (its
// XDG autostart entry); sleeps in the kernel until a camera or a medium
// arrives, writes DevMon.dat for the program and starts the program with
// "DEVMON" when it doesn't run. SIGTERM or SIGINT ends it.
#include "camera/device_monitor.h"
#include "platform/device_watch.h"
#include "platform/mount_table.h"
#include "platform/places.h"
#include "platform/settings_store.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

int stop_pipe[2] = {-1, -1};

void RequestStop(int) {
  const char byte = 1;
  (void)!::write(stop_pipe[1], &byte, 1);
}

void ReapChildren(int) {
  while (::waitpid(-1, nullptr, WNOHANG) > 0) {
  }
}

bool StartProgram(const std::string& program) {
  std::string path = program;
  std::string arg = "DEVMON";
  char* argv[] = {path.data(), arg.data(), nullptr};
  pid_t pid = -1;
  return ::posix_spawn(&pid, path.c_str(), nullptr, nullptr, argv, environ) ==
         0;
}

}  // namespace

int main() {
  if (::pipe2(stop_pipe, O_CLOEXEC) != 0) {
    return 1;
  }
  std::signal(SIGTERM, RequestStop);
  std::signal(SIGINT, RequestStop);
  std::signal(SIGCHLD, ReapChildren);
  const qbpd::Places places = qbpd::FindPlaces();
  qbpd::MakeFolders(places.data, 0700);
  const std::string runtime =
      places.runtime.empty() ? "" : places.runtime + "/quillbay-picture-desk";
  const std::string program = places.program + "/qbpd";
  auto settings = qbpd::MakeSqliteSettingsStore(places.config + "/settings.db");

  qbpd::DeviceMonitor::Options options;
  options.data_folder = places.data;
  options.settings = settings.get();
  options.program_running = [&runtime] {
    return !runtime.empty() && qbpd::ProgramInstanceRunning(runtime);
  };
  options.start_program = [&program] { return StartProgram(program); };
  qbpd::DeviceMonitor monitor(options);
  monitor.SetMountedMedia(qbpd::RemovableMediaFolders(qbpd::ReadMountTable()));

  auto watch = qbpd::MakeUdevDeviceWatch(stop_pipe[0]);
  for (;;) {
    const qbpd::DeviceEvent event = watch->Next();
    switch (event.kind) {
      case qbpd::DeviceEvent::Kind::kCamera: {
        const std::string line = monitor.CameraArrived(event.camera);
        std::fprintf(stderr, "qbpd-devmon: camera %s%s%s", event.camera.c_str(),
                     line.empty() ? "" : ": ",
                     line.empty() ? "\n" : line.c_str());
        break;
      }
      case qbpd::DeviceEvent::Kind::kMounts:
        for (const std::string& line : monitor.MediaChanged(
                 qbpd::RemovableMediaFolders(qbpd::ReadMountTable()))) {
          std::fprintf(stderr, "qbpd-devmon: medium: %s", line.c_str());
        }
        break;
      case qbpd::DeviceEvent::Kind::kStop:
        return 0;
    }
  }
}
