// Scrolls the main window's grid page by page through a large folder and
// reports the time per page and the peak memory.
//
//   grid_bench [--photos N] [--width W] [--height H] [--distinct D] [--dir D]
//              [--compare-first-load N] [--compare-open N] [--second-opens N]
//
// The folder holds N photos: D distinct JPEGs of W x H made with libvips, and
// hard links to them under other names, so that every photo is its own file
// (its own thumbnail) without filling the disk. The thumbnail cache is on.
// The first pass starts with an empty cache (every thumbnail is made); the
// second starts the program again on the same folder (every thumbnail is in
// the cache).
//
// --compare-open N times, in N rounds of turns, the folder's first open
// (empty cache), its second open (a new start with the cache filled), and
// the yardstick: listing the folder and making ten thumbnails with libvips
// in one process. An open counts until the first photo is drawn in the
// view and the ten thumbnails are there; the work ahead on the second core
// is on. It prints the medians and their ratios.
#include "app/program/program.h"
#include "bench/ui/photo_folder.h"
#include "browser/frm_main_window.h"
#include "core/settings.h"
#include "platform/display_model.h"
#include "platform/forms/scripted_host.h"
#include "platform/forms/user_input.h"
#include "platform/image_operations.h"
#include "platform/settings_store.h"

#include <vips/vips8>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

struct Options {
  int photos = 5000;
  int width = 2000;
  int height = 1500;
  int distinct = 20;
  std::string dir;
  // Only the first load, with an empty cache, in turns with and without the
  // thumbnails made ahead on the second core.
  int compare_first_load = 0;
  // The first and the second open against the yardstick, in turns.
  int compare_open = 0;
  // Only second opens, after one that fills the cache (for a profiler).
  int second_opens = 0;
};

long PeakRssKb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// The CPU time of the whole process, every thread's, in ms: on a machine
// that other programs keep busy it tells more than the wall clock.
double ProcessCpuMs() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

struct Pass {
  std::vector<double> page_ms;
  double start_ms = 0;
  double start_cpu_ms = 0;
  // Until the photo's own picture is drawn, when a stand-in was drawn
  // first; the same as start_ms otherwise.
  double refined_ms = 0;
  bool stand_in = false;
  long peak_kb = 0;
};

Pass ScrollThrough(const fs::path& root,
                   const fs::path& folder,
                   bool thumbnails_ahead = true,
                   bool scroll = true) {
  using namespace qbpd;
  PlatformServices services;
  services.settings = MakeMemorySettingsStore();
  services.places.config = (root / "config").string();
  services.places.data = (root / "data").string();
  services.places.cache = (root / "cache").string();
  services.places.desktop = (root / "Desktop").string();
  services.places.pictures = folder.parent_path().string();
  services.images = MakeVipsImageOperations((root / "cache" / "t").string(),
                                            thumbnails_ahead);
  // As the desktop program has it: a cached thumbnail may stand in.
  ImageOperations* images = services.images.get();
  services.make_display = [thumbnails_ahead, images] {
    return MakeVipsDisplayControl(thumbnails_ahead, {},
                                  [images](const std::string& path) {
                                    return images->CachedStandIn(path);
                                  });
  };
  SettingsStore& store = *services.settings;
  (void)store.Write(kSettingsKey, "LastOpenFolderInPreviousSession", "False");
  (void)store.Write(kSettingsKey, "DefaultFolder", folder.string());
  (void)store.Write(kRootKey, "CacheEnable", "True");
  (void)store.Write(kDisplayKey, "ZoomSettings", "FitToWidth");
  (void)store.Write(kDisplayKey, "NoOfRecentFolders", "5");
  auto owned_host = std::make_unique<ScriptedHost>();
  ScriptedHost& host = *owned_host;
  Application app(std::move(owned_host), std::move(services), RegisterProgram);
  host.SetIdleHook([&app] { app.forms().CollectGarbage(); });

  Pass pass;
  auto started = Clock::now();
  const double cpu_started = ProcessCpuMs();
  app.Start("");
  host.Run();
  host.Advance(500);
  auto& window = app.forms().Get<frmMainWindow>();
  // The photo as the view draws it first: what the user waits for.
  DisplayControl* display = window.ctlDisplayImage.Display();
  const int view_width = window.ctlDisplayImage.Width() / kTwipsPerPixel;
  const int view_height = window.ctlDisplayImage.Height() / kTwipsPerPixel;
  std::vector<std::uint8_t> rgb;
  if (display == nullptr ||
      !display->Render(0, 0, view_width, view_height, rgb)) {
    std::printf("  the first photo was not drawn\n");
  }
  pass.start_ms =
      std::chrono::duration<double, std::milli>(Clock::now() - started).count();
  pass.start_cpu_ms = ProcessCpuMs() - cpu_started;
  // A stand-in drawn first: and then the photo's own picture.
  pass.stand_in = display != nullptr && display->Refining();
  if (pass.stand_in) {
    // Looked for as a widget does, by drawing again (a corner only, until
    // it is there: the view may still be decoding the next photo ahead).
    std::vector<std::uint8_t> corner;
    while (display->Refining()) {
      std::this_thread::sleep_for(std::chrono::microseconds(200));
      display->Render(0, 0, 1, 1, corner);
    }
    if (!display->Render(0, 0, view_width, view_height, rgb)) {
      std::printf("  the first photo's own picture was not drawn\n");
    }
  }
  pass.refined_ms =
      std::chrono::duration<double, std::milli>(Clock::now() - started).count();

  ScrollBar& bar = window.ctrlImageListVScroll;
  const int rows_per_page = window.getMaxNoImgsDisplayed() / 2;
  for (int value = rows_per_page; scroll && value <= bar.Max();
       value += rows_per_page) {
    auto t0 = Clock::now();
    user::ScrollTo(bar, value);
    pass.page_ms.push_back(
        std::chrono::duration<double, std::milli>(Clock::now() - t0).count());
  }
  pass.peak_kb = PeakRssKb();
  std::printf("  photos listed %d, controls loaded %d, pages %zu\n",
              app.session().gdicPhotoList.Count(),
              app.session().gdicLoadedControls.Count(), pass.page_ms.size());
  app.End();
  return pass;
}

// The yardstick of an open: the folder listed and ten thumbnails of its
// first photos made by libvips to the program's box, as JPEG in memory.
double ListAndTenVipsThumbnails(const fs::path& folder) {
  const auto started = Clock::now();
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.push_back(entry.path().string());
  }
  std::sort(names.begin(), names.end());
  for (size_t i = 0; i < names.size() && i < 10; ++i) {
    const vips::VImage thumbnail = vips::VImage::thumbnail(
        names[i].c_str(), 85,
        vips::VImage::option()->set("height", 85)->set("size", VIPS_SIZE_DOWN));
    void* data = nullptr;
    size_t length = 0;
    thumbnail.write_to_buffer(".jpg", &data, &length,
                              vips::VImage::option()->set("Q", 70));
    g_free(data);
  }
  return std::chrono::duration<double, std::milli>(Clock::now() - started)
      .count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void CompareOpen(const fs::path& root, const fs::path& folder, int rounds) {
  std::vector<double> first, second, yardstick, first_cpu, second_cpu;
  std::vector<double> refined;
  int stand_ins = 0;
  for (int round = 0; round < rounds; ++round) {
    fs::remove_all(root / "cache");
    const Pass one = ScrollThrough(root, folder, true, false);
    const double cpu_before = ProcessCpuMs();
    yardstick.push_back(ListAndTenVipsThumbnails(folder));
    const double yardstick_cpu = ProcessCpuMs() - cpu_before;
    const Pass two = ScrollThrough(root, folder, true, false);
    first.push_back(one.start_ms);
    second.push_back(two.start_ms);
    first_cpu.push_back(one.start_cpu_ms);
    second_cpu.push_back(two.start_cpu_ms);
    refined.push_back(two.refined_ms);
    stand_ins += two.stand_in ? 1 : 0;
    std::printf(
        "  round %d: first open %.1f ms (CPU %.1f), listing + 10 libvips "
        "thumbnails %.1f ms (CPU %.1f), second open %.1f ms (CPU %.1f, "
        "%s, the photo's own picture drawn at %.1f ms)\n",
        round + 1, one.start_ms, one.start_cpu_ms, yardstick.back(),
        yardstick_cpu, two.start_ms, two.start_cpu_ms,
        two.stand_in ? "stand-in first" : "no stand-in", two.refined_ms);
  }
  const double f = Median(first), y = Median(yardstick), s = Median(second);
  std::printf(
      "open, medians of %d: first %.1f ms, second %.1f ms, listing + 10 "
      "libvips thumbnails %.1f ms; CPU: first %.1f ms, second %.1f ms\n",
      rounds, f, s, y, Median(first_cpu), Median(second_cpu));
  std::printf("ratio first open / (listing + 10 libvips thumbnails): %.2f\n",
              f / y);
  std::printf("ratio first open / second open: %.1f (CPU time %.1f)\n", f / s,
              Median(first_cpu) / Median(second_cpu));
  std::printf(
      "second opens with a stand-in first: %d of %d; until the photo's own "
      "picture: %.1f ms, ratio first open / that %.1f\n",
      stand_ins, rounds, Median(refined), f / Median(refined));
  std::printf("open peak RSS %.1f MB\n", PeakRssKb() / 1024.0);
}

void Report(const char* what, Pass pass) {
  std::vector<double>& t = pass.page_ms;
  std::sort(t.begin(), t.end());
  double sum = 0;
  for (double v : t)
    sum += v;
  auto at = [&](double q) {
    return t.empty() ? 0.0 : t[std::min(t.size() - 1, size_t(q * t.size()))];
  };
  std::printf(
      "%s: start %.0f ms; per page mean %.2f ms, median %.2f ms, p95 %.2f ms, "
      "max %.2f ms; peak RSS %.1f MB\n",
      what, pass.start_ms, t.empty() ? 0.0 : sum / t.size(), at(0.5), at(0.95),
      t.empty() ? 0.0 : t.back(), pass.peak_kb / 1024.0);
}

}  // namespace

int main(int argc, char** argv) {
  if (VIPS_INIT(argv[0]) != 0)
    return 1;
  vips_concurrency_set(2);
  Options o;
  for (int i = 1; i + 1 < argc; i += 2) {
    std::string flag = argv[i];
    std::string value = argv[i + 1];
    if (flag == "--photos")
      o.photos = std::stoi(value);
    else if (flag == "--width")
      o.width = std::stoi(value);
    else if (flag == "--height")
      o.height = std::stoi(value);
    else if (flag == "--distinct")
      o.distinct = std::stoi(value);
    else if (flag == "--dir")
      o.dir = value;
    else if (flag == "--compare-first-load")
      o.compare_first_load = std::stoi(value);
    else if (flag == "--compare-open")
      o.compare_open = std::stoi(value);
    else if (flag == "--second-opens")
      o.second_opens = std::stoi(value);
  }
  fs::path root = o.dir.empty() ? fs::temp_directory_path() /
                                      ("grid-bench-" + std::to_string(getpid()))
                                : fs::path(o.dir);
  fs::path folder = root / "Pictures" / "Many";
  std::printf("making %d photos of %dx%d (%d distinct) in %s\n", o.photos,
              o.width, o.height, o.distinct, folder.c_str());
  qbpd::bench::MakePhotoFolder(folder, o.photos, o.distinct, o.width, o.height);
  if (o.second_opens > 0) {
    ScrollThrough(root, folder, true, false);
    for (int i = 0; i < o.second_opens; ++i) {
      const Pass pass = ScrollThrough(root, folder, true, false);
      std::printf("  second open %.1f ms, CPU %.1f ms\n", pass.start_ms,
                  pass.start_cpu_ms);
    }
    return 0;
  }
  if (o.compare_open > 0) {
    CompareOpen(root, folder, o.compare_open);
    if (o.dir.empty())
      fs::remove_all(root);
    return 0;
  }
  if (o.compare_first_load > 0) {
    std::vector<double> one, two;
    for (int round = 0; round < o.compare_first_load; ++round) {
      for (bool ahead : {false, true}) {
        fs::remove_all(root / "cache");
        const double ms = ScrollThrough(root, folder, ahead, false).start_ms;
        (ahead ? two : one).push_back(ms);
        std::printf("  round %d, %s: first load %.0f ms\n", round + 1,
                    ahead ? "two cores" : "one core", ms);
      }
    }
    std::sort(one.begin(), one.end());
    std::sort(two.begin(), two.end());
    const double m1 = one[one.size() / 2], m2 = two[two.size() / 2];
    std::printf(
        "first load, median: one core %.0f ms, two cores %.0f ms "
        "(%.2f of one core)\n",
        m1, m2, m2 / m1);
    if (o.dir.empty())
      fs::remove_all(root);
    return 0;
  }
  Report("thumbnails made", ScrollThrough(root, folder));
  Report("thumbnails cached", ScrollThrough(root, folder));
  if (o.dir.empty())
    fs::remove_all(root);
  return 0;
}
