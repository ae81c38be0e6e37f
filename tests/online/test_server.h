#ifndef QBPD_TESTS_ONLINE_TEST_SERVER_H_
#define QBPD_TESTS_ONLINE_TEST_SERVER_H_

#include <httplib.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace qbpd::testing {

// An HTTP server on a free port of 127.0.0.1, running on a thread of its own
// while the object lives. Routes are added to server() before Start().
class TestServer {
 public:
  TestServer() = default;
  ~TestServer();
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  httplib::Server& server() { return server_; }
  // Binds and starts listening; returns once the server accepts connections.
  void Start();
  int port() const { return port_; }
  // "http://127.0.0.1:<port>"
  std::string base() const;

 private:
  httplib::Server server_;
  std::thread thread_;
  int port_ = 0;
};

// A gate that a slow route waits at until the test opens it (or a few
// seconds pass, so that a failing test can't hang).
class Gate {
 public:
  void Open();
  // Waits for Open; false when it timed out.
  bool Wait();
  // Whether a route has reached the gate.
  bool Reached() const { return reached_; }

 private:
  std::mutex mutex_;
  std::condition_variable cv_;
  bool open_ = false;
  std::atomic<bool> reached_ = false;
};

// A TCP listener on a free loopback port that reads a little of each request
// and then closes the connection without an answer: a service that dies.
class ClosingListener {
 public:
  // `read_bytes`: how much of a request to take before closing.
  explicit ClosingListener(size_t read_bytes = 1);
  ~ClosingListener();
  ClosingListener(const ClosingListener&) = delete;
  ClosingListener& operator=(const ClosingListener&) = delete;

  int port() const { return port_; }
  std::string base() const;

 private:
  int fd_ = -1;
  int port_ = 0;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
  size_t read_bytes_;
};

// A loopback port on which nothing listens.
int UnusedPort();

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_ONLINE_TEST_SERVER_H_
