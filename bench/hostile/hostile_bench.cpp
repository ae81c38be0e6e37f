// The image paths under attack: very large, extreme and hostile photos made
// in a temporary folder, each put through the thumbnail and the photo view
// in a child process of its own, so that a crash or a hang is seen and
// counted instead of ending the run.
//
// For each file it prints whether the thumbnail and the view took it, how
// long each took, how long the caller's (the window's) thread was held by
// the view's load with the decoding on a thread of its own (polled every
// 2 ms as the desktop host does), beside the anchor: the same load with the
// decoding on the caller's thread, which held the window all along. Also
// the child's peak memory, and whether the file is as it was (by stat).
//
//   hostile_bench [--keep] [--only NAME]
//
// A child is this program started again with --attack PHOTO CACHE (a child
// merely forked would inherit libvips' threads half-way).
#include "platform/display_model.h"
#include "platform/image_operations.h"

#include <vips/vips8>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>
#include <zlib.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// A child that runs this long has hung.
constexpr auto kHang = std::chrono::seconds(180);
constexpr int kViewWidth = 1600;
constexpr int kViewHeight = 900;

long long MsSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() -
                                                               start)
      .count();
}

vips::VImage Picture(int width, int height, int bands) {
  const vips::VImage xy = vips::VImage::xyz(width, height);
  std::vector<vips::VImage> planes;
  for (int band = 0; band < bands; ++band) {
    planes.push_back((xy[0] * (band + 1) + xy[1] * (3 - band)) % 256);
  }
  return vips::VImage::bandjoin(planes).cast(VIPS_FORMAT_UCHAR);
}

// Noise: detail in every block, as a sharp photo has, the slowest content
// to decode and to inflate for its size.
vips::VImage Detailed(int width, int height) {
  const vips::VImage noise = vips::VImage::gaussnoise(
      width, height, vips::VImage::option()->set("sigma", 60.0));
  return noise
      .bandjoin({noise.flip(VIPS_DIRECTION_VERTICAL),
                 noise.flip(VIPS_DIRECTION_HORIZONTAL)})
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation",
                                        VIPS_INTERPRETATION_sRGB));
}

void SaveJpeg(const fs::path& path,
              int width,
              int height,
              bool progressive,
              bool cmyk = false) {
  vips::VImage image = Picture(width, height, cmyk ? 4 : 3);
  image = image.copy(vips::VImage::option()->set(
      "interpretation",
      cmyk ? VIPS_INTERPRETATION_CMYK : VIPS_INTERPRETATION_sRGB));
  image.jpegsave(path.c_str(),
                 vips::VImage::option()->set("interlace", progressive));
}

std::string Chunk(const std::string& type, const std::string& data) {
  std::string out;
  const auto put32 = [&out](std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      out.push_back(static_cast<char>((value >> shift) & 0xFF));
    }
  };
  put32(static_cast<std::uint32_t>(data.size()));
  const std::string body = type + data;
  out += body;
  put32(static_cast<std::uint32_t>(
      crc32(0, reinterpret_cast<const Bytef*>(body.data()),
            static_cast<uInt>(body.size()))));
  return out;
}

// A small PNG whose compressed text chunk inflates to 512 MB.
void SavePngTextBomb(const fs::path& path) {
  const fs::path plain = path.string() + ".plain.png";
  Picture(64, 64, 3).pngsave(plain.c_str());
  std::ifstream in(plain, std::ios::binary);
  std::string png{std::istreambuf_iterator<char>(in), {}};
  fs::remove(plain);
  z_stream stream{};
  deflateInit(&stream, Z_BEST_COMPRESSION);
  const std::string zeros(1 << 20, '\0');
  std::string compressed;
  std::vector<unsigned char> out(1 << 16);
  for (int i = 0; i < 512; ++i) {
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(zeros.data()));
    stream.avail_in = static_cast<uInt>(zeros.size());
    const int flush = i == 511 ? Z_FINISH : Z_NO_FLUSH;
    do {
      stream.next_out = out.data();
      stream.avail_out = static_cast<uInt>(out.size());
      deflate(&stream, flush);
      compressed.append(reinterpret_cast<char*>(out.data()),
                        out.size() - stream.avail_out);
    } while (stream.avail_out == 0);
  }
  deflateEnd(&stream);
  const std::string chunk =
      Chunk("zTXt", std::string("Comment") + '\0' + '\0' + compressed);
  // After the signature (8) and the header chunk (25).
  png.insert(33, chunk);
  std::ofstream(path, std::ios::binary) << png;
}

struct Input {
  const char* name;
  std::function<void(const fs::path&)> make;
};

std::vector<Input> Inputs() {
  return {
      {"wide-65500x1.jpg",
       [](const fs::path& p) { SaveJpeg(p, 65500, 1, false); }},
      {"wide-65500x1-progressive.jpg",
       [](const fs::path& p) { SaveJpeg(p, 65500, 1, true); }},
      {"tall-1x65500.jpg",
       [](const fs::path& p) { SaveJpeg(p, 1, 65500, false); }},
      {"cmyk-6000x4.jpg",
       [](const fs::path& p) { SaveJpeg(p, 6000, 4, false, true); }},
      {"pipe.jpg", [](const fs::path& p) { ::mkfifo(p.c_str(), 0600); }},
      {"huge-16000-baseline.jpg",
       [](const fs::path& p) { SaveJpeg(p, 16000, 16000, false); }},
      {"huge-16000-progressive.jpg",
       [](const fs::path& p) { SaveJpeg(p, 16000, 16000, true); }},
      {"large-10000.png",
       [](const fs::path& p) {
         Picture(10000, 10000, 3)
             .pngsave(p.c_str(), vips::VImage::option()->set("compression", 1));
       }},
      {"large-10000-deflate.tif",
       [](const fs::path& p) {
         Picture(10000, 10000, 3)
             .tiffsave(p.c_str(), vips::VImage::option()->set(
                                      "compression",
                                      VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE));
       }},
      {"detailed-8000.jpg",
       [](const fs::path& p) {
         Detailed(8000, 8000)
             .jpegsave(p.c_str(), vips::VImage::option()->set("Q", 90));
       }},
      {"detailed-5000.png",
       [](const fs::path& p) {
         Detailed(5000, 5000)
             .pngsave(p.c_str(), vips::VImage::option()->set("compression", 1));
       }},
      {"detailed-5000-deflate.tif",
       [](const fs::path& p) {
         Detailed(5000, 5000)
             .tiffsave(p.c_str(), vips::VImage::option()->set(
                                      "compression",
                                      VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE));
       }},
      {"text-bomb.png", SavePngTextBomb},
      {"truncated.jpg",
       [](const fs::path& p) {
         SaveJpeg(p, 3000, 2000, false);
         fs::resize_file(p, fs::file_size(p) * 2 / 3);
       }},
  };
}

struct Stamp {
  off_t size = -1;
  ino_t inode = 0;
  std::int64_t modified_ns = 0;
  bool operator==(const Stamp&) const = default;
};

Stamp StampOf(const fs::path& path) {
  Stamp stamp;
  struct stat info {};
  if (::lstat(path.c_str(), &info) == 0) {
    stamp.size = info.st_size;
    stamp.inode = info.st_ino;
    stamp.modified_ns =
        static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 +
        info.st_mtim.tv_nsec;
  }
  return stamp;
}

// In the child: the thumbnail, the view on the caller's thread, the view
// with its decoding apart; one line of results.
std::string Attack(const fs::path& photo, const fs::path& cache) {
  char line[256];
  const auto images = qbpd::MakeVipsImageOperations(cache.string());
  std::string buffer;
  auto start = Clock::now();
  const bool thumbnail =
      images->GenerateThumbnailAndBuffer(photo.string(), buffer, 85, 70) == 1;
  const long long thumbnail_ms = MsSince(start);

  auto on_thread = qbpd::MakeVipsDisplayControl(/*work_ahead=*/false);
  on_thread->SetViewSize(kViewWidth, kViewHeight);
  start = Clock::now();
  const bool anchor_shown = on_thread->LoadPhoto(photo.string());
  const long long anchor_ms = MsSince(start);
  on_thread.reset();

  // The longest the caller's thread went without coming back to its loop.
  long long held_ms = 0;
  Clock::time_point last;
  auto apart = qbpd::MakeVipsDisplayControl(
      /*work_ahead=*/true, [&](const std::function<bool()>& done) {
        while (!done()) {
          held_ms = std::max(held_ms, MsSince(last));
          std::this_thread::sleep_for(std::chrono::milliseconds(2));
          last = Clock::now();
        }
        held_ms = std::max(held_ms, MsSince(last));
        last = Clock::now();
      });
  apart->SetViewSize(kViewWidth, kViewHeight);
  start = Clock::now();
  last = start;
  const bool shown = apart->LoadPhoto(photo.string());
  held_ms = std::max(held_ms, MsSince(last));
  const long long load_ms = MsSince(start);
  std::snprintf(line, sizeof(line), "%-9s %7lld  %-9s %7lld %7lld  %8lld%s",
                thumbnail ? "made" : "refused", thumbnail_ms,
                shown ? "shown" : "refused", load_ms, held_ms, anchor_ms,
                anchor_shown == shown ? "" : " (anchor differs)");
  return line;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::strcmp(argv[1], "--attack") == 0) {
    if (VIPS_INIT(argv[0]) != 0) {
      return 1;
    }
    const std::string line = Attack(argv[2], argv[3]);
    std::fwrite(line.data(), 1, line.size(), stdout);
    return 0;
  }
  bool keep = false;
  std::string only;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--keep") == 0) {
      keep = true;
    } else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc) {
      only = argv[++i];
    }
  }
  if (VIPS_INIT(argv[0]) != 0) {
    std::fprintf(stderr, "libvips would not start\n");
    return 1;
  }
  std::string pattern =
      (fs::temp_directory_path() / "qbpd-hostile-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    std::perror("mkdtemp");
    return 1;
  }
  const fs::path folder = pattern;
  std::printf("%-30s %7s  %-9s %7s  %-9s %7s %7s  %8s  %7s  %s\n", "input",
              "MB", "thumbnail", "ms", "view", "load ms", "held", "anchor",
              "peak MB", "outcome");
  int crashes = 0;
  int hangs = 0;
  int changed = 0;
  int tried = 0;
  long long longest_held = 0;
  long long longest_anchor = 0;
  for (const Input& input : Inputs()) {
    if (!only.empty() && only != input.name) {
      continue;
    }
    const fs::path photo = folder / input.name;
    input.make(photo);
    const Stamp before = StampOf(photo);
    int pipe_fds[2];
    if (::pipe(pipe_fds) != 0) {
      std::perror("pipe");
      return 1;
    }
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
      ::close(pipe_fds[0]);
      ::dup2(pipe_fds[1], STDOUT_FILENO);
      const std::string cache = (folder / "cache").string();
      ::execl("/proc/self/exe", argv[0], "--attack", photo.c_str(),
              cache.c_str(), static_cast<char*>(nullptr));
      ::_exit(127);
    }
    ::close(pipe_fds[1]);
    ++tried;
    const auto start = Clock::now();
    int status = 0;
    rusage usage{};
    bool hung = false;
    while (::wait4(child, &status, WNOHANG, &usage) == 0) {
      if (Clock::now() - start > kHang) {
        ::kill(child, SIGKILL);
        ::wait4(child, &status, 0, &usage);
        hung = true;
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    std::string line;
    char chunk[512];
    ssize_t got = 0;
    while ((got = ::read(pipe_fds[0], chunk, sizeof(chunk))) > 0) {
      line.append(chunk, static_cast<std::size_t>(got));
    }
    ::close(pipe_fds[0]);
    std::string outcome = "ok";
    if (hung) {
      outcome = "HANG";
      ++hangs;
    } else if (WIFSIGNALED(status)) {
      outcome = std::string("CRASH (") + strsignal(WTERMSIG(status)) + ")";
      ++crashes;
    } else if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      outcome = "exit " + std::to_string(WEXITSTATUS(status));
      ++crashes;
    }
    if (!(StampOf(photo) == before)) {
      outcome += ", file changed";
      ++changed;
    }
    long long held = 0;
    long long anchor = 0;
    if (std::sscanf(line.c_str(), "%*s %*d %*s %*d %lld %lld", &held,
                    &anchor) == 2) {
      longest_held = std::max(longest_held, held);
      longest_anchor = std::max(longest_anchor, anchor);
    }
    std::printf("%-30s %7.1f  %-60s  %7ld  %s\n", input.name, before.size / 1e6,
                line.empty() ? "-" : line.c_str(), usage.ru_maxrss / 1024,
                outcome.c_str());
    if (!keep) {
      fs::remove(photo);
    }
  }
  std::printf(
      "\n%d inputs, %d crashes, %d hangs, %d files changed; the window's "
      "thread held at most %lld ms by a load (anchor, decoding on that "
      "thread: %lld ms)\n",
      tried, crashes, hangs, changed, longest_held, longest_anchor);
  if (!keep) {
    fs::remove_all(folder);
  } else {
    std::printf("files kept in %s\n", folder.c_str());
  }
  return crashes + hangs + changed == 0 ? 0 : 1;
}
