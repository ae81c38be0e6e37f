// The upload road through the program's forms against curl: the program on
// the scripted host with the real client uploads N JPEG photos and M PNG
// photos (sent as JPEG copies) through frmUploadImgs, and one curl process
// posts the same JPEG files one request each, to the same qbpd-service in
// the same run. See README.md in this folder.
#include "app/program/program.h"
#include "browser/frm_main_window.h"
#include "core/application.h"
#include "core/settings.h"
#include "online/service_client.h"
#include "platform/display_model.h"
#include "platform/forms/scripted_host.h"
#include "platform/forms/user_input.h"
#include "platform/http_transport.h"
#include "platform/image_operations.h"
#include "platform/places.h"
#include "platform/settings_store.h"
#include "tests/online/service_process.h"
#include "tests/online/test_photos.h"
#include "tests/support/temp_dir.h"

#include <vips/vips8>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr char kDemoEmail[] = "demo@quillbay.test";

struct Options {
  int jpegs = 100;
  int pngs = 10;
  int width = 2048;
  int height = 1536;
  std::string curl = "curl";
};

Options ParseOptions(int argc, char** argv) {
  Options o;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const int value = std::atoi(argv[i + 1]);
    if (name == "--photos") {
      o.jpegs = std::max(1, value);
    } else if (name == "--pngs") {
      o.pngs = std::max(0, value);
    } else if (name == "--curl") {
      o.curl = argv[i + 1];
    } else {
      throw std::runtime_error("unknown option " + name);
    }
  }
  return o;
}

// Seconds of one curl process posting every file in the field "File", one
// request each over one connection, without waiting for "100 Continue";
// the number of answers that say ok.
std::pair<double, int> PostWithCurl(const Options& o,
                                    const std::string& base,
                                    const std::string& code,
                                    const std::vector<std::string>& files,
                                    const fs::path& output) {
  std::vector<std::string> args = {o.curl, "--silent", "--show-error"};
  for (size_t i = 0; i < files.size(); ++i) {
    if (i > 0) {
      args.push_back("--next");
    }
    args.insert(args.end(), {"-H", "Expect:", "-F",
                             "File=@" + files[i] + ";type=image/jpeg"});
    args.push_back(MakeValidUrl(EncodeUploadUrl(
        base + "/exuploadimages?authcode=" + code +
        "&numimages=1&albumid=&albumname=curl&sourcecode=QBC&file=" +
        files[i])));
  }
  std::vector<char*> argv;
  for (std::string& a : args) {
    argv.push_back(a.data());
  }
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const auto start = Clock::now();
  pid_t pid = -1;
  if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) !=
      0) {
    throw std::runtime_error("curl could not be started");
  }
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  waitpid(pid, &status, 0);
  const double seconds =
      std::chrono::duration<double>(Clock::now() - start).count();
  std::ifstream in(output);
  std::stringstream answers;
  answers << in.rdbuf();
  int ok = 0;
  const std::string text = answers.str();
  for (size_t at = text.find("\"ok\":true"); at != std::string::npos;
       at = text.find("\"ok\":true", at + 1)) {
    ++ok;
  }
  return {seconds, ok};
}

int Main(int argc, char** argv) {
  const Options o = ParseOptions(argc, argv);
  VIPS_INIT("upload_road_bench");
  testing::TempDir scratch;
  const fs::path folder = scratch.path() / "Pictures" / "Photos";
  fs::create_directories(folder);
  std::vector<std::string> jpegs;
  double jpeg_bytes = 0;
  for (int i = 0; i < o.jpegs; ++i) {
    const std::string jpeg = testing::MakeJpeg(
        o.width, o.height, static_cast<std::uint32_t>(i + 1), 95);
    const fs::path path = folder / ("IMG_" + std::to_string(1000 + i) + ".jpg");
    std::ofstream(path, std::ios::binary) << jpeg;
    jpegs.push_back(path.string());
    jpeg_bytes += static_cast<double>(jpeg.size());
  }
  double png_bytes = 0;
  for (int i = 0; i < o.pngs; ++i) {
    const fs::path path = folder / ("DRAW_" + std::to_string(i) + ".png");
    vips::VImage::gaussnoise(o.width, o.height)
        .cast(VIPS_FORMAT_UCHAR)
        .bandjoin({vips::VImage::black(o.width, o.height) + i * 20,
                   vips::VImage::black(o.width, o.height) + 128})
        .cast(VIPS_FORMAT_UCHAR)
        .pngsave(path.c_str());
    png_bytes += static_cast<double>(fs::file_size(path));
  }
  std::printf("%d JPEG photos (%.1f MB), %d PNG photos (%.1f MB)\n", o.jpegs,
              jpeg_bytes / 1e6, o.pngs, png_bytes / 1e6);

  testing::ServiceProcess service(QBPD_SERVICE_PROGRAM,
                                  scratch.path() / "service", {"--seed-demo"});
  if (!service.ok()) {
    throw std::runtime_error(service.error());
  }

  PlatformServices services;
  services.settings = MakeMemorySettingsStore();
  services.places.config = (scratch.path() / "config").string();
  services.places.data = (scratch.path() / "data").string();
  services.places.cache = (scratch.path() / "cache").string();
  services.places.desktop = (scratch.path() / "Desktop").string();
  services.places.pictures = (scratch.path() / "Pictures").string();
  services.images =
      MakeVipsImageOperations((scratch.path() / "cache" / "t").string());
  services.make_display = [] { return MakeVipsDisplayControl(); };
  SettingsStore& store = *services.settings;
  const auto write = [&store](std::string_view key, std::string_view name,
                              const std::string& value) {
    if (!store.Write(key, name, value)) {
      throw std::runtime_error("settings");
    }
  };
  write(kSettingsKey, "LastOpenFolderInPreviousSession", "False");
  write(kSettingsKey, "DefaultFolder", folder.string());
  write(kDisplayKey, "ZoomSettings", "FitToWidth");
  write(kDisplayKey, "NoOfRecentFolders", "5");
  write(kRootKey, "Version", "1.0.0");
  write(kRootKey, "URL", service.site());
  write(kRootKey, "IP", service.base());
  write(kSettingsKey, "AutoLogin", "True");
  write(kSettingsKey, "UserName", kDemoEmail);
  write(kSettingsKey, "EncryptedPassword",
        EncryptPassword(service.demo_password()));
  auto owned = std::make_unique<ScriptedHost>();
  ScriptedHost& host = *owned;
  Application app(std::move(owned), std::move(services), RegisterProgram);
  host.SetIdleHook([&app] { app.forms().CollectGarbage(); });
  app.Start("");
  host.Run();
  host.Advance(500);
  auto& main = app.forms().Get<frmMainWindow>();
  user::Click(main.imgSelectAll);
  const int selected = app.session().gdicSelectedPhotos.Count();

  Clock::time_point shown;
  host.Queue("upload", [&main] { user::Click(main.imgUpload); });
  host.Queue("continue", [&app] {
    user::Click(app.forms().Get("frmUploadAlbumInfm").control("imgContinue"));
  });
  host.Queue("result", [&app, &shown] {
    shown = Clock::now();
    user::Click(app.forms().Get("frmUploadCongrats").control("imgOK"));
  });
  const auto start = Clock::now();
  host.Run();
  const double road_seconds =
      std::chrono::duration<double>(shown - start).count();
  const int uploaded = app.session().giUploadedCount;
  std::printf("road: %d of %d photos in %.2f s, %.1f MB/s\n", uploaded,
              selected, road_seconds,
              (jpeg_bytes + png_bytes) / 1e6 / road_seconds);

  const auto [curl_seconds, curl_ok] =
      PostWithCurl(o, service.base(), app.session().gsAuthCode, jpegs,
                   scratch.path() / "curl.txt");
  std::printf("curl: %d of %d JPEG files in %.2f s, %.1f MB/s\n", curl_ok,
              o.jpegs, curl_seconds, jpeg_bytes / 1e6 / curl_seconds);
  // The road also converts and sends the PNG photos; its throughput is
  // counted over the JPEG files alone, so that this work only costs it.
  std::printf("road / curl throughput over the JPEG files: %.3f\n",
              curl_seconds / road_seconds);
  app.End();
  return uploaded == selected && curl_ok == o.jpegs ? 0 : 1;
}

}  // namespace
}  // namespace qbpd

int main(int argc, char** argv) {
  try {
    return qbpd::Main(argc, argv);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "upload_road_bench: %s\n", e.what());
    return 2;
  }
}
