#include "platform/exif_preview_thumbnail.h"
#include "platform/image_operations.h"
#include "tests/support/camera_photo.h"

#include <benchmark/benchmark.h>
#include <turbojpeg.h>
#include <vips/vips8>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

constexpr int kSize = 85;
constexpr int kQuality = 70;
constexpr int kPhotoCount = 10;
// 12 megapixels, or 24 with --24mp.
constexpr int kWidth12 = 4000;
constexpr int kHeight12 = 3000;
constexpr int kWidth24 = 6000;
constexpr int kHeight24 = 4000;

// The photos of one run, in a private folder removed at the end.
struct Folder {
  Folder() {
    std::string pattern =
        (fs::temp_directory_path() / "qbpd-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("mkdtemp failed");
    }
    root = pattern;
    fs::create_directories(root / "photos");
    fs::create_directories(root / "thumbs");
  }
  ~Folder() {
    std::error_code error;
    fs::remove_all(root, error);
  }
  fs::path root;
  std::vector<std::string> jpegs;
  std::vector<std::string> camera;  // with EXIF previews that still hold
  std::string png;
  std::string bmp;
  int width = kWidth12;
  int height = kHeight12;
};

// A 12-megapixel picture with photo-like content: smooth gradients under
// sensor-like noise, which keeps the JPEG decoder as busy as a real photo.
vips::VImage MakePicture(int seed, int width, int height) {
  const vips::VImage xy = vips::VImage::xyz(width, height);
  const vips::VImage x = xy[0] * (255.0 / width);
  const vips::VImage y = xy[1] * (255.0 / height);
  const vips::VImage noise = vips::VImage::gaussnoise(
      width, height,
      vips::VImage::option()->set("sigma", 12.0)->set("seed", seed));
  return (x + noise)
      .bandjoin(y + noise)
      .bandjoin((x + y) * 0.5 - noise + seed * 7)
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB));
}

// A Windows bitmap of `image`, written by hand: libvips saves none.
void SaveBmp(const vips::VImage& image, const std::string& path) {
  const int width = image.width();
  const int height = image.height();
  const vips::VImage memory = image.copy_memory();
  const auto* rgb = static_cast<const std::uint8_t*>(memory.data());
  const std::size_t row_bytes = static_cast<std::size_t>(width) * 3;
  const std::uint32_t stride = (width * 3 + 3) / 4 * 4;
  std::string header(54, '\0');
  auto put = [&header](std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) {
      header[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
    }
  };
  header[0] = 'B';
  header[1] = 'M';
  put(2, 54 + stride * height);
  put(10, 54);
  put(14, 40);
  put(18, width);
  put(22, height);
  put(26, 1 | (24 << 16));  // one plane, 24 bits a pixel
  std::ofstream out(path, std::ios::binary);
  out << header;
  std::string row(stride, '\0');
  for (int y = height - 1; y >= 0; --y) {
    const std::uint8_t* p = rgb + static_cast<std::size_t>(y) * row_bytes;
    for (int x = 0; x < width; ++x) {
      row[x * 3] = static_cast<char>(p[x * 3 + 2]);
      row[x * 3 + 1] = static_cast<char>(p[x * 3 + 1]);
      row[x * 3 + 2] = static_cast<char>(p[x * 3]);
    }
    out << row;
  }
}

void MakePhotos(Folder& folder) {
  for (int i = 0; i < kPhotoCount; ++i) {
    const std::string path =
        (folder.root / "photos" / ("photo" + std::to_string(i) + ".jpg"))
            .string();
    MakePicture(i, folder.width, folder.height)
        .jpegsave(path.c_str(), vips::VImage::option()->set("Q", 90));
    folder.jpegs.push_back(path);
  }
  for (int i = 0; i < kPhotoCount; ++i) {
    const std::string path =
        (folder.root / "photos" / ("camera" + std::to_string(i) + ".jpg"))
            .string();
    if (!testing::WriteCameraPhoto(path, folder.width, folder.height, i + 1, 1,
                                   testing::CameraPreview::kGood)) {
      throw std::runtime_error("can't write " + path);
    }
    folder.camera.push_back(path);
  }
  const vips::VImage picture =
      MakePicture(kPhotoCount, folder.width, folder.height);
  folder.png = (folder.root / "photos" / "photo.png").string();
  picture.pngsave(folder.png.c_str(),
                  vips::VImage::option()->set("compression", 3));
  folder.bmp = (folder.root / "photos" / "photo.bmp").string();
  SaveBmp(picture, folder.bmp);
}

// Ten JPEG thumbnails written beside each other, as with the cache off.
void ThumbnailsNoCache(benchmark::State& state,
                       const std::vector<std::string>& photos,
                       const Folder& folder) {
  const auto images = MakeVipsImageOperations((folder.root / "cache").string());
  for (auto _ : state) {
    for (const std::string& photo : photos) {
      const std::string target =
          (folder.root / "thumbs" /
           (fs::path(photo).filename().string() + ".jpg"))
              .string();
      if (images->GenerateThumbnailExt(photo, target, kSize, kQuality) != 1) {
        state.SkipWithError("thumbnail failed");
        return;
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * kPhotoCount);
}

// The yardstick: libvips' own thumbnail of the same ten files, saved the
// same way, with none of the checks above.
void PlainLibvips(benchmark::State& state,
                  const std::vector<std::string>& photos,
                  const Folder& folder) {
  const std::string target = (folder.root / "thumbs" / "plain.jpg").string();
  for (auto _ : state) {
    for (const std::string& photo : photos) {
      vips::VImage::thumbnail(photo.c_str(), kSize,
                              vips::VImage::option()->set("height", kSize))
          .jpegsave(
              target.c_str(),
              vips::VImage::option()->set("Q", kQuality)->set("strip", true));
    }
  }
  state.SetItemsProcessed(state.iterations() * kPhotoCount);
}

// The floor of any thumbnail that decodes the photo: libjpeg-turbo decoding
// each file at 1/8 scale into RGB, the file read included, nothing encoded.
void TurboEighthDecode(benchmark::State& state,
                       const std::vector<std::string>& photos) {
  tjhandle handle = tjInitDecompress();
  std::vector<unsigned char> rgb;
  for (auto _ : state) {
    for (const std::string& photo : photos) {
      std::ifstream in(photo, std::ios::binary);
      const std::vector<unsigned char> jpeg(
          (std::istreambuf_iterator<char>(in)),
          std::istreambuf_iterator<char>());
      int width = 0;
      int height = 0;
      int subsampling = 0;
      int colourspace = 0;
      if (tjDecompressHeader3(handle, jpeg.data(), jpeg.size(), &width, &height,
                              &subsampling, &colourspace) != 0) {
        state.SkipWithError("turbo can't read the header");
        break;
      }
      const int w = (width + 7) / 8;
      const int h = (height + 7) / 8;
      rgb.resize(static_cast<std::size_t>(w) * h * 3);
      if (tjDecompress2(handle, jpeg.data(), jpeg.size(), rgb.data(), w, 0, h,
                        TJPF_RGB, /*flags=*/0) != 0) {
        state.SkipWithError("turbo failed to decode");
        break;
      }
      benchmark::DoNotOptimize(rgb.data());
    }
  }
  tjDestroy(handle);
  state.SetItemsProcessed(state.iterations() * kPhotoCount);
}

// The preview path alone on the ten camera photos (the check of the top band
// included), for the share the check takes.
void PreviewPathOnly(benchmark::State& state, const Folder& folder) {
  for (auto _ : state) {
    for (const std::string& photo : folder.camera) {
      const int fd = ::open(photo.c_str(), O_RDONLY | O_CLOEXEC);
      const PreviewThumbnail made =
          ThumbnailFromExifPreview(fd, kSize, kQuality);
      ::close(fd);
      if (made.verdict != PreviewVerdict::kTaken) {
        state.SkipWithError("preview refused");
        return;
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * kPhotoCount);
}

// Ten thumbnails through the cache, emptied before every round.
void CacheMiss(benchmark::State& state, const Folder& folder) {
  const fs::path cache = folder.root / "cache-miss";
  const auto images = MakeVipsImageOperations(cache.string());
  std::string buffer;
  for (auto _ : state) {
    state.PauseTiming();
    fs::remove_all(cache);
    state.ResumeTiming();
    for (const std::string& photo : folder.jpegs) {
      if (images->GenerateThumbnailAndBuffer(photo, buffer, kSize, kQuality) !=
          1) {
        state.SkipWithError("thumbnail failed");
        return;
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * kPhotoCount);
}

// The same ten once the cache holds them.
void CacheHit(benchmark::State& state, const Folder& folder) {
  const auto images =
      MakeVipsImageOperations((folder.root / "cache-hit").string());
  std::string buffer;
  for (const std::string& photo : folder.jpegs) {
    if (images->GenerateThumbnailAndBuffer(photo, buffer, kSize, kQuality) !=
        1) {
      state.SkipWithError("thumbnail failed");
      return;
    }
  }
  for (auto _ : state) {
    for (const std::string& photo : folder.jpegs) {
      benchmark::DoNotOptimize(
          images->GenerateThumbnailAndBuffer(photo, buffer, kSize, kQuality));
    }
  }
  state.SetItemsProcessed(state.iterations() * kPhotoCount);
}

// One thumbnail of a 12-megapixel PNG or bitmap.
void OneThumbnail(benchmark::State& state,
                  const Folder& folder,
                  const std::string& photo) {
  const auto images = MakeVipsImageOperations((folder.root / "cache").string());
  const std::string target = (folder.root / "thumbs" / "one.jpg").string();
  for (auto _ : state) {
    if (images->GenerateThumbnailExt(photo, target, kSize, kQuality) != 1) {
      state.SkipWithError("thumbnail failed");
      return;
    }
  }
  state.SetItemsProcessed(state.iterations());
}

}  // namespace
}  // namespace qbpd

int main(int argc, char** argv) {
  if (VIPS_INIT(argv[0]) != 0) {
    return 1;
  }
  benchmark::Initialize(&argc, argv);
  qbpd::Folder folder;
  for (int i = 1; i < argc; ++i) {
    if (std::string(argv[i]) == "--24mp") {
      folder.width = qbpd::kWidth24;
      folder.height = qbpd::kHeight24;
    }
  }
  std::printf("Photos: %dx%d\n", folder.width, folder.height);
  qbpd::MakePhotos(folder);
  const qbpd::Folder& photos = folder;
  benchmark::RegisterBenchmark("ThumbnailsOfTenJpegs/NoCache",
                               [&](benchmark::State& s) {
                                 qbpd::ThumbnailsNoCache(s, photos.jpegs,
                                                         photos);
                               })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  benchmark::RegisterBenchmark(
      "ThumbnailsOfTenJpegs/PlainLibvips",
      [&](benchmark::State& s) { qbpd::PlainLibvips(s, photos.jpegs, photos); })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  benchmark::RegisterBenchmark(
      "ThumbnailsOfTenJpegs/TurboEighthDecode",
      [&](benchmark::State& s) { qbpd::TurboEighthDecode(s, photos.jpegs); })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  // Camera photos whose EXIF preview still shows them.
  benchmark::RegisterBenchmark("TenCameraPhotos/NoCache",
                               [&](benchmark::State& s) {
                                 qbpd::ThumbnailsNoCache(s, photos.camera,
                                                         photos);
                               })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  benchmark::RegisterBenchmark(
      "TenCameraPhotos/PreviewPathOnly",
      [&](benchmark::State& s) { qbpd::PreviewPathOnly(s, photos); })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  benchmark::RegisterBenchmark("TenCameraPhotos/PlainLibvips",
                               [&](benchmark::State& s) {
                                 qbpd::PlainLibvips(s, photos.camera, photos);
                               })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  benchmark::RegisterBenchmark(
      "ThumbnailsOfTenJpegs/CacheMiss",
      [&](benchmark::State& s) { qbpd::CacheMiss(s, photos); })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  benchmark::RegisterBenchmark(
      "ThumbnailsOfTenJpegs/CacheHit",
      [&](benchmark::State& s) { qbpd::CacheHit(s, photos); })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  benchmark::RegisterBenchmark(
      "OneThumbnail/Png12MP",
      [&](benchmark::State& s) { qbpd::OneThumbnail(s, photos, photos.png); })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  benchmark::RegisterBenchmark(
      "OneThumbnail/Bmp12MP",
      [&](benchmark::State& s) { qbpd::OneThumbnail(s, photos, photos.bmp); })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime()
      ->MinTime(3.0);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
