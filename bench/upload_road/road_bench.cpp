// The upload road through the program's forms against curl: the program on
// the scripted host with the real client uploads N JPEG photos and M PNG
// photos (sent as JPEG copies) through frmUploadImgs, and one curl process
// posts the same JPEG files one request each, to the same qbpd-service, one
// after the other in each of several rounds. A last run cancels in the
// middle of a large photo sent over a throttled line. See README.md.
#include "app/program/program.h"
#include "bench/upload_road/road_timing.h"
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
#include "tests/support/camera_photo.h"
#include "tests/support/temp_dir.h"

#include <vips/vips8>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr char kDemoEmail[] = "demo@quillbay.test";
// The camera-like PNG photos' size: about 4 MB at the usual compression.
constexpr int kCameraPngWidth = 1600;
constexpr int kCameraPngHeight = 1200;

struct Options {
  int jpegs = 100;
  int pngs = 10;
  int rounds = 3;
  // "camera": camera-like photos of 4000 x 3000 with their EXIF preview, as
  // people upload; "noise": fine noise at quality 95 without a preview, the
  // worst case for the thumbnail (every byte is entropy to decode).
  std::string kind = "camera";
  int width = 2048;
  int height = 1536;
  // The cancel run: one photo of about this many MB sent at this many
  // bytes a second, cancelled after this many seconds of its transfer.
  int cancel_mb = 50;
  long long slow_line = 1'000'000;
  double cancel_after_s = 3.0;
  std::string curl = "curl";
  // Where the photos are kept between runs ("" for a fresh scratch folder):
  // making them takes minutes.
  std::string keep;
  // How long the user takes to choose the album, in ms on the real clock
  // (the album dialog is up; its time is left out of both figures).
  int choose_ms = 0;
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
    } else if (name == "--rounds") {
      o.rounds = std::max(1, value);
    } else if (name == "--cancel-mb") {
      o.cancel_mb = std::max(0, value);
    } else if (name == "--curl") {
      o.curl = argv[i + 1];
    } else if (name == "--choose-ms") {
      o.choose_ms = std::max(0, value);
    } else if (name == "--keep") {
      o.keep = argv[i + 1];
    } else if (name == "--kind" && (argv[i + 1] == std::string("camera") ||
                                    argv[i + 1] == std::string("noise"))) {
      o.kind = argv[i + 1];
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

// One program, started with the stored demo login and `folder` as the folder
// it opens, on a TimedHost; its transport logs into `log`.
struct Program {
  TimedHost* host = nullptr;
  std::unique_ptr<Application> app;
};

Program StartProgram(const fs::path& home,
                     const fs::path& folder,
                     const testing::ServiceProcess& service,
                     HttpTransportOptions transport,
                     TransferLog& log) {
  PlatformServices services;
  services.settings = MakeMemorySettingsStore();
  services.places.config = (home / "config").string();
  services.places.data = (home / "data").string();
  services.places.cache = (home / "cache").string();
  services.places.desktop = (home / "Desktop").string();
  services.places.pictures = folder.parent_path().string();
  services.images = MakeVipsImageOperations((home / "cache" / "t").string());
  services.make_display = [] { return MakeVipsDisplayControl(); };
  // The settings a fresh desktop start lays (the thumbnail cache on, ...).
  services.resources = FindResourcesFolder(services.places);
  services.default_settings = services.resources + "/default-settings.ini";
  services.make_transport = [transport, &log] {
    return std::make_unique<LoggedTransport>(transport, log);
  };
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
  auto owned = std::make_unique<TimedHost>();
  Program program;
  program.host = owned.get();
  program.app = std::make_unique<Application>(
      std::move(owned), std::move(services), RegisterProgram);
  Application& app = *program.app;
  program.host->SetIdleHook([&app, &program] {
    program.host->Mark();
    app.forms().CollectGarbage();
  });
  app.Start("");
  program.host->Run();
  program.host->Advance(500);
  return program;
}

struct RoadRun {
  double seconds = 0;
  // From the album choice's Continue to the result page: the transfer
  // screen's engine alone, without the login and the user's choice.
  double engine_seconds = 0;
  // The bytes of the files sent: the JPEG photos and the JPEG copies of the
  // others.
  double bytes_sent = 0;
  int uploaded = 0;
  int selected = 0;
  double longest_wait_ms = 0;
  std::string longest_wait_at;  // where the run was when that wait ended
  double peak_mb = 0;
  std::string auth_code;
  // Where the transfer screen's time went: in transfers, waiting for the
  // work on the other core (before the JPEG copies, before the photos), and
  // the rest (the window's events, the screen's own steps).
  double copies_transfer_s = 0;
  double photos_transfer_s = 0;
  double copies_waited_s = 0;
  double photos_waited_s = 0;
  double longest_photo_wait_ms = 0;
  // Of the rest: before the first transfer (less the wait for its work) and
  // after the last one, up to the result page.
  double before_first_s = 0;
  double after_last_s = 0;
};

// Every photo of `folder` up the road: Upload, a new album, the transfer
// screen, the result page; timed from the click on Upload to the result page.
RoadRun RunRoad(const fs::path& home,
                const fs::path& folder,
                const testing::ServiceProcess& service,
                int choose_ms) {
  TransferLog log;
  Program program = StartProgram(home, folder, service, {}, log);
  Application& app = *program.app;
  TimedHost& host = *program.host;
  log.host = &host;
  auto& main = app.forms().Get<frmMainWindow>();
  user::Click(main.imgSelectAll);
  RoadRun run;
  run.selected = app.session().gdicSelectedPhotos.Count();
  host.DescribeMoments([&app, &log] {
    const int sent = app.session().giUploadedCount;
    return log.file.empty()
               ? "between transfers, " + std::to_string(sent) + " sent"
               : "in the transfer of " +
                     fs::path(log.file).filename().string() + ", " +
                     std::to_string(sent) + " sent";
  });
  Clock::time_point shown;
  Clock::time_point chosen;
  host.Queue("upload", [&main] { user::Click(main.imgUpload); });
  host.Queue("continue", [&app, &host, &chosen, choose_ms] {
    host.Pause(true);
    std::this_thread::sleep_for(std::chrono::milliseconds(choose_ms));
    host.Pause(false);
    chosen = Clock::now();
    host.TakeWaited();
    user::Click(app.forms().Get("frmUploadAlbumInfm").control("imgContinue"));
  });
  host.Queue("result", [&app, &host, &shown] {
    shown = Clock::now();
    host.Measure(false);
    user::Click(app.forms().Get("frmUploadCongrats").control("imgOK"));
  });
  ResetPeakMemory();
  const auto start = Clock::now();
  host.Measure(true);
  host.Run();
  run.seconds =
      std::chrono::duration<double>(shown - start).count() - choose_ms / 1000.0;
  run.engine_seconds = std::chrono::duration<double>(shown - chosen).count();
  run.bytes_sent = log.bytes_sent;
  run.longest_wait_ms = host.LongestMs();
  run.longest_wait_at = host.LongestAt();
  run.peak_mb = PeakMemoryMb();
  run.uploaded = app.session().giUploadedCount;
  run.auth_code = app.session().gsAuthCode;
  for (const TransferLog::Transfer& t : log.transfers) {
    const bool copy = fs::path(t.file).parent_path() != folder;
    (copy ? run.copies_transfer_s : run.photos_transfer_s) += t.seconds;
    (copy ? run.copies_waited_s : run.photos_waited_s) += t.waited_s;
    run.longest_photo_wait_ms =
        std::max(run.longest_photo_wait_ms, t.waited_s * 1000);
  }
  if (!log.transfers.empty()) {
    run.before_first_s =
        std::chrono::duration<double>(log.first_started - chosen).count() -
        log.transfers.front().waited_s;
    run.after_last_s = std::chrono::duration<double>(shown - log.ended).count();
  }
  app.End();
  return run;
}

struct CancelRun {
  double transfer_ended_ms = -1;  // click to the transfer's end
  double notice_ms = -1;          // click to the cancel notice on screen
  double sent_s = 0;              // how long the large photo went before
  double longest_wait_ms = 0;
  double peak_mb = 0;
  int uploaded = 0;
};

// A small photo and then a large one over a line of `o.slow_line` bytes a
// second; Cancel is clicked `o.cancel_after_s` into the large one's transfer.
CancelRun RunCancel(const Options& o,
                    const fs::path& home,
                    const fs::path& folder,
                    const std::string& large,
                    const testing::ServiceProcess& service) {
  TransferLog log;
  HttpTransportOptions slow;
  slow.max_send_bytes_per_second = o.slow_line;
  Program program = StartProgram(home, folder, service, slow, log);
  Application& app = *program.app;
  TimedHost& host = *program.host;
  auto& main = app.forms().Get<frmMainWindow>();
  user::Click(main.imgSelectAll);
  CancelRun run;
  Clock::time_point clicked;
  Clock::time_point noticed;
  host.Queue("upload", [&main] { user::Click(main.imgUpload); });
  host.Queue("continue", [&app] {
    user::Click(app.forms().Get("frmUploadAlbumInfm").control("imgContinue"));
  });
  // Looks at every pump of the transfer screen until the large photo has
  // gone long enough, then clicks Cancel.
  std::function<void()> look;
  look = [&] {
    if (log.file != large || Since(log.started) < o.cancel_after_s) {
      host.QueueInside("look", look, /*skip_pumps=*/1);
      return;
    }
    run.sent_s = Since(log.started);
    clicked = Clock::now();
    user::Click(app.forms().Get("frmUploadImgs").control("imgCancelconn"));
    host.Queue("notice", [&app, &host, &noticed] {
      noticed = Clock::now();
      host.Measure(false);
      user::Click(app.forms().Get("frmMsgInfrm").control("imgOK"));
    });
  };
  host.QueueInside("look", look, /*skip_pumps=*/1);
  ResetPeakMemory();
  host.Measure(true);
  host.Run();
  run.longest_wait_ms = host.LongestMs();
  run.peak_mb = PeakMemoryMb();
  if (clicked != Clock::time_point{}) {
    run.transfer_ended_ms =
        std::chrono::duration<double, std::milli>(log.ended - clicked).count();
    run.notice_ms =
        std::chrono::duration<double, std::milli>(noticed - clicked).count();
  }
  run.uploaded = app.session().giUploadedCount;
  app.End();
  return run;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.empty() ? 0 : values[values.size() / 2];
}

// What the work made ahead costs on one core, one photo after the other: a
// PNG photo's JPEG copy and the copy's thumbnail; a JPEG photo's thumbnail.
void PrintWorkTimes(const fs::path& work,
                    const std::vector<std::string>& jpegs,
                    const std::vector<std::string>& pngs) {
  fs::create_directories(work / "cache");
  const auto images = MakeVipsImageOperations((work / "cache").string(),
                                              /*thumbnails_ahead=*/false);
  std::vector<double> converts, copy_thumbs, photo_thumbs;
  double copy_bytes = 0;
  for (const std::string& png : pngs) {
    const std::string copy = (work / "copy.jpg").string();
    auto start = Clock::now();
    images->SaveImageAsJPEG(png, copy);
    converts.push_back(Since(start) * 1000);
    copy_bytes += static_cast<double>(fs::file_size(copy));
    std::string buffer;
    start = Clock::now();
    images->GenerateThumbnailAndBuffer(copy, buffer,
                                       frmMainWindow::kThumbnailSize,
                                       frmMainWindow::kThumbnailQuality);
    copy_thumbs.push_back(Since(start) * 1000);
    fs::remove(copy);
  }
  for (size_t i = 0; i < jpegs.size() && i < 10; ++i) {
    std::string buffer;
    const auto start = Clock::now();
    images->GenerateThumbnailAndBuffer(jpegs[i], buffer,
                                       frmMainWindow::kThumbnailSize,
                                       frmMainWindow::kThumbnailQuality);
    photo_thumbs.push_back(Since(start) * 1000);
  }
  std::printf(
      "work on one core, medians: a PNG photo's JPEG copy %.1f ms (copies "
      "of %.2f MB), its thumbnail %.1f ms; a JPEG photo's thumbnail %.1f ms\n",
      Median(converts), pngs.empty() ? 0 : copy_bytes / 1e6 / pngs.size(),
      Median(copy_thumbs), Median(photo_thumbs));
  fs::remove_all(work);
}

int Main(int argc, char** argv) {
  const Options o = ParseOptions(argc, argv);
  VIPS_INIT("upload_road_bench");
  testing::TempDir scratch;
  const fs::path pictures =
      o.keep.empty()
          ? scratch.path() / "Pictures"
          : fs::path(o.keep) / (o.kind + "-" + std::to_string(o.jpegs) + "-" +
                                std::to_string(o.pngs));
  const fs::path folder = pictures / "Photos";
  const fs::path made_marker = pictures / "complete";
  const bool made = fs::exists(made_marker);
  fs::create_directories(folder);
  std::vector<std::string> jpegs;
  double jpeg_bytes = 0;
  for (int i = 0; i < o.jpegs; ++i) {
    const fs::path path = folder / ("IMG_" + std::to_string(1000 + i) + ".jpg");
    if (made) {
    } else if (o.kind == "camera") {
      if (!testing::WriteCameraPhoto(path.string(), 4000, 3000, i + 1,
                                     /*orientation=*/1,
                                     testing::CameraPreview::kGood)) {
        throw std::runtime_error("a camera photo could not be written");
      }
    } else {
      std::ofstream(path, std::ios::binary) << testing::MakeJpeg(
          o.width, o.height, static_cast<std::uint32_t>(i + 1), 95);
    }
    jpegs.push_back(path.string());
    jpeg_bytes += static_cast<double>(fs::file_size(path));
  }
  // PNG photos: with "camera", camera-like pictures saved as PNG at the
  // usual compression (about 4 MB, as a photo edited and saved as PNG is);
  // with "noise", fine noise decoded from JPEGs of their own (about 9 MB).
  double png_bytes = 0;
  std::vector<std::string> pngs;
  for (int i = 0; i < o.pngs; ++i) {
    const fs::path path = folder / ("DRAW_" + std::to_string(i) + ".png");
    if (made) {
    } else if (o.kind == "camera") {
      const fs::path source = scratch.path() / "png-source.jpg";
      if (!testing::WriteCameraPhoto(
              source.string(), kCameraPngWidth, kCameraPngHeight, 5000 + i,
              /*orientation=*/1, testing::CameraPreview::kNone)) {
        throw std::runtime_error("a camera photo could not be written");
      }
      vips::VImage::new_from_file(source.c_str()).pngsave(path.c_str());
      fs::remove(source);
    } else {
      const std::string jpeg = testing::MakeJpeg(
          o.width, o.height, static_cast<std::uint32_t>(5000 + i), 95);
      vips::VImage::new_from_buffer(jpeg.data(), jpeg.size(), "")
          .pngsave(path.c_str(), vips::VImage::option()->set("compression", 1));
    }
    png_bytes += static_cast<double>(fs::file_size(path));
    pngs.push_back(path.string());
  }
  std::ofstream(made_marker) << "";
  std::printf("%d JPEG photos (%s, %.1f MB), %d PNG photos (%.1f MB)\n",
              o.jpegs, o.kind.c_str(), jpeg_bytes / 1e6, o.pngs,
              png_bytes / 1e6);
  PrintWorkTimes(scratch.path() / "work", jpegs, pngs);

  testing::ServiceProcess service(QBPD_SERVICE_PROGRAM,
                                  scratch.path() / "service", {"--seed-demo"});
  if (!service.ok()) {
    throw std::runtime_error(service.error());
  }

  bool all_sent = true;
  std::vector<double> ratios;
  std::vector<double> engine_ratios;
  for (int round = 1; round <= o.rounds; ++round) {
    const RoadRun road =
        RunRoad(scratch.path() / ("home" + std::to_string(round)), folder,
                service, o.choose_ms);
    const auto [curl_seconds, curl_ok] = PostWithCurl(
        o, service.base(), road.auth_code, jpegs, scratch.path() / "curl.txt");
    // The road also converts and sends the PNG photos; its throughput is
    // counted over the JPEG files alone, so that this work only costs it.
    // Throughput is bytes sent a second. The road also sends the JPEG copies
    // of the PNG photos, which it must first make: that work costs it time,
    // and the copies' bytes count as sent.
    const double curl_rate = jpeg_bytes / curl_seconds;
    const double ratio = road.bytes_sent / road.seconds / curl_rate;
    const double engine_ratio =
        road.bytes_sent / road.engine_seconds / curl_rate;
    ratios.push_back(ratio);
    engine_ratios.push_back(engine_ratio);
    std::printf(
        "round %d: road %d of %d photos (%.1f MB) in %.2f s (%.1f MB/s), of "
        "which the transfer screen %.2f s (%.1f MB/s), longest event wait "
        "%.1f ms (%s), peak memory %.0f MB; curl %d of %d in %.2f s (%.1f "
        "MB/s); road / curl %.3f, transfer screen / curl %.3f\n",
        round, road.uploaded, road.selected, road.bytes_sent / 1e6,
        road.seconds, road.bytes_sent / 1e6 / road.seconds, road.engine_seconds,
        road.bytes_sent / 1e6 / road.engine_seconds, road.longest_wait_ms,
        road.longest_wait_at.c_str(), road.peak_mb, curl_ok, o.jpegs,
        curl_seconds, curl_rate / 1e6, ratio, engine_ratio);
    std::printf(
        "  transfer screen: transfers of the copies %.2f s, of the photos "
        "%.2f s; waits for the work ahead before the copies %.2f s, before "
        "the photos %.2f s (longest %.1f ms); the rest %.2f s (before the "
        "first transfer %.2f s, after the last %.2f s)\n",
        road.copies_transfer_s, road.photos_transfer_s, road.copies_waited_s,
        road.photos_waited_s, road.longest_photo_wait_ms,
        road.engine_seconds - road.copies_transfer_s - road.photos_transfer_s -
            road.copies_waited_s - road.photos_waited_s,
        road.before_first_s, road.after_last_s);
    all_sent = all_sent && road.uploaded == road.selected && curl_ok == o.jpegs;
  }
  std::printf(
      "throughput, medians: road / curl %.3f, transfer screen / curl %.3f\n",
      Median(ratios), Median(engine_ratios));

  if (o.cancel_mb > 0) {
    const fs::path cancel_folder = scratch.path() / "Pictures" / "Cancel";
    fs::create_directories(cancel_folder);
    fs::copy_file(jpegs.front(), cancel_folder / "A_small.jpg");
    // Fine noise at quality 95 takes about 1.4 bytes a pixel.
    const int side =
        static_cast<int>(std::sqrt(o.cancel_mb * 1e6 / 1.4 * 4 / 3) + 0.5);
    std::string big = testing::MakeJpeg(side, side * 3 / 4, 99991, 95);
    const fs::path large = cancel_folder / "B_large.jpg";
    std::ofstream(large, std::ios::binary) << big;
    const double big_mb = static_cast<double>(big.size()) / 1e6;
    std::string().swap(big);
    const CancelRun cancel = RunCancel(o, scratch.path() / "home-cancel",
                                       cancel_folder, large.string(), service);
    std::printf(
        "cancel: %.1f MB photo at %.2f MB/s, clicked %.2f s into its "
        "transfer: transfer ended %.1f ms after the click, the cancel notice "
        "%.1f ms after it; longest event wait %.1f ms; peak memory %.0f MB; "
        "%d photo uploaded\n",
        big_mb, static_cast<double>(o.slow_line) / 1e6, cancel.sent_s,
        cancel.transfer_ended_ms, cancel.notice_ms, cancel.longest_wait_ms,
        cancel.peak_mb, cancel.uploaded);
    all_sent = all_sent && cancel.notice_ms >= 0 && cancel.uploaded == 1;
  }
  return all_sent ? 0 : 1;
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
