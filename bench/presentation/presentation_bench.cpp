#include "platform/decode_ahead.h"
#include "platform/display_model.h"
#include "platform/image_header.h"
#include "platform/image_operations.h"
#include "platform/photo_kind.h"
#include "platform/program_runner.h"

#include <benchmark/benchmark.h>
#include <vips/vips8>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kQuality = 90;
// A 1920 x 1080 screen less the show's margins (100 twips each side) and its
// name strip (33 pixels).
constexpr int kViewWidth = 1907;
constexpr int kViewHeight = 1047;
constexpr int kConcurrency = 2;
constexpr int kShowPhotos = 3;

struct Folder {
  Folder() {
    std::string pattern =
        (fs::temp_directory_path() / "qbpd-presentation-bench-XXXXXX").string();
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

// A photo-like picture: gradients and waves under sensor-like noise.
void MakePhoto(const std::string& path, int width, int height, int seed) {
  const vips::VImage xy = vips::VImage::xyz(width, height);
  const vips::VImage x = xy[0] * (255.0 / width);
  const vips::VImage y = xy[1] * (255.0 / height);
  const vips::VImage waves =
      ((xy[0] / (150.0 + seed * 10)).sin() + (xy[1] / 130.0).cos()) * 20.0;
  const vips::VImage noise = vips::VImage::gaussnoise(
      width, height,
      vips::VImage::option()->set("sigma", 10.0)->set("seed", seed));
  (x + waves + noise)
      .bandjoin(y - waves + noise)
      .bandjoin((x + y) * 0.5 + waves - noise)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .jpegsave(path.c_str(), vips::VImage::option()->set("Q", kQuality));
}

// Each iteration timed by hand; the median goes into the counters.
void ReportMedian(benchmark::State& state, std::vector<double>& ms) {
  if (ms.empty()) {
    return;
  }
  std::sort(ms.begin(), ms.end());
  state.counters["median_ms"] = ms[ms.size() / 2];
  state.counters["max_ms"] = ms.back();
}

// --- photo information ------------------------------------------------------

// What the dialog reads of the photo: the measures (header reads), the
// camera facts, the kind, the file's dates and size.
void InfoMeasures(benchmark::State& state, const std::string& photo) {
  std::unique_ptr<ImageOperations> images =
      MakeVipsImageOperations(fs::path(photo).parent_path() / "cache");
  for (auto _ : state) {
    int sum = images->GetImageWidth(photo) + images->GetImageHeight(photo) +
              images->GetBitRate(photo) + images->GetNoOfColors(photo);
    const CameraFacts camera = images->GetCameraFacts(photo);
    sum += static_cast<int>(SniffPhotoFile(photo)) + camera.iso;
    struct stat info {};
    sum += ::stat(photo.c_str(), &info);
    benchmark::DoNotOptimize(sum);
  }
}

// The same with the dialog's thumbnail from the cache, as the program runs
// by default (the thumbnail was made when the folder was shown).
void InfoWithCachedThumbnail(benchmark::State& state,
                             const std::string& photo) {
  std::unique_ptr<ImageOperations> images =
      MakeVipsImageOperations(fs::path(photo).parent_path() / "cache");
  std::string buffer;
  if (images->GenerateThumbnailAndBuffer(photo, buffer, 85, 70) != 1) {
    state.SkipWithError("no thumbnail");
    return;
  }
  for (auto _ : state) {
    int sum = images->GenerateThumbnailAndBuffer(photo, buffer, 85, 70);
    sum += images->GetImageWidth(photo) + images->GetImageHeight(photo) +
           images->GetBitRate(photo) + images->GetNoOfColors(photo);
    sum += images->GetCameraFacts(photo).iso;
    benchmark::DoNotOptimize(sum);
  }
}

// The yardstick: decoding the whole photo.
void FullDecode(benchmark::State& state, const std::string& photo) {
  for (auto _ : state) {
    const vips::VImage image = vips::VImage::new_from_file(
        photo.c_str(),
        vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
    std::size_t size = 0;
    void* pixels = image.write_to_memory(&size);
    benchmark::DoNotOptimize(pixels);
    g_free(pixels);
  }
}

// --- the slide show ---------------------------------------------------------

// A tick or Next with the photo decoded ahead while the previous one was on
// show: LoadPhoto, ZoomFitToWidth and Render of the screen, as the show and
// the desktop's view do. The wait for the work ahead is not timed (a show
// waits seconds between photos).
void ShowStepDecodedAhead(benchmark::State& state,
                          const std::vector<std::string>& photos) {
  std::unique_ptr<DecodeAheadDisplay> view =
      MakeDecodeAheadDisplay([]() -> std::shared_ptr<DisplayControl> {
        return MakeVipsDisplayControl();
      });
  view->SetViewSize(kViewWidth, kViewHeight);
  std::vector<std::uint8_t> rgb;
  std::vector<double> ms;
  std::size_t at = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const std::string& next = photos[(at + 1) % photos.size()];
    view->DecodeAhead({next});
    view->WaitUntilReady();
    state.ResumeTiming();
    const auto start = Clock::now();
    if (!view->LoadPhoto(next) || !view->ZoomFitToWidth() ||
        !view->Render(0, 0, kViewWidth, kViewHeight, rgb)) {
      state.SkipWithError("the view failed to show the photo");
      return;
    }
    ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start)
                     .count());
    ++at;
  }
  state.counters["decoded_ahead"] = view->LoadsDecodedAhead();
  ReportMedian(state, ms);
}

// The same step without working ahead: the photo view model as the main
// window has it.
void ShowStepPlain(benchmark::State& state,
                   const std::vector<std::string>& photos) {
  std::unique_ptr<DisplayControl> view = MakeVipsDisplayControl();
  view->SetViewSize(kViewWidth, kViewHeight);
  std::vector<std::uint8_t> rgb;
  std::vector<double> ms;
  std::size_t at = 0;
  for (auto _ : state) {
    const auto start = Clock::now();
    if (!view->LoadPhoto(photos[++at % photos.size()]) ||
        !view->ZoomFitToWidth() ||
        !view->Render(0, 0, kViewWidth, kViewHeight, rgb)) {
      state.SkipWithError("the view failed to show the photo");
      return;
    }
    ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start)
                     .count());
  }
  ReportMedian(state, ms);
}

// The yardstick: libvips decoding and fitting the photo to the screen's
// width (shrink-on-load), into memory.
void PlainDecodeAndFit(benchmark::State& state,
                       const std::vector<std::string>& photos) {
  std::vector<double> ms;
  std::size_t at = 0;
  for (auto _ : state) {
    const auto start = Clock::now();
    const vips::VImage fitted = vips::VImage::thumbnail(
        photos[++at % photos.size()].c_str(), kViewWidth,
        vips::VImage::option()
            ->set("height", 100000)
            ->set("size", VIPS_SIZE_DOWN));
    std::size_t size = 0;
    void* pixels = fitted.write_to_memory(&size);
    benchmark::DoNotOptimize(pixels);
    g_free(pixels);
    ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start)
                     .count());
  }
  ReportMedian(state, ms);
}

// --- the wallpaper's bitmap -------------------------------------------------

void SaveAsBmp(benchmark::State& state,
               const std::string& photo,
               const std::string& target) {
  std::unique_ptr<ImageOperations> images =
      MakeVipsImageOperations(fs::path(photo).parent_path() / "cache");
  for (auto _ : state) {
    if (images->SaveImageAsBMP(photo, target) != 1) {
      state.SkipWithError("SaveImageAsBMP failed");
      return;
    }
  }
  state.counters["bytes"] = static_cast<double>(fs::file_size(target));
}

// The yardstick: the vips command copying the photo to a bitmap.
void VipsCopyToBmp(benchmark::State& state,
                   const std::string& photo,
                   const std::string& target) {
  std::unique_ptr<ProgramRunner> runner = MakeSpawnRunner({}, 120000);
  if (!runner->Has("vips")) {
    state.SkipWithError("the vips command is not installed");
    return;
  }
  for (auto _ : state) {
    if (!runner->Run({"vips", "copy", photo, target}).ok()) {
      state.SkipWithError("vips copy failed");
      return;
    }
  }
  state.counters["bytes"] = static_cast<double>(fs::file_size(target));
}

}  // namespace
}  // namespace qbpd

int main(int argc, char** argv) {
  if (VIPS_INIT(argv[0]) != 0) {
    return 1;
  }
  vips_concurrency_set(qbpd::kConcurrency);
  vips_cache_set_max(0);
  benchmark::Initialize(&argc, argv);
  qbpd::Folder folder;
  std::vector<std::string> show;
  for (int i = 0; i < qbpd::kShowPhotos; ++i) {
    show.push_back(folder.Path("show" + std::to_string(i) + ".jpg"));
    qbpd::MakePhoto(show.back(), 6000, 4000, 7 + i);
  }
  const std::string twelve = folder.Path("twelve.jpg");
  qbpd::MakePhoto(twelve, 4000, 3000, 3);
  std::printf(
      "Photos: %d of 6000x4000 (%ju bytes the first), one of 4000x3000; "
      "view %dx%d\n",
      qbpd::kShowPhotos,
      static_cast<std::uintmax_t>(std::filesystem::file_size(show[0])),
      qbpd::kViewWidth, qbpd::kViewHeight);

  using benchmark::RegisterBenchmark;
  const auto ms = benchmark::kMillisecond;
  RegisterBenchmark("Info24MP/HeaderMeasures", qbpd::InfoMeasures, show[0])
      ->Unit(ms);
  RegisterBenchmark("Info24MP/MeasuresAndCachedThumbnail",
                    qbpd::InfoWithCachedThumbnail, show[0])
      ->Unit(ms);
  RegisterBenchmark("Info24MP/FullDecode", qbpd::FullDecode, show[0])->Unit(ms);
  RegisterBenchmark("Show24MP/StepDecodedAhead", qbpd::ShowStepDecodedAhead,
                    show)
      ->Unit(ms)
      ->Iterations(15);
  RegisterBenchmark("Show24MP/StepPlainModel", qbpd::ShowStepPlain, show)
      ->Unit(ms)
      ->Iterations(9);
  RegisterBenchmark("Show24MP/PlainDecodeAndFit", qbpd::PlainDecodeAndFit, show)
      ->Unit(ms)
      ->Iterations(9);
  RegisterBenchmark("Bmp12MP/SaveImageAsBMP", qbpd::SaveAsBmp, twelve,
                    folder.Path("ours.bmp"))
      ->Unit(ms)
      ->Iterations(5);
  RegisterBenchmark("Bmp12MP/VipsCopyCommand", qbpd::VipsCopyToBmp, twelve,
                    folder.Path("vips.bmp"))
      ->Unit(ms)
      ->Iterations(5);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
