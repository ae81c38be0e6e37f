#ifndef QBPD_TESTS_SERVICE_SERVICE_FIXTURE_H_
#define QBPD_TESTS_SERVICE_SERVICE_FIXTURE_H_

#include "service/server.h"
#include "service/service_core.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace qbpd::service {

inline constexpr std::size_t kTestUploadLimit = 256 * 1024;
// The tests choose the demonstration account's password.
inline constexpr char kTestDemoPassword[] = "test-demo-password";

// The smallest files whose headers read whole: a PNG signature with its
// image header (16 x 16, 8-bit RGB, CRC included), and a JPEG's start, its
// frame header (16 x 16, three components) and its end. Neither holds
// pixels: the service checks headers, it decodes nothing.
inline const std::string kPng = std::string(
    "\x89PNG\r\n\x1A\n"
    "\0\0\0\x0DIHDR\0\0\0\x10\0\0\0\x10\x08\x02\0\0\0\x90\x91\x68\x36",
    33);
inline const std::string kJpeg = std::string(
    "\xFF\xD8"
    "\xFF\xC0\0\x11\x08\0\x10\0\x10\x03\x01\x22\0\x02\x11\x01\x03\x11\x01"
    "\xFF\xD9",
    23);
// Files that begin as a photo but whose header is cut short or makes no
// sense: refused like any other file that is no photo.
inline const std::string kJpegMagicOnly =
    std::string("\xFF\xD8\xFF\xE0", 4) + "rest of jpeg";
inline const std::string kPngMagicOnly =
    std::string("\x89PNG\r\n\x1A\n", 8) + "rest of png";
inline const std::string kJpegOfNoSize = std::string(
    "\xFF\xD8"
    "\xFF\xC0\0\x11\x08\0\0\0\x10\x03\x01\x22\0\x02\x11\x01\x03\x11\x01"
    "\xFF\xD9",
    23);

// A running service on a free loopback port, with a clock the test moves.
// The fields of a sign-up of an account with address and card.
inline std::vector<std::string> SignUpFields() {
  return {"Ann",
          "Lee",
          "ann@example.test",
          "secret1",
          "1 Main Street",
          "",
          "San Francisco",
          "CA",
          "94105",
          "415-555-0100",
          "",
          "Ann Lee",
          "4111 1111 1111 1111",
          "01",
          "2031",
          "94105"};
}

class ServiceTest : public ::testing::Test {
 protected:
  using json = nlohmann::json;

  void SetUp() override {
    ServiceOptions options;
    options.data_dir = dir_.path();
    options.seed_demo = true;
    options.demo_password = kTestDemoPassword;
    options.max_upload_bytes = kTestUploadLimit;
    options.now = [this] { return now_.load(); };
    if (adjust_) {
      adjust_(options);
    }
    core_ = std::make_unique<ServiceCore>(std::move(options));
    server_ = std::make_unique<Server>(*core_);
    port_ = server_->Bind("127.0.0.1", 0);
    ASSERT_GT(port_, 0);
    thread_ = std::thread([this] { server_->Run(); });
    client_ = std::make_unique<httplib::Client>("127.0.0.1", port_);
    client_->set_read_timeout(10, 0);
  }

  void TearDown() override {
    if (server_) {
      server_->Stop();
    }
    if (thread_.joinable()) {
      thread_.join();
    }
  }

  // Posts one operation and returns the HTTP status and the parsed answer.
  std::pair<int, json> Call(const std::string& operation, const json& body) {
    return Raw(operation, body.dump());
  }

  std::pair<int, json> Raw(const std::string& operation,
                           const std::string& body) {
    auto res =
        client_->Post(("/api/" + operation).c_str(), body, "application/json");
    if (!res) {
      ADD_FAILURE() << "no answer to " << operation;
      return {0, json()};
    }
    return {res->status, json::parse(res->body, nullptr, false)};
  }

  std::string Login(const std::string& email, const std::string& password) {
    auto [status, answer] =
        Call("LoginUser", {{"email", email}, {"password", password}});
    EXPECT_EQ(status, 200);
    EXPECT_TRUE(answer["ok"]) << answer.dump();
    return answer["session"][0];
  }

  std::string DemoLogin() { return Login(kDemoEmail, kTestDemoPassword); }

  std::pair<int, json> Upload(const std::string& code,
                              const std::string& album_id,
                              const std::string& album_name,
                              const std::string& content,
                              const std::string& file = "C:/photos/a.png") {
    httplib::Params params = {{"authcode", code},    {"numimages", "1"},
                              {"albumid", album_id}, {"albumname", album_name},
                              {"sourcecode", "QBC"}, {"file", file}};
    const std::string path =
        httplib::append_query_params("/exuploadimages", params);
    httplib::MultipartFormDataItems items = {
        {"File", content, "a.png", "application/octet-stream"}};
    auto res = client_->Post(path.c_str(), items);
    if (!res) {
      ADD_FAILURE() << "no answer to the upload";
      return {0, json()};
    }
    return {res->status, json::parse(res->body, nullptr, false)};
  }

  std::pair<int, std::string> Page(const std::string& path) {
    auto res = client_->Get(path.c_str());
    if (!res) {
      ADD_FAILURE() << "no answer to " << path;
      return {0, ""};
    }
    return {res->status, res->body};
  }

  static std::vector<std::string> ValidFields() { return SignUpFields(); }

  testing::TempDir dir_;
  // 2026-03-01, so that the cards of the tests are current.
  std::atomic<std::int64_t> now_{1772323200};
  // Set by a derived fixture's constructor to change the service's options.
  std::function<void(ServiceOptions&)> adjust_;
  std::unique_ptr<ServiceCore> core_;
  std::unique_ptr<Server> server_;
  std::thread thread_;
  int port_ = 0;
  std::unique_ptr<httplib::Client> client_;
};

}  // namespace qbpd::service

#endif  // QBPD_TESTS_SERVICE_SERVICE_FIXTURE_H_
