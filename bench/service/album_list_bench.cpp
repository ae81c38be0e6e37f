// Requests per second of qbpd-service for GetAlbumList under a few concurrent
// clients, each the real service client with a session of its own, against
// an account with a few albums. See README.md in this folder.

#include "online/service_client.h"
#include "platform/forms/scripted_host.h"
#include "tests/online/service_process.h"
#include "tests/online/test_photos.h"
#include "tests/support/temp_dir.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr char kDemoEmail[] = "demo@quillbay.test";
// What a build older than the random demonstration password used.
constexpr char kFormerDemoPassword[] = "demo1234";

struct Options {
  std::vector<int> clients = {1, 4, 8};
  int albums = 5;
  double seconds = 5;
  int rounds = 3;
  // Another build of the service, to compare two of them.
  std::string service = QBPD_SERVICE_PROGRAM;
};

// One simulated program: its own host, client and session code.
struct Caller {
  ScriptedHost host;
  std::unique_ptr<ctlExtAPI> client;
  std::string auth_code;
  long requests = 0;
  long failures = 0;
  double busy_seconds = 0;
};

// Logs in on the calling thread, which also makes the client's transport
// there (libcurl's global start-up is not for several threads at once).
std::unique_ptr<Caller> LoggedInCaller(const std::string& site,
                                       const std::string& password) {
  auto caller = std::make_unique<Caller>();
  caller->client = MakeServiceClient(caller->host);
  StringArray session;
  std::string code;
  std::string text;
  if (!caller->client->LoginUser(site, kDemoEmail, password, session, code,
                                 text)) {
    throw std::runtime_error("login failed: " + code + " " + text);
  }
  caller->auth_code = session[0];
  return caller;
}

// Each caller asks for the album list over and over until the time is up;
// an answer without the expected albums counts as a failure.
double RunLoad(std::vector<std::unique_ptr<Caller>>& callers,
               const std::string& site,
               int expected_albums,
               double seconds) {
  std::atomic<int> ready = 0;
  std::atomic<bool> go = false;
  std::vector<std::thread> threads;
  const auto duration = std::chrono::duration<double>(seconds);
  for (auto& caller : callers) {
    caller->requests = 0;
    caller->failures = 0;
    threads.emplace_back([&, c = caller.get()] {
      ++ready;
      while (!go) {
        std::this_thread::yield();
      }
      const auto start = Clock::now();
      while (Clock::now() - start < duration) {
        TextGrid albums;
        std::string code;
        std::string text;
        const bool ok =
            c->client->GetAlbumList(site, c->auth_code, albums, code, text);
        ++c->requests;
        if (!ok || albums.Columns() != expected_albums) {
          ++c->failures;
        }
      }
      c->busy_seconds =
          std::chrono::duration<double>(Clock::now() - start).count();
    });
  }
  while (ready < static_cast<int>(callers.size())) {
    std::this_thread::yield();
  }
  const auto start = Clock::now();
  go = true;
  for (auto& thread : threads) {
    thread.join();
  }
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

std::vector<int> ParseList(const std::string& text) {
  std::vector<int> out;
  std::stringstream in(text);
  std::string item;
  while (std::getline(in, item, ',')) {
    out.push_back(std::max(1, std::atoi(item.c_str())));
  }
  return out;
}

Options ParseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const std::string value = argv[i + 1];
    if (name == "--clients") {
      options.clients = ParseList(value);
    } else if (name == "--albums") {
      options.albums = std::max(1, std::atoi(value.c_str()));
    } else if (name == "--seconds") {
      options.seconds = std::max(0.5, std::atof(value.c_str()));
    } else if (name == "--rounds") {
      options.rounds = std::max(1, std::atoi(value.c_str()));
    } else if (name == "--service") {
      options.service = value;
    } else {
      throw std::runtime_error("unknown option " + name);
    }
  }
  return options;
}

int Main(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  testing::TempDir scratch;
  testing::ServiceProcess service(options.service, scratch.path() / "service",
                                  {"--seed-demo"});
  if (!service.ok()) {
    throw std::runtime_error(service.error());
  }
  std::string password = service.demo_password();
  if (password.empty()) {
    password = kFormerDemoPassword;
  }

  // The demo account has one album; uploads make the others.
  const fs::path photo = scratch.path() / "photo.jpg";
  std::ofstream(photo, std::ios::binary) << testing::MakeJpeg(64, 48, 1, 90);
  {
    auto maker = LoggedInCaller(service.site(), password);
    for (int i = 2; i <= options.albums; ++i) {
      std::string code;
      std::string text;
      std::string album;
      std::string image;
      bool fatal = false;
      const std::string url =
          service.base() + "/exuploadimages?authcode=" + maker->auth_code +
          "&numimages=1&albumid=&albumname=Album " + std::to_string(i) +
          "&sourcecode=QBC&file=" + photo.string();
      if (!maker->client->UploadFile(url, photo.string(), code, text, "File",
                                     album, image, fatal)) {
        throw std::runtime_error("upload failed: " + code + " " + text);
      }
    }
  }

  std::printf(
      "GetAlbumList of an account with %d albums, %.1f s per run, "
      "median of %d runs\n",
      options.albums, options.seconds, options.rounds);
  bool all_good = true;
  for (int count : options.clients) {
    std::vector<std::unique_ptr<Caller>> callers;
    for (int i = 0; i < count; ++i) {
      callers.push_back(LoggedInCaller(service.site(), password));
    }
    std::vector<double> rates;
    std::vector<double> latencies_ms;
    long failures = 0;
    for (int round = 0; round < options.rounds; ++round) {
      const double elapsed =
          RunLoad(callers, service.site(), options.albums, options.seconds);
      long requests = 0;
      double busy = 0;
      for (const auto& caller : callers) {
        requests += caller->requests;
        failures += caller->failures;
        busy += caller->busy_seconds;
      }
      rates.push_back(static_cast<double>(requests) / elapsed);
      latencies_ms.push_back(busy * 1000 / static_cast<double>(requests));
    }
    std::printf(
        "%2d client(s): %8.0f requests/s, %.2f ms per request "
        "(runs: ",
        count, Median(rates), Median(latencies_ms));
    for (size_t i = 0; i < rates.size(); ++i) {
      std::printf("%s%.0f", i == 0 ? "" : ", ", rates[i]);
    }
    std::printf(")%s\n", failures == 0 ? "" : "  FAILURES");
    std::fflush(stdout);
    all_good = all_good && failures == 0;
  }
  if (service.Terminate() != 0) {
    std::fprintf(stderr, "the service did not stop cleanly\n");
  }
  return all_good ? 0 : 1;
}

}  // namespace
}  // namespace qbpd

int main(int argc, char** argv) {
  try {
    return qbpd::Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "album_list_bench: %s\n", error.what());
    return 1;
  }
}
