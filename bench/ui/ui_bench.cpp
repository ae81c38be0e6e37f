// The desktop program's pieces on Qt's offscreen platform (QApplication, the
// Qt host, the program with private places and the thumbnail cache on):
//
// 1. start: from Application::Start to the first photo on show (the photo
//    view holds it and the window has painted a frame), on a folder of a few
//    photos; the first run with an empty thumbnail cache, the others with it
//    filled;
// 2. scroll: a folder of N photos scrolled page by page through the grid's
//    scroll bar widget, each page timed from the user's move to the painted
//    frame (the program's handlers, the window's sync and a repaint); then
//    the cost of a window sync in which nothing changed, the renderer's own
//    share of every event.
//
//   ui_bench [--photos N] [--width W] [--height H] [--distinct D]
//            [--starts S] [--dir DIR]
#include "app/program/program.h"
#include "bench/ui/photo_folder.h"
#include "browser/frm_main_window.h"
#include "core/settings.h"
#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "platform/places.h"
#include "platform/settings_store.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_clipboard.h"
#include "ui/qt/qt_host.h"

#include <QApplication>
#include <QScrollBar>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kSettleMs = 500;

struct Options {
  int photos = 5000;
  int width = 2000;
  int height = 1500;
  int distinct = 20;
  int starts = 5;
  std::string dir;
};

double MsSince(Clock::time_point t0) {
  return std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
}

long PeakRssKb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// One run of the program on `folder`, with its places under `root`.
class Run {
 public:
  Run(const fs::path& root, const fs::path& folder) {
    using namespace qbpd;
    PlatformServices services;
    services.settings = MakeMemorySettingsStore();
    services.places.config = (root / "config").string();
    services.places.data = (root / "data").string();
    services.places.cache = (root / "cache").string();
    services.places.desktop = (root / "Desktop").string();
    services.places.pictures = folder.parent_path().string();
    services.resources = FindResourcesFolder(services.places);
    services.images = MakeVipsImageOperations((root / "cache" / "t").string());
    services.make_display = [] { return MakeVipsDisplayControl(); };
    services.clipboard = MakeQtClipboard();
    SettingsStore& store = *services.settings;
    (void)store.Write(kSettingsKey, "LastOpenFolderInPreviousSession", "False");
    (void)store.Write(kSettingsKey, "DefaultFolder", folder.string());
    (void)store.Write(kRootKey, "CacheEnable", "True");
    (void)store.Write(kDisplayKey, "ZoomSettings", "FitToWidth");
    (void)store.Write(kDisplayKey, "NoOfRecentFolders", "5");
    auto owned = std::make_unique<QtHost>();
    host_ = owned.get();
    app_ = std::make_unique<Application>(std::move(owned), std::move(services),
                                         RegisterProgram);
    Application* app = app_.get();
    host_->SetIdleHook([app] { app->forms().CollectGarbage(); });
  }
  ~Run() {
    app_->End();
    app_.reset();
    QCoreApplication::processEvents();
  }

  // Starts the program; returns the milliseconds to the first photo on
  // show, or -1 when none came within a minute.
  double StartToFirstPhoto() {
    auto t0 = Clock::now();
    app_->Start("");
    main_ = app_->forms().Find<qbpd::frmMainWindow>();
    if (main_ == nullptr) {
      return -1;
    }
    bool shown = QTest::qWaitFor(
        [this] { return !main_->ctlDisplayImage.PhotoPath().empty(); }, 60000);
    if (!shown) {
      return -1;
    }
    window_ = host_->WindowOf(*main_);
    window_->repaint();
    return MsSince(t0);
  }

  // Scrolls through every page; the time of each, and of its two parts:
  // the event (the program's handlers and the window's sync) and the frame
  // (a repaint of the window).
  struct Pages {
    std::vector<double> total;
    std::vector<double> event;
    std::vector<double> frame;
  };
  Pages ScrollPages() {
    Pages pages;
    qbpd::ScrollBar& bar = main_->ctrlImageListVScroll;
    auto* widget = qobject_cast<QScrollBar*>(window_->WidgetOf(bar)->widget());
    const int rows_per_page = std::max(1, main_->getMaxNoImgsDisplayed() / 2);
    for (int value = rows_per_page; value <= bar.Max();
         value += rows_per_page) {
      auto t0 = Clock::now();
      widget->setValue(value);  // as a drag of the thumb would
      double event = MsSince(t0);
      auto t1 = Clock::now();
      window_->repaint();
      pages.frame.push_back(MsSince(t1));
      pages.event.push_back(event);
      pages.total.push_back(MsSince(t0));
    }
    // The renderer's own share of every event: a sync of the windows in
    // which no control changed (a walk over every control of every form).
    constexpr int kSyncs = 200;
    auto t0 = Clock::now();
    for (int i = 0; i < kSyncs; ++i) {
      host_->SyncWindows();
    }
    std::printf("  window sync with nothing changed: %.3f ms\n",
                MsSince(t0) / kSyncs);
    std::printf("  photos listed %d, controls loaded %d, pages %zu\n",
                app_->session().gdicPhotoList.Count(),
                app_->session().gdicLoadedControls.Count(), pages.total.size());
    return pages;
  }

 private:
  qbpd::QtHost* host_ = nullptr;
  std::unique_ptr<qbpd::Application> app_;
  qbpd::frmMainWindow* main_ = nullptr;
  qbpd::FormWindow* window_ = nullptr;
};

void Report(const char* what, std::vector<double> t) {
  std::sort(t.begin(), t.end());
  double sum = 0;
  for (double v : t) {
    sum += v;
  }
  auto at = [&t](double q) {
    return t.empty() ? 0.0 : t[std::min(t.size() - 1, size_t(q * t.size()))];
  };
  std::printf(
      "%s: n %zu, mean %.2f ms, median %.2f ms, p95 %.2f ms, max %.2f "
      "ms\n",
      what, t.size(), t.empty() ? 0.0 : sum / t.size(), at(0.5), at(0.95),
      t.empty() ? 0.0 : t.back());
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication qt_app(argc, argv);
  Options o;
  for (int i = 1; i + 1 < argc; i += 2) {
    std::string flag = argv[i];
    std::string value = argv[i + 1];
    if (flag == "--photos") {
      o.photos = std::stoi(value);
    } else if (flag == "--width") {
      o.width = std::stoi(value);
    } else if (flag == "--height") {
      o.height = std::stoi(value);
    } else if (flag == "--distinct") {
      o.distinct = std::stoi(value);
    } else if (flag == "--starts") {
      o.starts = std::stoi(value);
    } else if (flag == "--dir") {
      o.dir = value;
    }
  }
  fs::path root = o.dir.empty() ? fs::temp_directory_path() /
                                      ("ui-bench-" + std::to_string(getpid()))
                                : fs::path(o.dir);
  fs::path few = root / "Pictures" / "Few";
  fs::path many = root / "Pictures" / "Many";
  std::printf("making photos of %dx%d in %s\n", o.width, o.height,
              root.c_str());
  qbpd::bench::MakePhotoFolder(few, 6, 6, o.width, o.height);
  qbpd::bench::MakePhotoFolder(many, o.photos, o.distinct, o.width, o.height);

  std::vector<double> cold;
  std::vector<double> warm;
  for (int i = 0; i < o.starts; ++i) {
    Run run(root, few);
    double ms = run.StartToFirstPhoto();
    (i == 0 ? cold : warm).push_back(ms);
  }
  Report("start to first photo, empty thumbnail cache", cold);
  Report("start to first photo, thumbnails cached", warm);

  for (const char* pass :
       {"scroll, thumbnails made", "scroll, thumbnails cached"}) {
    Run run(root, many);
    double start = run.StartToFirstPhoto();
    // Half a second for the program to settle after its start, as a person
    // takes before scrolling.
    QTest::qWait(kSettleMs);
    std::printf("%s (start %.0f ms)\n", pass, start);
    auto pages = run.ScrollPages();
    Report("  per page", pages.total);
    Report("    the event (handlers and sync)", pages.event);
    Report("    the frame (repaint)", pages.frame);
  }
  std::printf("peak RSS %.1f MB\n", PeakRssKb() / 1024.0);
  if (o.dir.empty()) {
    fs::remove_all(root);
  }
  return 0;
}
