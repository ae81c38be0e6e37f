#include "platform/loopback_port.h"
#include "tests/service/service_fixture.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <filesystem>
#include <fstream>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

extern char** environ;

namespace {

// qbpd-service as a child process with its standard output on a pipe.
struct Child {
  pid_t pid = -1;
  int out = -1;

  explicit Child(std::vector<std::string> args) {
    int fds[2];
    if (pipe(fds) != 0) {
      return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    args.insert(args.begin(), QBPD_SERVICE_PROGRAM);
    std::vector<char*> argv;
    for (auto& arg : args) {
      argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    if (posix_spawn(&pid, QBPD_SERVICE_PROGRAM, &actions, nullptr, argv.data(),
                    environ) != 0) {
      pid = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    out = fds[0];
  }

  ~Child() {
    if (pid > 0) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
    if (out >= 0) {
      close(out);
    }
  }

  // The next line of output without its line end, waiting at most `ms`.
  std::string NextLine(int ms) {
    pollfd fd{out, POLLIN, 0};
    while (pending.find('\n') == std::string::npos && poll(&fd, 1, ms) > 0) {
      char buffer[256];
      const ssize_t n = read(out, buffer, sizeof buffer);
      if (n <= 0) {
        break;
      }
      pending.append(buffer, static_cast<size_t>(n));
    }
    const std::size_t end = pending.find('\n');
    if (end == std::string::npos) {
      return std::exchange(pending, std::string());
    }
    std::string line = pending.substr(0, end);
    pending.erase(0, end + 1);
    return line;
  }
  std::string pending;

  // The exit status after the child ended, or -1.
  int Wait() {
    int status = 0;
    if (waitpid(pid, &status, 0) != pid) {
      return -1;
    }
    pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
};

TEST(ServiceProgram, PrintsItsPortServesAndStopsOnSigterm) {
  qbpd::testing::TempDir dir;
  Child child(
      {"--port", "0", "--data-dir", dir.path().string(), "--seed-demo"});
  ASSERT_GT(child.pid, 0);
  const std::string line = child.NextLine(5000);
  const std::string prefix = "listening on 127.0.0.1:";
  ASSERT_EQ(line.rfind(prefix, 0), 0u) << line;
  const int port = std::stoi(line.substr(prefix.size()));

  // The demonstration account's random password is shown once, and kept in
  // the data folder for its owner only.
  const std::string demo = child.NextLine(5000);
  const std::string shown = "demo account demo@quillbay.test, password ";
  ASSERT_EQ(demo.rfind(shown, 0), 0u) << demo;
  const std::string password =
      demo.substr(shown.size(), demo.find(' ', shown.size()) - shown.size());
  EXPECT_GE(password.size(), 12u);
  const std::filesystem::path kept = dir.path() / "demo-account.txt";
  EXPECT_NE(demo.find(kept.string()), std::string::npos) << demo;
  struct stat info {};
  ASSERT_EQ(stat(kept.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  std::ifstream file(kept);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  EXPECT_NE(text.find("Password: " + password + "\n"), std::string::npos);

  httplib::Client client("127.0.0.1", port);
  auto login = [&client](const std::string& word) {
    auto res = client.Post(
        "/api/LoginUser",
        R"({"email":"demo@quillbay.test","password":")" + word + "\"}",
        "application/json");
    return res ? res->body : std::string("no answer");
  };
  EXPECT_NE(login(password).find("\"ok\":true"), std::string::npos);
  // The password of earlier versions opens nothing.
  EXPECT_NE(login("demo1234").find("\"ok\":false"), std::string::npos);

  ASSERT_EQ(kill(child.pid, SIGTERM), 0);
  EXPECT_EQ(child.Wait(), 0);
  // The data folder is kept for the next start, which keeps the password.
  EXPECT_TRUE(std::filesystem::exists(dir / "service.db"));
  Child again(
      {"--port", "0", "--data-dir", dir.path().string(), "--seed-demo"});
  const std::string again_line = again.NextLine(5000);
  ASSERT_EQ(again_line.rfind(prefix, 0), 0u) << again_line;
  httplib::Client again_client("127.0.0.1",
                               std::stoi(again_line.substr(prefix.size())));
  auto res = again_client.Post(
      "/api/LoginUser",
      R"({"email":"demo@quillbay.test","password":")" + password + "\"}",
      "application/json");
  ASSERT_TRUE(res);
  EXPECT_NE(res->body.find("\"ok\":true"), std::string::npos) << res->body;
  std::ifstream file_again(kept);
  EXPECT_EQ(std::string((std::istreambuf_iterator<char>(file_again)), {}),
            text);
}

// Facing a network, the service runs behind nginx: requests and uploads pass
// through it, the service learns each client's address from it (a client
// cannot name its own), and nginx ends with the service, even a killed one.
TEST(ServiceProgram, BehindItsFrontServesNamesTheClientAndEndsWithIt) {
  qbpd::testing::TempDir dir;
  qbpd::HeldLoopbackPort held;
  const std::string port = std::to_string(held.port());
  Child child({"--port", port, "--data-dir", dir.path().string(), "--seed-demo",
               "--front"});
  ASSERT_GT(child.pid, 0);
  const std::string line = child.NextLine(15000);
  ASSERT_EQ(line.rfind("listening on 127.0.0.1:" + port + " (nginx", 0), 0u)
      << line;
  const std::string demo = child.NextLine(5000);
  const std::string shown = "demo account demo@quillbay.test, password ";
  ASSERT_EQ(demo.rfind(shown, 0), 0u) << demo;
  const std::string password =
      demo.substr(shown.size(), demo.find(' ', shown.size()) - shown.size());

  httplib::Client client("127.0.0.1", held.port());
  client.set_read_timeout(10, 0);
  const auto login = [&](const std::string& email, const std::string& word,
                         const std::string& claimed_address) {
    httplib::Headers headers = {{"X-Real-IP", claimed_address}};
    auto res = client.Post(
        "/api/LoginUser", headers,
        R"({"email":")" + email + R"(","password":")" + word + "\"}",
        "application/json");
    return res ? res->body : std::string("no answer");
  };
  const std::string session_answer =
      login("demo@quillbay.test", password, "10.0.0.1");
  ASSERT_NE(session_answer.find("\"ok\":true"), std::string::npos)
      << session_answer;
  const std::string code = nlohmann::json::parse(session_answer)["session"][0];

  // An upload passes whole through the front's buffer.
  httplib::MultipartFormDataItems items = {
      {"File", qbpd::service::kJpeg, "a.jpg", "application/octet-stream"}};
  auto uploaded = client.Post(
      ("/exuploadimages?authcode=" + code + "&albumname=Front").c_str(), items);
  ASSERT_TRUE(uploaded);
  EXPECT_NE(uploaded->body.find("\"ok\":true"), std::string::npos)
      << uploaded->body;

  // Ten failed guesses, each claiming another address: the front names the
  // real one, so the eleventh try of that address waits, right password or
  // not.
  for (int i = 0; i < 10; ++i) {
    EXPECT_NE(login("nobody" + std::to_string(i) + "@example.test", "x",
                    "10.0.1." + std::to_string(i))
                  .find("\"2006\""),
              std::string::npos);
  }
  EXPECT_NE(login("demo@quillbay.test", password, "10.0.2.1").find("\"2022\""),
            std::string::npos);

  // The service killed, nginx follows.
  std::ifstream pid_file(dir.path() / "front" / "nginx.pid");
  pid_t front = 0;
  pid_file >> front;
  ASSERT_GT(front, 0);
  ASSERT_EQ(kill(child.pid, SIGKILL), 0);
  child.Wait();
  bool gone = false;
  for (int i = 0; i < 500 && !gone; ++i) {  // a bound, not a measurement
    gone = kill(front, 0) != 0;
    if (!gone) {
      usleep(20000);
    }
  }
  EXPECT_TRUE(gone);
}

TEST(ServiceProgram, RefusesBadArguments) {
  const std::vector<std::vector<std::string>> cases = {
      {"--port", "0"},                                     // no data folder
      {"--port", "x1", "--data-dir", "/tmp/q"},            // port not a number
      {"--port", "70000", "--data-dir", "/tmp/q"},         // port out of range
      {"--data-dir", "/tmp/q", "--verbose"},               // unknown option
      {"--port", "0", "--data-dir", "/tmp/q", "--front"},  // front: no port 0
  };
  for (const auto& args : cases) {
    Child child(args);
    ASSERT_GT(child.pid, 0);
    EXPECT_EQ(child.Wait(), 2) << args.back();
  }
}

}  // namespace
