#include "platform/http_transport.h"

#include "tests/online/test_server.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <future>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {
namespace {

using testing::ClosingListener;
using testing::Gate;
using testing::TempDir;
using testing::TestServer;
using testing::UnusedPort;

HttpResponse Send(HttpTransport& transport,
                  const HttpRequest& request,
                  int* pumps = nullptr) {
  return transport.Perform(request, [pumps] {
    if (pumps != nullptr) {
      ++*pumps;
    }
  });
}

TEST(MakeValidUrlTest, EscapesWhatAUrlCannotHold) {
  struct Case {
    const char* raw;
    const char* valid;
  };
  const Case cases[] = {
      // Blanks in a query value and in the path.
      {"http://h:1/up load?name=My album&x=1",
       "http://h:1/up%20load?name=My%20album&x=1"},
      // A "#" is no fragment: the program never builds one.
      {"http://h/a?file=/p/#1.jpg", "http://h/a?file=/p/%231.jpg"},
      // A "%" with two hex digits is kept, a lone one escaped.
      {"http://h/a?v=100%&w=%41", "http://h/a?v=100%25&w=%41"},
      // Quotes, brackets after the host, backslashes, bytes outside ASCII.
      {"http://h/a?f=C:\\x \"y\"<z>[1]",
       "http://h/a?f=C:%5Cx%20%22y%22%3Cz%3E%5B1%5D"},
      {"http://h/a?f=\xC3\xA9t\xC3\xA9", "http://h/a?f=%C3%A9t%C3%A9"},
      // An IPv6 host keeps its brackets.
      {"http://[::1]:80/a b", "http://[::1]:80/a%20b"},
      // Nothing to do.
      {"https://h/api/LoginUser", "https://h/api/LoginUser"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(MakeValidUrl(c.raw), c.valid) << c.raw;
  }
}

TEST(MakeValidUrlTest, EscapeQueryValueKeepsOnlyUnreserved) {
  EXPECT_EQ(EscapeQueryValue("a b&c=d+e/f~g.h_i-j"),
            "a%20b%26c%3Dd%2Be%2Ff~g.h_i-j");
  EXPECT_EQ(EscapeQueryValue(""), "");
}

TEST(HttpTransportTest, PostsABodyAndReadsTheAnswer) {
  TestServer server;
  std::string seen_type;
  server.server().Post(
      "/api/Echo", [&](const httplib::Request& req, httplib::Response& res) {
        seen_type = req.get_header_value("Content-Type");
        res.set_content("{\"got\":" + req.body + "}", "application/json");
      });
  server.Start();

  auto transport = MakeCurlTransport();
  HttpRequest request;
  request.method = "POST";
  request.url = server.base() + "/api/Echo";
  request.headers.emplace_back("Content-Type", "application/json");
  request.body = R"({"email":"a@b.test","n":[1,2]})";
  HttpResponse response = Send(*transport, request);

  EXPECT_EQ(response.failure, HttpFailure::kNone) << response.error_text;
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(response.body, R"({"got":{"email":"a@b.test","n":[1,2]}})");
  EXPECT_EQ(response.content_type, "application/json");
  EXPECT_EQ(seen_type, "application/json");

  // The same transport serves a second request.
  response = Send(*transport, request);
  EXPECT_EQ(response.status, 200);
}

TEST(HttpTransportTest, AnErrorStatusIsAnAnswerNotAFailure) {
  TestServer server;
  server.server().Get("/broken",
                      [](const httplib::Request&, httplib::Response& res) {
                        res.status = 500;
                        res.set_content("<html>oops</html>", "text/html");
                      });
  server.Start();
  auto transport = MakeCurlTransport();
  HttpRequest request;
  request.url = server.base() + "/broken";
  HttpResponse response = Send(*transport, request);
  EXPECT_EQ(response.failure, HttpFailure::kNone);
  EXPECT_EQ(response.status, 500);
  EXPECT_EQ(response.body, "<html>oops</html>");
}

TEST(HttpTransportTest, AnUnescapedUrlReachesTheServerWithItsPathAndQuery) {
  TestServer server;
  std::string path;
  httplib::Params params;
  server.server().Post(
      "/ex upload", [&](const httplib::Request& req, httplib::Response& res) {
        path = req.path;
        params = req.params;
        res.set_content("{}", "application/json");
      });
  server.Start();
  auto transport = MakeCurlTransport();
  HttpRequest request;
  request.method = "POST";
  request.url =
      server.base() + "/ex upload?albumname=My album&file=/home/u/a b#2.jpg";
  HttpResponse response = Send(*transport, request);
  ASSERT_EQ(response.failure, HttpFailure::kNone) << response.error_text;
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(path, "/ex upload");
  ASSERT_EQ(params.count("albumname"), 1u);
  EXPECT_EQ(params.find("albumname")->second, "My album");
  ASSERT_EQ(params.count("file"), 1u);
  EXPECT_EQ(params.find("file")->second, "/home/u/a b#2.jpg");
}

TEST(HttpTransportTest, AFilePartArrivesInItsFieldWithTheFileBytes) {
  TempDir dir;
  constexpr char kBytes[] = "\xFF\xD8\xFF\xE0 photo \x00\x01\x02 end";
  std::string bytes(kBytes, sizeof(kBytes) - 1);
  auto photo = dir.WriteFile("my photo.jpg", bytes);
  TestServer server;
  std::string content;
  std::string filename;
  std::string type;
  bool has_field = false;
  server.server().Post(
      "/up", [&](const httplib::Request& req, httplib::Response& res) {
        has_field = req.has_file("File");
        if (has_field) {
          const auto& file = req.get_file_value("File");
          content = file.content;
          filename = file.filename;
          type = file.content_type;
        }
        res.set_content("{}", "application/json");
      });
  server.Start();
  auto transport = MakeCurlTransport();
  HttpRequest request;
  request.method = "POST";
  request.url = server.base() + "/up";
  request.file = HttpFilePart{"File", photo.string(), "image/jpeg"};
  HttpResponse response = Send(*transport, request);
  ASSERT_EQ(response.failure, HttpFailure::kNone) << response.error_text;
  ASSERT_TRUE(has_field);
  EXPECT_EQ(content, bytes);
  EXPECT_EQ(filename, "my photo.jpg");
  EXPECT_EQ(type, "image/jpeg");
}

TEST(HttpTransportTest, AFileThatCannotBeReadIsABadRequest) {
  TempDir dir;
  auto transport = MakeCurlTransport();
  HttpRequest request;
  request.method = "POST";
  request.url = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/up";
  request.file = HttpFilePart{"File", (dir / "gone.jpg").string()};
  HttpResponse response = Send(*transport, request);
  EXPECT_EQ(response.failure, HttpFailure::kBadRequest);
  EXPECT_NE(response.error_text.find("gone.jpg"), std::string::npos);

  // A named pipe under the file's name is refused without waiting for a
  // writer; should the transport wait, the test plays the writer once.
  const std::string fifo = (dir / "pipe.jpg").string();
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  request.file = HttpFilePart{"File", fifo};
  std::future<HttpResponse> answer =
      std::async(std::launch::async, [&] { return Send(*transport, request); });
  if (answer.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
    ADD_FAILURE() << "the transport waited on the named pipe";
    const int writer = ::open(fifo.c_str(), O_WRONLY);
    ::close(writer);
  }
  response = answer.get();
  EXPECT_EQ(response.failure, HttpFailure::kBadRequest);
  EXPECT_NE(response.error_text.find("pipe.jpg"), std::string::npos);
}

TEST(HttpTransportTest, ACancelFromThePumpEndsTheRequestAtOnce) {
  TestServer server;
  Gate gate;
  server.server().Get("/slow",
                      [&](const httplib::Request&, httplib::Response& res) {
                        gate.Wait();
                        res.set_content("late", "text/plain");
                      });
  server.Start();
  auto transport = MakeCurlTransport();
  HttpRequest request;
  request.url = server.base() + "/slow";
  int pumps = 0;
  HttpResponse response = transport->Perform(request, [&] {
    ++pumps;
    // The user clicks Cancel once the service holds the request.
    if (gate.Reached()) {
      transport->Cancel();
    }
  });
  gate.Open();
  EXPECT_EQ(response.failure, HttpFailure::kCancelled);
  EXPECT_TRUE(response.body.empty());
  EXPECT_GE(pumps, 1);

  // A cancel of a finished request doesn't touch the next one.
  transport->Cancel();
  server.server().Get("/fast",
                      [](const httplib::Request&, httplib::Response& res) {
                        res.set_content("ok", "text/plain");
                      });
  request.url = server.base() + "/fast";
  response = Send(*transport, request);
  EXPECT_EQ(response.failure, HttpFailure::kNone);
  EXPECT_EQ(response.body, "ok");
}

TEST(HttpTransportTest, NoServiceOrALostConnectionIsNoConnection) {
  ClosingListener dies_at_once(/*read_bytes=*/1);
  TempDir dir;
  auto photo = dir.WriteFile("a.jpg", std::string(256 * 1024, 'x'));
  ClosingListener dies_during_upload(/*read_bytes=*/64 * 1024);
  struct Case {
    const char* what;
    std::string url;
    bool with_file;
  };
  const Case cases[] = {
      {"refused", "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/x",
       false},
      {"closed before answering", dies_at_once.base() + "/x", false},
      {"closed in the middle of an upload", dies_during_upload.base() + "/x",
       true},
  };
  auto transport = MakeCurlTransport();
  for (const Case& c : cases) {
    HttpRequest request;
    request.method = "POST";
    request.url = c.url;
    request.body = "{}";
    if (c.with_file) {
      request.file = HttpFilePart{"File", photo.string()};
    }
    HttpResponse response = Send(*transport, request);
    EXPECT_EQ(response.failure, HttpFailure::kNoConnection) << c.what;
    EXPECT_FALSE(response.error_text.empty()) << c.what;
  }
}

TEST(HttpTransportTest, AnAnswerAboveTheCapIsAnError) {
  TestServer server;
  const std::string big(300 * 1024, 'b');
  server.server().Get("/sized",
                      [&](const httplib::Request&, httplib::Response& res) {
                        res.set_content(big, "text/plain");
                      });
  // Without a length announced beforehand, the cap is found while reading.
  server.server().Get(
      "/chunked", [&](const httplib::Request&, httplib::Response& res) {
        res.set_chunked_content_provider(
            "text/plain", [&](size_t offset, httplib::DataSink& sink) {
              if (offset >= big.size()) {
                sink.done();
                return true;
              }
              size_t n = std::min<size_t>(16 * 1024, big.size() - offset);
              sink.write(big.data() + offset, n);
              return true;
            });
      });
  server.Start();
  auto transport = MakeCurlTransport();
  for (const char* path : {"/sized", "/chunked"}) {
    HttpRequest request;
    request.url = server.base() + path;
    request.max_response_bytes = 100 * 1024;
    HttpResponse response = Send(*transport, request);
    EXPECT_EQ(response.failure, HttpFailure::kTooLarge) << path;
    EXPECT_TRUE(response.body.empty()) << path;
    // Just enough room: the whole answer.
    request.max_response_bytes = big.size();
    response = Send(*transport, request);
    EXPECT_EQ(response.failure, HttpFailure::kNone) << path;
    EXPECT_EQ(response.body.size(), big.size()) << path;
  }
}

TEST(HttpTransportTest, AServiceThatNeverAnswersTimesOut) {
  TestServer server;
  Gate gate;
  server.server().Get("/silent",
                      [&](const httplib::Request&, httplib::Response& res) {
                        gate.Wait();
                        res.set_content("late", "text/plain");
                      });
  server.Start();
  HttpTransportOptions options;
  options.total_timeout_ms = 300;
  auto transport = MakeCurlTransport(options);
  HttpRequest request;
  request.url = server.base() + "/silent";
  HttpResponse response = Send(*transport, request);
  gate.Open();
  EXPECT_EQ(response.failure, HttpFailure::kTimeout);
}

}  // namespace
}  // namespace qbpd
