// Upload throughput over loopback: the service client's UploadFile, one
// request per photo as the upload engine sends them, against the curl program
// posting the same files to the same qbpd-service in the form field "File".
// See README.md in this folder for how to run it and what it reports.

#include "online/service_client.h"
#include "platform/forms/scripted_host.h"
#include "platform/http_transport.h"
#include "tests/online/service_process.h"
#include "tests/online/test_photos.h"
#include "tests/support/temp_dir.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr char kDemoEmail[] = "demo@quillbay.test";
// 2048 x 1536 of fine noise at quality 95 comes to about 4 MB.
constexpr int kWidth = 2048;
constexpr int kHeight = 1536;
constexpr int kQuality = 95;

struct Options {
  int photos = 100;
  int rounds = 3;
  std::string curl = "curl";
};

// One run's outcome: how long it took and how many photos the service took.
struct Run {
  double seconds = 0;
  // Processor time (user and system) of the uploading side alone.
  double cpu_seconds = 0;
  int accepted = 0;
};

// Processor time used so far by this process (RUSAGE_SELF) or by its children
// that have been waited for (RUSAGE_CHILDREN).
double CpuSeconds(int who) {
  rusage usage{};
  getrusage(who, &usage);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + t.tv_usec / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The upload address exactly as the upload engine builds it.
std::string UploadUrl(const std::string& site_address,
                      const std::string& auth_code,
                      const std::string& album_id,
                      const std::string& album_name,
                      const std::string& path) {
  return site_address + "/exuploadimages?authcode=" + auth_code +
         "&numimages=1&albumid=" + album_id + "&albumname=" + album_name +
         "&sourcecode=QBC&file=" + path;
}

// The first photo makes the album, the rest go into it, as in the program.
Run UploadWithClient(ctlExtAPI& client,
                     const std::string& site_address,
                     const std::string& auth_code,
                     const std::string& album_name,
                     const std::vector<std::string>& photos) {
  Run run;
  std::string album_id;
  const double cpu_start = CpuSeconds(RUSAGE_SELF);
  const auto start = Clock::now();
  for (const std::string& photo : photos) {
    std::string code;
    std::string text;
    std::string image;
    bool fatal = false;
    const std::string url =
        UploadUrl(site_address, auth_code, album_id, album_name, photo);
    if (client.UploadFile(url, photo, code, text, "File", album_id, image,
                          fatal)) {
      ++run.accepted;
    } else {
      std::fprintf(stderr, "client upload refused: %s %s\n", code.c_str(),
                   text.c_str());
      if (fatal) {
        break;
      }
    }
  }
  run.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  run.cpu_seconds = CpuSeconds(RUSAGE_SELF) - cpu_start;
  return run;
}

// Runs `arguments` and waits; its standard output goes to `output`.
int RunProgram(const std::vector<std::string>& arguments,
               const fs::path& output) {
  std::vector<std::string> copy = arguments;
  std::vector<char*> argv;
  for (std::string& argument : copy) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  pid_t pid = -1;
  const int spawned =
      posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) {
    return -1;
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int CountOccurrences(const std::string& text, const std::string& needle) {
  int count = 0;
  for (size_t at = text.find(needle); at != std::string::npos;
       at = text.find(needle, at + needle.size())) {
    ++count;
  }
  return count;
}

// One curl process posts every photo, one request each, over one kept-alive
// connection (--next between them), to the album `album_id`, with the URL
// made valid the way the client's transport makes it. With `no_expect`, curl
// is told not to wait for "100 Continue" before each body, as the client
// doesn't.
Run UploadWithCurl(const std::string& curl,
                   bool no_expect,
                   const std::string& site_address,
                   const std::string& auth_code,
                   const std::string& album_id,
                   const std::vector<std::string>& photos,
                   const fs::path& output) {
  std::vector<std::string> arguments = {curl, "--silent", "--show-error"};
  for (size_t i = 0; i < photos.size(); ++i) {
    if (i > 0) {
      arguments.push_back("--next");
    }
    if (no_expect) {
      arguments.push_back("-H");
      arguments.push_back("Expect:");
    }
    arguments.push_back("-F");
    arguments.push_back("File=@" + photos[i] + ";type=image/jpeg");
    arguments.push_back(MakeValidUrl(EncodeUploadUrl(
        UploadUrl(site_address, auth_code, album_id, "", photos[i]))));
  }
  Run run;
  const double cpu_start = CpuSeconds(RUSAGE_CHILDREN);
  const auto start = Clock::now();
  const int status = RunProgram(arguments, output);
  run.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  run.cpu_seconds = CpuSeconds(RUSAGE_CHILDREN) - cpu_start;
  if (status != 0) {
    std::fprintf(stderr, "curl ended with status %d\n", status);
  }
  std::ifstream in(output);
  std::stringstream answers;
  answers << in.rdbuf();
  run.accepted = CountOccurrences(answers.str(), "\"ok\":true");
  return run;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

Options ParseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    if (name == "--photos") {
      options.photos = std::max(1, std::atoi(argv[i + 1]));
    } else if (name == "--rounds") {
      options.rounds = std::max(1, std::atoi(argv[i + 1]));
    } else if (name == "--curl") {
      options.curl = argv[i + 1];
    } else {
      throw std::runtime_error("unknown option " + name);
    }
  }
  return options;
}

int Main(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  testing::TempDir scratch;
  const fs::path photo_folder = scratch.path() / "photos";
  fs::create_directories(photo_folder);

  std::vector<std::string> photos;
  std::uintmax_t total_bytes = 0;
  for (int i = 0; i < options.photos; ++i) {
    const std::string jpeg = testing::MakeJpeg(
        kWidth, kHeight, static_cast<std::uint32_t>(i + 1), kQuality);
    if (jpeg.empty()) {
      throw std::runtime_error("could not make a JPEG");
    }
    const fs::path path =
        photo_folder / ("IMG_" + std::to_string(1000 + i) + ".jpg");
    std::ofstream(path, std::ios::binary) << jpeg;
    photos.push_back(path.string());
    total_bytes += jpeg.size();
  }
  const double megabytes = static_cast<double>(total_bytes) / 1e6;
  std::printf("%d photos, %.2f MB in all (%.2f MB each on average)\n",
              options.photos, megabytes, megabytes / options.photos);

  testing::ServiceProcess service(QBPD_SERVICE_PROGRAM,
                                  scratch.path() / "service", {"--seed-demo"});
  if (!service.ok()) {
    throw std::runtime_error(service.error());
  }
  ScriptedHost host;
  std::unique_ptr<ctlExtAPI> client = MakeServiceClient(host);
  StringArray session;
  std::string code;
  std::string text;
  if (!client->LoginUser(service.site(), kDemoEmail, service.demo_password(),
                         session, code, text)) {
    throw std::runtime_error("login failed: " + code + " " + text);
  }
  // The curl runs go into an album of their own, made by one upload.
  std::string curl_album;
  {
    std::string image;
    bool fatal = false;
    if (!client->UploadFile(
            UploadUrl(service.base(), session[0], "", "curl runs", photos[0]),
            photos[0], code, text, "File", curl_album, image, fatal)) {
      throw std::runtime_error("first upload failed: " + code + " " + text);
    }
  }

  std::vector<double> client_rates;
  std::vector<double> curl_rates;
  std::vector<double> curl_no_expect_rates;
  // Processor milliseconds per photo of each uploader.
  std::vector<double> client_cpu;
  std::vector<double> curl_cpu;
  std::vector<double> curl_no_expect_cpu;
  const fs::path curl_output = scratch.path() / "curl-answers.txt";
  for (int round = 1; round <= options.rounds; ++round) {
    // The two take turns, so that a change in the machine's load or the
    // disk's state falls on both alike.
    const Run by_client =
        UploadWithClient(*client, service.base(), session[0],
                         "client round " + std::to_string(round), photos);
    const Run by_curl =
        UploadWithCurl(options.curl, /*no_expect=*/false, service.base(),
                       session[0], curl_album, photos, curl_output);
    const Run by_curl_no_expect =
        UploadWithCurl(options.curl, /*no_expect=*/true, service.base(),
                       session[0], curl_album, photos, curl_output);
    for (const Run* run : {&by_client, &by_curl, &by_curl_no_expect}) {
      if (run->accepted != options.photos) {
        std::fprintf(stderr, "round %d: only %d of %d photos accepted\n", round,
                     run->accepted, options.photos);
        return 1;
      }
    }
    client_rates.push_back(megabytes / by_client.seconds);
    curl_rates.push_back(megabytes / by_curl.seconds);
    curl_no_expect_rates.push_back(megabytes / by_curl_no_expect.seconds);
    const auto per_photo_ms = [&](const Run& run) {
      return run.cpu_seconds * 1000 / options.photos;
    };
    client_cpu.push_back(per_photo_ms(by_client));
    curl_cpu.push_back(per_photo_ms(by_curl));
    curl_no_expect_cpu.push_back(per_photo_ms(by_curl_no_expect));
    std::printf(
        "round %d: client %.3f s (%.1f MB/s), curl %.3f s (%.1f MB/s), "
        "curl without Expect %.3f s (%.1f MB/s)\n",
        round, by_client.seconds, client_rates.back(), by_curl.seconds,
        curl_rates.back(), by_curl_no_expect.seconds,
        curl_no_expect_rates.back());
    std::fflush(stdout);
  }
  const double client_median = Median(client_rates);
  const double curl_median = Median(curl_rates);
  const double curl_no_expect_median = Median(curl_no_expect_rates);
  std::printf(
      "median of %d rounds: client %.1f MB/s (%.1f photos/s), curl %.1f MB/s, "
      "curl without Expect %.1f MB/s\n"
      "ratio client/curl %.3f, client/curl without Expect %.3f\n",
      options.rounds, client_median, client_median / megabytes * options.photos,
      curl_median, curl_no_expect_median, client_median / curl_median,
      client_median / curl_no_expect_median);
  std::printf(
      "processor time per photo (median): client %.2f ms, curl %.2f ms, "
      "curl without Expect %.2f ms\n",
      Median(client_cpu), Median(curl_cpu), Median(curl_no_expect_cpu));
  client.reset();
  if (service.Terminate() != 0) {
    std::fprintf(stderr, "the service did not stop cleanly\n");
  }
  return 0;
}

}  // namespace
}  // namespace qbpd

int main(int argc, char** argv) {
  try {
    return qbpd::Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "upload_bench: %s\n", error.what());
    return 1;
  }
}
