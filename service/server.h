#ifndef QBPD_SERVICE_SERVER_H_
#define QBPD_SERVICE_SERVER_H_

#include <memory>
#include <string>

namespace qbpd::service {

class ServiceCore;

// The certificate chain and private key (PEM files) of a service that
// serves HTTPS; both empty serves plain HTTP.
struct ServerTls {
  std::string cert_file;
  std::string key_file;
};

// The HTTP face of the service: the data operations under /api, the upload,
// the browser pages and the download files.
class Server {
 public:
  // `behind_front`: the service is reached through its front (nginx) on
  // loopback, whose X-Real-IP header names the client.
  // With `tls` files it serves HTTPS only; files that can't be read (or
  // don't belong together) are a std::runtime_error.
  explicit Server(ServiceCore& core,
                  bool behind_front = false,
                  const ServerTls& tls = {});
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server();

  // Binds the address; port 0 picks a free one. Returns the bound port, or
  // -1 when the address cannot be bound.
  int Bind(const std::string& host, int port);
  // Serves until Stop; returns false when serving failed.
  bool Run();
  // Ends Run from any thread; safe to call more than once.
  void Stop();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_SERVER_H_
