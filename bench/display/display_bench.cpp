#include "platform/display_model.h"

#include <benchmark/benchmark.h>
#include <turbojpeg.h>
#include <vips/vips8>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr int kPhotoWidth = 6000;
constexpr int kPhotoHeight = 4000;
constexpr int kQuality = 90;
constexpr int kViewWidth = 1600;
constexpr int kViewHeight = 1000;
constexpr int kConcurrency = 2;

// The photo of one run, in a private folder removed at the end.
struct Folder {
  Folder() {
    std::string pattern =
        (fs::temp_directory_path() / "qbpd-display-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("mkdtemp failed");
    }
    root = pattern;
    photo = (root / "photo.jpg").string();
  }
  ~Folder() {
    std::error_code error;
    fs::remove_all(root, error);
  }
  fs::path root;
  std::string photo;
};

// A 24-megapixel photo-like picture: broad gradients and a few soft shapes
// under sensor-like noise, so the entropy decoder has as much to do as with
// a real photo of that size.
void MakePhoto(const std::string& path) {
  const vips::VImage xy = vips::VImage::xyz(kPhotoWidth, kPhotoHeight);
  const vips::VImage x = xy[0] * (255.0 / kPhotoWidth);
  const vips::VImage y = xy[1] * (255.0 / kPhotoHeight);
  const vips::VImage waves = ((xy[0] / 180.0).sin() + (xy[1] / 130.0).cos()) *
                             20.0;  // sin and cos take degrees
  const vips::VImage noise = vips::VImage::gaussnoise(
      kPhotoWidth, kPhotoHeight,
      vips::VImage::option()->set("sigma", 10.0)->set("seed", 7));
  (x + waves + noise)
      .bandjoin(y - waves + noise)
      .bandjoin((x + y) * 0.5 + waves - noise)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .jpegsave(path.c_str(), vips::VImage::option()->set("Q", kQuality));
}

// The size of the picture each case ends with, as counters. Every case
// that run.sh compares sets the same ones: the CSV report wants a counter
// in every run once one run has it.
void ReportShown(benchmark::State& state, int width, int height) {
  state.counters["shown_w"] = width;
  state.counters["shown_h"] = height;
  state.counters["zoom_pct"] = 100.0 * width / kPhotoWidth;
}

// Load, fit and render of the visible area: what the main window does when
// a thumbnail is clicked.
void ModelShow(benchmark::State& state, const std::string& photo) {
  std::unique_ptr<DisplayControl> display = MakeVipsDisplayControl();
  display->SetViewSize(kViewWidth, kViewHeight);
  std::vector<std::uint8_t> rgb;
  for (auto _ : state) {
    if (!display->LoadPhoto(photo) || !display->ZoomFitToWidth() ||
        !display->Render(0, 0, kViewWidth, kViewHeight, rgb)) {
      state.SkipWithError("the model failed to show the photo");
      return;
    }
    benchmark::DoNotOptimize(rgb.data());
  }
  ReportShown(state, display->ShownWidth(), display->ShownHeight());
}

// The parts of the above on their own.
void ModelLoadOnly(benchmark::State& state, const std::string& photo) {
  std::unique_ptr<DisplayControl> display = MakeVipsDisplayControl();
  display->SetViewSize(kViewWidth, kViewHeight);
  for (auto _ : state) {
    if (!display->LoadPhoto(photo)) {
      state.SkipWithError("the model refused the photo");
      return;
    }
  }
}

void ModelRenderOnly(benchmark::State& state, const std::string& photo) {
  std::unique_ptr<DisplayControl> display = MakeVipsDisplayControl();
  display->SetViewSize(kViewWidth, kViewHeight);
  std::vector<std::uint8_t> rgb;
  if (!display->LoadPhoto(photo) || !display->ZoomFitToWidth()) {
    state.SkipWithError("the model failed to show the photo");
    return;
  }
  for (auto _ : state) {
    if (!display->Render(0, 0, kViewWidth, kViewHeight, rgb)) {
      state.SkipWithError("the model failed to render");
      return;
    }
    benchmark::DoNotOptimize(rgb.data());
  }
}

// The yardstick: libvips' own thumbnail to width 1600, made into memory.
void VipsThumbnail(benchmark::State& state, const std::string& photo) {
  int shown_w = 0;
  int shown_h = 0;
  for (auto _ : state) {
    const vips::VImage thumbnail =
        vips::VImage::thumbnail(photo.c_str(), kViewWidth,
                                vips::VImage::option()
                                    ->set("height", 100000)
                                    ->set("size", VIPS_SIZE_DOWN));
    std::size_t size = 0;
    void* pixels = thumbnail.write_to_memory(&size);
    benchmark::DoNotOptimize(pixels);
    g_free(pixels);
    shown_w = thumbnail.width();
    shown_h = thumbnail.height();
  }
  ReportShown(state, shown_w, shown_h);
}

// The floor: libjpeg-turbo decoding the file at half scale into RGB, file
// read included.
void TurboHalf(benchmark::State& state, const std::string& photo) {
  tjhandle handle = tjInitDecompress();
  std::vector<std::uint8_t> rgb;
  int shown_w = 0;
  int shown_h = 0;
  for (auto _ : state) {
    std::ifstream in(photo, std::ios::binary);
    const std::vector<unsigned char> jpeg((std::istreambuf_iterator<char>(in)),
                                          std::istreambuf_iterator<char>());
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colourspace = 0;
    if (tjDecompressHeader3(handle, jpeg.data(), jpeg.size(), &width, &height,
                            &subsampling, &colourspace) != 0) {
      state.SkipWithError("turbo refused the header");
      break;
    }
    const int half_width = (width + 1) / 2;
    const int half_height = (height + 1) / 2;
    rgb.resize(static_cast<std::size_t>(half_width) * half_height * 3);
    if (tjDecompress2(handle, jpeg.data(), jpeg.size(), rgb.data(), half_width,
                      0, half_height, TJPF_RGB, /*flags=*/0) != 0) {
      state.SkipWithError("turbo failed to decode");
      break;
    }
    benchmark::DoNotOptimize(rgb.data());
    shown_w = half_width;
    shown_h = half_height;
  }
  tjDestroy(handle);
  ReportShown(state, shown_w, shown_h);
}

// The memory the model holds with the photo fitted, as libvips accounts
// for its pixel buffers: measured with the model alive and again after it
// has gone.
void ReportHeldMemory(const std::string& photo) {
  std::size_t held = 0;
  {
    std::unique_ptr<DisplayControl> display = MakeVipsDisplayControl();
    display->SetViewSize(kViewWidth, kViewHeight);
    std::vector<std::uint8_t> rgb;
    if (!display->LoadPhoto(photo) || !display->ZoomFitToWidth() ||
        !display->Render(0, 0, kViewWidth, kViewHeight, rgb)) {
      std::fprintf(stderr, "the model failed to show the photo\n");
      return;
    }
    held = vips_tracked_get_mem();
  }
  const std::size_t after = vips_tracked_get_mem();
  std::printf(
      "Model memory after the fit: %.1f MB of decoded pixels "
      "(libvips tracked %zu bytes with the model, %zu without)\n",
      static_cast<double>(held - after) / 1e6, held, after);
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
  qbpd::MakePhoto(folder.photo);
  std::printf(
      "Photo: %dx%d JPEG at quality %d, %ju bytes; view %dx%d\n",
      qbpd::kPhotoWidth, qbpd::kPhotoHeight, qbpd::kQuality,
      static_cast<std::uintmax_t>(std::filesystem::file_size(folder.photo)),
      qbpd::kViewWidth, qbpd::kViewHeight);
  qbpd::ReportHeldMemory(folder.photo);
  const std::string photo = folder.photo;
  auto add = [&](const char* name,
                 void (*run)(benchmark::State&, const std::string&)) {
    benchmark::RegisterBenchmark(
        name, [run, photo](benchmark::State& s) { run(s, photo); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        // Work on every thread counts, so the figures mean something on a
        // machine that other programs keep busy.
        ->MeasureProcessCPUTime()
        ->Repetitions(9)
        ->ReportAggregatesOnly(true);
  };
  add("Show24MP/Model/LoadFitRender", qbpd::ModelShow);
  add("Show24MP/Model/LoadOnly", qbpd::ModelLoadOnly);
  add("Show24MP/Model/RenderOnly", qbpd::ModelRenderOnly);
  add("Show24MP/VipsThumbnail1600", qbpd::VipsThumbnail);
  add("Show24MP/TurboHalfDecode", qbpd::TurboHalf);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
