#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "platform/jpeg_metadata.h"

#include <benchmark/benchmark.h>
#include <vips/vips8>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace qbpd {
namespace {

namespace fs = std::filesystem;

// The batch's size: 100 photos, or QBPD_EDITOR_BENCH_PHOTOS for a quick look.
int BatchSize() {
  const char* value = std::getenv("QBPD_EDITOR_BENCH_PHOTOS");
  const int n = value == nullptr ? 0 : std::atoi(value);
  return n > 1 ? n : 100;
}
const int kBatch = BatchSize();
constexpr int kQuality = 90;
constexpr int kViewWidth = 1600;
constexpr int kViewHeight = 1000;
constexpr int kConcurrency = 2;

// The folder of one run, removed at the end.
struct Folder {
  Folder() {
    std::string pattern =
        (fs::temp_directory_path() / "qbpd-editor-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("mkdtemp failed");
    }
    root = pattern;
  }
  ~Folder() {
    std::error_code error;
    fs::remove_all(root, error);
  }
  fs::path root;
};

Bytes ReadBytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes((std::istreambuf_iterator<char>(in)),
               std::istreambuf_iterator<char>());
}

void WriteBytes(const fs::path& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
}

// A camera-like 12-megapixel JPEG: gradients and waves under sensor noise,
// 4:2:0 at quality 90, with EXIF data holding a preview. With
// `red_eyes` a face-sized pair of red pupils with catch-lights sits in it.
void MakePhoto(const fs::path& path,
               int width,
               int height,
               bool red_eyes,
               const fs::path& scratch) {
  const vips::VImage xy = vips::VImage::xyz(width, height);
  const vips::VImage x = xy[0] * (255.0 / width);
  const vips::VImage y = xy[1] * (255.0 / height);
  const vips::VImage waves =
      ((xy[0] / 180.0).sin() + (xy[1] / 130.0).cos()) * 20.0;
  const vips::VImage noise = vips::VImage::gaussnoise(
      width, height,
      vips::VImage::option()->set("sigma", 10.0)->set("seed", 7));
  vips::VImage picture = (x + waves + noise)
                             .bandjoin(y - waves + noise)
                             .bandjoin((x + y) * 0.5 + waves - noise)
                             .cast(VIPS_FORMAT_UCHAR);
  if (red_eyes) {
    for (const int cx : {width / 2 - 150, width / 2 + 150}) {
      const vips::VImage d = ((xy[0] - cx) * (xy[0] - cx) +
                              (xy[1] - height / 2) * (xy[1] - height / 2))
                                 .pow(0.5);
      picture = (d < 30).ifthenelse(std::vector<double>{200, 40, 45}, picture);
    }
  }
  picture
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB))
      .jpegsave(path.c_str(), vips::VImage::option()->set("Q", kQuality));
  // The EXIF data of a camera-like file, preview included, laid in.
  const fs::path with_exif = scratch / "exif.jpg";
  if (!WriteTestPhotoWithExif(with_exif.string(), 640, 480, 1, 1,
                              TestPreview::kSame)) {
    throw std::runtime_error("no EXIF data");
  }
  const std::optional<std::vector<Bytes>> segments =
      ReadMetadataSegments(ReadBytes(with_exif));
  Bytes jpeg = ReadBytes(path);
  if (!segments || segments->empty()) {
    throw std::runtime_error("no EXIF segment");
  }
  jpeg.insert(jpeg.begin() + 2, segments->front().begin(),
              segments->front().end());
  WriteBytes(path, jpeg);
}

// The batch's photos, laid afresh before every run of a batch.
struct Batch {
  Batch(const fs::path& folder, const fs::path& master) : master_(master) {
    fs::create_directories(folder);
    for (int i = 0; i < kBatch; ++i) {
      paths.push_back(
          (folder / ("IMG_" + std::to_string(1000 + i) + ".jpg")).string());
    }
  }
  void Lay() const {
    for (const std::string& path : paths) {
      fs::copy_file(master_, path, fs::copy_options::overwrite_existing);
    }
  }
  std::vector<std::string> paths;
  fs::path master_;
};

// The batch through the image library, as the rotation dialog runs it: the
// next photo hinted, this one turned and replaced.
void LibraryBatch(benchmark::State& state, const Batch* batch, bool ahead) {
  std::unique_ptr<ImageOperations> images = MakeVipsImageOperations(
      (fs::temp_directory_path() / "qbpd-bench-cache").string());
  int failures = 0;
  for (auto _ : state) {
    state.PauseTiming();
    batch->Lay();
    state.ResumeTiming();
    for (int i = 0; i < kBatch; ++i) {
      if (ahead && i + 1 < kBatch) {
        images->PrepareImageRotation(batch->paths[i + 1], 90);
      }
      failures +=
          images->ImageRotation(batch->paths[i], batch->paths[i], 90) == 1 ? 0
                                                                           : 1;
    }
  }
  if (failures > 0) {
    state.SkipWithError("a rotation failed");
  }
}

// The yardstick: jpegtran -rotate 90 -copy all, one process per file, each
// result renamed over its photo.
void JpegtranBatch(benchmark::State& state, const Batch* batch) {
  int failures = 0;
  for (auto _ : state) {
    state.PauseTiming();
    batch->Lay();
    state.ResumeTiming();
    for (const std::string& path : batch->paths) {
      const std::string out = path + ".tmp";
      const char* argv[] = {"jpegtran",  "-rotate",    "90",
                            "-copy",     "all",        "-outfile",
                            out.c_str(), path.c_str(), nullptr};
      pid_t pid = 0;
      int status = 0;
      if (posix_spawnp(&pid, "jpegtran", nullptr, nullptr,
                       const_cast<char* const*>(argv), environ) != 0 ||
          waitpid(pid, &status, 0) != pid || status != 0 ||
          std::rename(out.c_str(), path.c_str()) != 0) {
        ++failures;
      }
    }
  }
  if (failures > 0) {
    state.SkipWithError("jpegtran failed");
  }
}

std::unique_ptr<DisplayControl> ShownPhoto(const std::string& photo) {
  std::unique_ptr<DisplayControl> display = MakeVipsDisplayControl();
  display->SetViewSize(kViewWidth, kViewHeight);
  std::vector<std::uint8_t> rgb;
  if (!display->LoadPhoto(photo) || !display->ZoomFitToWidth() ||
      !display->Render(0, 0, kViewWidth, kViewHeight, rgb)) {
    return nullptr;
  }
  return display;
}

// The automatic colour from the click to the corrected view rendered.
void AutoColour(benchmark::State& state, const std::string& photo) {
  std::unique_ptr<DisplayControl> display = ShownPhoto(photo);
  std::vector<std::uint8_t> rgb;
  for (auto _ : state) {
    if (display == nullptr || !display->ShowCorrected() ||
        !display->Render(0, 0, kViewWidth, kViewHeight, rgb)) {
      state.SkipWithError("no corrected view");
      return;
    }
    state.PauseTiming();
    display->FinishCorrection(false, "c:\\xxx.jpg");
    state.ResumeTiming();
  }
}

// A red-eye click on a pupil and the view rendered again, the tool open.
void RedEyeClick(benchmark::State& state, const std::string& photo) {
  std::unique_ptr<DisplayControl> display = ShownPhoto(photo);
  std::vector<std::uint8_t> rgb;
  if (display == nullptr) {
    state.SkipWithError("no photo");
    return;
  }
  const double cx = display->PhotoWidth() / 2.0 - 150;
  const double cy = display->PhotoHeight() / 2.0;
  int removed = 0;
  for (auto _ : state) {
    state.PauseTiming();
    display->ClearEdit();
    display->BeginRedEye(2, 1);
    display->ToolMouseDown(5, 5, 1);  // waits for the tool's picture
    display->ToolMouseUp(5, 5, 1);
    display->Render(0, 0, kViewWidth, kViewHeight, rgb);
    state.ResumeTiming();
    display->SetEventSink([&removed](const std::string&) { ++removed; });
    display->ToolMouseDown(cx, cy, 1);
    display->ToolMouseUp(cx, cy, 1);
    display->Render(0, 0, kViewWidth, kViewHeight, rgb);
  }
  if (removed != static_cast<int>(state.iterations())) {
    state.SkipWithError("the click removed nothing");
  }
}

// Opening the crop panel (its box) or the red-eye panel, with the view
// rendered, once the photo is on display.
void OpenCrop(benchmark::State& state, const std::string& photo) {
  std::unique_ptr<DisplayControl> display = ShownPhoto(photo);
  std::vector<std::uint8_t> rgb;
  for (auto _ : state) {
    if (display == nullptr || !display->SetCropAspect(6, 4) ||
        !display->Render(0, 0, kViewWidth, kViewHeight, rgb)) {
      state.SkipWithError("no crop box");
      return;
    }
    state.PauseTiming();
    display->ClearEdit();
    state.ResumeTiming();
  }
}

void OpenRedEye(benchmark::State& state, const std::string& photo) {
  std::unique_ptr<DisplayControl> display = ShownPhoto(photo);
  std::vector<std::uint8_t> rgb;
  for (auto _ : state) {
    display->BeginRedEye(2, 1);
    if (display == nullptr ||
        !display->Render(0, 0, kViewWidth, kViewHeight, rgb)) {
      state.SkipWithError("no red-eye view");
      return;
    }
    state.PauseTiming();
    display->ClearEdit();
    state.ResumeTiming();
  }
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
  // 4032 x 3024 (a phone's 12 MP) turns exactly in 16-pixel blocks;
  // 4000 x 3000 (most cameras') leaves a partial block row at the bottom.
  const qbpd::fs::path exact = folder.root / "exact.jpg";
  const qbpd::fs::path camera = folder.root / "camera.jpg";
  const qbpd::fs::path eyes = folder.root / "eyes.jpg";
  qbpd::MakePhoto(exact, 4032, 3024, false, folder.root);
  qbpd::MakePhoto(camera, 4000, 3000, false, folder.root);
  qbpd::MakePhoto(eyes, 4000, 3000, true, folder.root);
  std::printf(
      "Photos: %ju bytes (4032x3024), %ju bytes (4000x3000); "
      "batches of %d\n",
      static_cast<std::uintmax_t>(qbpd::fs::file_size(exact)),
      static_cast<std::uintmax_t>(qbpd::fs::file_size(camera)), qbpd::kBatch);
  const qbpd::Batch exact_batch(folder.root / "exact", exact);
  const qbpd::Batch camera_batch(folder.root / "camera", camera);
  for (const auto& [name, batch] : {std::pair{"4032x3024", &exact_batch},
                                    std::pair{"4000x3000", &camera_batch}}) {
    const std::string prefix = std::string("RotateBatch/") + name;
    benchmark::RegisterBenchmark((prefix + "/ImageRotationAhead").c_str(),
                                 qbpd::LibraryBatch, batch, true)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(1);
    benchmark::RegisterBenchmark((prefix + "/ImageRotationOneByOne").c_str(),
                                 qbpd::LibraryBatch, batch, false)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(1);
    benchmark::RegisterBenchmark((prefix + "/JpegtranFileByFile").c_str(),
                                 qbpd::JpegtranBatch, batch)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(1);
  }
  const std::string photo = camera.string();
  const std::string eyes_photo = eyes.string();
  benchmark::RegisterBenchmark("Edit12MP/AutoColourClickToView",
                               qbpd::AutoColour, photo)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("Edit12MP/RedEyeClickAndRender",
                               qbpd::RedEyeClick, eyes_photo)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("Edit12MP/OpenCropPanel", qbpd::OpenCrop, photo)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("Edit12MP/OpenRedEyePanel", qbpd::OpenRedEye,
                               photo)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
