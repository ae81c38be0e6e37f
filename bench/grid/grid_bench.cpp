// Scrolls the main window's grid page by page through a large folder and
// reports the time per page and the peak memory.
//
//   grid_bench [--photos N] [--width W] [--height H] [--distinct D] [--dir D]
//
// The folder holds N photos: D distinct JPEGs of W x H made with libvips, and
// hard links to them under other names, so that every photo is its own file
// (its own thumbnail) without filling the disk. The thumbnail cache is on.
// The first pass starts with an empty cache (every thumbnail is made); the
// second starts the program again on the same folder (every thumbnail is in
// the cache).
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
#include <filesystem>
#include <string>
#include <sys/resource.h>
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
};

long PeakRssKb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

struct Pass {
  std::vector<double> page_ms;
  double start_ms = 0;
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
  services.make_display = [] { return MakeVipsDisplayControl(); };
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
  app.Start("");
  host.Run();
  host.Advance(500);
  pass.start_ms =
      std::chrono::duration<double, std::milli>(Clock::now() - started).count();

  auto& window = app.forms().Get<frmMainWindow>();
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
  }
  fs::path root = o.dir.empty() ? fs::temp_directory_path() /
                                      ("grid-bench-" + std::to_string(getpid()))
                                : fs::path(o.dir);
  fs::path folder = root / "Pictures" / "Many";
  std::printf("making %d photos of %dx%d (%d distinct) in %s\n", o.photos,
              o.width, o.height, o.distinct, folder.c_str());
  qbpd::bench::MakePhotoFolder(folder, o.photos, o.distinct, o.width, o.height);
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
