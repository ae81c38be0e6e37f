#include "platform/profile_file.h"
#include "platform/saver_player.h"
#include "screensaver/scr_store.h"

#include <benchmark/benchmark.h>
#include <vips/vips8>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr int kScreenWidth = 1920;
constexpr int kScreenHeight = 1080;
// 24 megapixels, as a 6000 x 4000 camera photo.
constexpr int kPhotoWidth = 6000;
constexpr int kPhotoHeight = 4000;
constexpr int kSavers = 50;
constexpr int kEntries = 2000;

struct Folder {
  Folder() {
    std::string pattern =
        (fs::temp_directory_path() / "qbpd-saver-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("mkdtemp failed");
    }
    root = pattern;
  }
  ~Folder() {
    std::error_code error;
    fs::remove_all(root, error);
  }
  std::string Path(const std::string& name) const {
    return (root / name).string();
  }
  fs::path root;
};

Folder& Work() {
  static Folder folder;
  return folder;
}

// A photo with detail everywhere (two gradients and noise), so that the
// JPEG decoder has real work.
std::string CameraPhoto(const std::string& name, int hue) {
  const std::string path = Work().Path(name);
  if (!fs::exists(path)) {
    vips::VImage x = vips::VImage::xyz(kPhotoWidth, kPhotoHeight);
    vips::VImage r = x[0] * (255.0 / kPhotoWidth);
    vips::VImage g = x[1] * (255.0 / kPhotoHeight);
    vips::VImage noise = vips::VImage::gaussnoise(kPhotoWidth, kPhotoHeight);
    vips::VImage b = (noise + hue) * 1.0;
    r.bandjoin({g, b})
        .cast(VIPS_FORMAT_UCHAR)
        .jpegsave(path.c_str(), vips::VImage::option()->set("Q", 90));
  }
  return path;
}

SaverFrame Photo(int hue) {
  SaverFrame f =
      DecodeSaverPhoto(CameraPhoto("p" + std::to_string(hue) + ".jpg", hue),
                       kScreenWidth, kScreenHeight);
  if (f.empty()) {
    throw std::runtime_error("decode failed");
  }
  return f;
}

// One frame of a transition, at a progress that moves through the whole
// transition (61 frames, about one second at 60 frames a second) over the
// iterations. Each frame is timed alone, and the distribution is reported
// as counters (milliseconds): p50, p90, p99 and the slowest.
void BM_TransitionFrame(benchmark::State& state) {
  const SaverFrame from = Photo(40);
  const SaverFrame to = Photo(160);
  const auto transition = static_cast<SaverTransition>(state.range(0));
  SaverFrame out = SaverFrame::Black(kScreenWidth, kScreenHeight);
  std::vector<double> times;
  int step = 0;
  for (auto _ : state) {
    const double progress = (step % 61) / 60.0;
    const auto start = std::chrono::steady_clock::now();
    DrawSaverTransition(transition, from, to, progress, out);
    benchmark::DoNotOptimize(out.pixels.data());
    times.push_back(std::chrono::duration<double, std::milli>(
                        std::chrono::steady_clock::now() - start)
                        .count());
    ++step;
  }
  std::sort(times.begin(), times.end());
  auto at = [&times](double share) {
    return times[std::min(times.size() - 1,
                          static_cast<size_t>(share * times.size()))];
  };
  state.counters["p50_ms"] = at(0.50);
  state.counters["p90_ms"] = at(0.90);
  state.counters["p99_ms"] = at(0.99);
  state.counters["max_ms"] = times.back();
  state.SetLabel(state.range(0) == 0   ? "3001 from centre"
                 : state.range(0) == 1 ? "2007 diagonal"
                 : state.range(0) == 2 ? "7002 top to bottom"
                                       : "2000 left to right");
}
BENCHMARK(BM_TransitionFrame)
    ->DenseRange(0, 3)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(610);

// The next photo made ready: a 24-megapixel JPEG decoded, turned, fitted
// and centred on black at 1920 x 1080, as the player does it ahead.
void BM_NextPhotoDecode(benchmark::State& state) {
  const std::string path = CameraPhoto("p7.jpg", 7);
  for (auto _ : state) {
    SaverFrame f = DecodeSaverPhoto(path, kScreenWidth, kScreenHeight);
    benchmark::DoNotOptimize(f.pixels.data());
  }
}
BENCHMARK(BM_NextPhotoDecode)->Unit(benchmark::kMillisecond)->Iterations(10);

// The repair on opening of a store of 50 screensavers with 2,000 photo
// entries, a tenth of whose photos are gone: each iteration repairs a fresh
// copy.
void BM_RepairStore(benchmark::State& state) {
  const std::string photos = Work().Path("store-photos");
  fs::create_directories(photos);
  std::string text =
      "[General]\nScreensaverFileName=Quillbay.scr\nNumberOfSsavers=" +
      std::to_string(kSavers) + "\nDefaultSsaver=Saver 1\n";
  for (int s = 1; s <= kSavers; ++s) {
    text += "Ssaver" + std::to_string(s) + "=Saver " + std::to_string(s) + "\n";
  }
  const int per_saver = kEntries / kSavers;
  for (int s = 1; s <= kSavers; ++s) {
    text += "[Saver " + std::to_string(s) +
            "]\nNumberofImages=" + std::to_string(per_saver) + "\n";
    for (int i = 1; i <= per_saver; ++i) {
      const std::string photo = photos + "/photo_" + std::to_string(s) + "_" +
                                std::to_string(i) + ".jpg";
      if (i % 10 != 0) {
        std::ofstream(photo) << "x";
      }
      text += "Image" + std::to_string(i) + "=" + photo + "\n";
    }
    text += "ImageInterval=10\nTransitionEffects=15\n";
  }
  const std::string ini = Work().Path("scr.ini");
  for (auto _ : state) {
    state.PauseTiming();
    std::ofstream(ini, std::ios::trunc) << text;
    state.ResumeTiming();
    if (!RepairScreensavers(ini)) {
      state.SkipWithError("repair failed");
    }
  }
  // Checked after the timed loop: the gone photos are out.
  if (ReadScreensaverPhotos(ini, "Saver 1").size() !=
      static_cast<size_t>(per_saver - per_saver / 10)) {
    state.SkipWithError("repair gave the wrong photos");
  }
}
BENCHMARK(BM_RepairStore)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace
}  // namespace qbpd

int main(int argc, char** argv) {
  VIPS_INIT(argv[0]);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  vips_shutdown();
  return 0;
}
