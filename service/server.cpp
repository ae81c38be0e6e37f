#include "service/server.h"

#include "service/service_core.h"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace qbpd::service {

namespace {

using nlohmann::json;

constexpr int kMalformed = 400;
constexpr int kNotFound = 404;
constexpr int kTooLarge = 413;
constexpr int kServerError = 500;
// Room for the multipart framing around a photo of the largest size.
constexpr size_t kMultipartSlack = 64 * 1024;
constexpr size_t kWorkers = 32;

void SendJson(httplib::Response& res, int status, const json& body) {
  res.status = status;
  res.set_content(body.dump(), "application/json");
}

void SendPage(httplib::Response& res, const PageResult& page) {
  res.status = page.status;
  res.set_content(page.html, "text/html; charset=utf-8");
}

std::string BaseOf(const httplib::Request& req, bool tls) {
  const std::string host = req.get_header_value("Host");
  return (tls ? "https://" : "http://") +
         (host.empty() ? std::string("127.0.0.1") : host);
}

std::unique_ptr<httplib::Server> MakeHttpServer(const ServerTls& tls) {
  if (tls.cert_file.empty() && tls.key_file.empty()) {
    return std::make_unique<httplib::Server>();
  }
  auto server = std::make_unique<httplib::SSLServer>(tls.cert_file.c_str(),
                                                     tls.key_file.c_str());
  if (!server->is_valid()) {
    throw std::runtime_error("the certificate " + tls.cert_file + " and key " +
                             tls.key_file + " can't be used together");
  }
  return server;
}

// The address a request came from: the peer's, or behind the front the one
// the front names (only a loopback peer is believed).
std::string ClientOf(const httplib::Request& req, bool behind_front) {
  if (behind_front && req.remote_addr == "127.0.0.1" &&
      req.has_header("X-Real-IP")) {
    return req.get_header_value("X-Real-IP");
  }
  return req.remote_addr;
}

}  // namespace

struct Server::Impl {
  Impl(ServiceCore& c, const ServerTls& tls)
      : core(c), server(MakeHttpServer(tls)), http(*server) {}
  ServiceCore& core;
  std::unique_ptr<httplib::Server> server;
  httplib::Server& http;
};

Server::Server(ServiceCore& core, bool behind_front, const ServerTls& tls)
    : impl_(std::make_unique<Impl>(core, tls)) {
  auto& http = impl_->http;
  const bool https = !tls.cert_file.empty() || !tls.key_file.empty();
  ServiceCore* service = &core;
  http.set_payload_max_length(core.max_upload_bytes() + kMultipartSlack);
  // An answer goes out as a head and a body in two writes; with Nagle's rule
  // the body would wait for the client's delayed acknowledgement of the head,
  // tens of milliseconds on every request.
  http.set_tcp_nodelay(true);
  // A kept-alive connection holds a worker while it lasts; with the library's
  // eight workers a ninth program would wait for another's connection to end.
  http.new_task_queue = [] { return new httplib::ThreadPool(kWorkers); };

  http.Post(R"(/api/([A-Za-z]+))",
            [service, behind_front, https](const httplib::Request& req,
                                           httplib::Response& res) {
              const json request = json::parse(req.body, nullptr, false);
              if (request.is_discarded() || !request.is_object()) {
                SendJson(res, kMalformed, Failure("9999"));
                return;
              }
              try {
                const auto answer = service->Call(req.matches[1].str(), request,
                                                  ClientOf(req, behind_front),
                                                  BaseOf(req, https));
                if (!answer) {
                  SendJson(res, kNotFound, Failure("9999"));
                  return;
                }
                SendJson(res, 200, *answer);
              } catch (const BadRequest&) {
                SendJson(res, kMalformed, Failure("9999"));
              }
            });

  http.Post("/exuploadimages", [service](const httplib::Request& req,
                                         httplib::Response& res) {
    if (!req.has_file("File")) {
      json out = Failure("3002");
      out["fatal"] = false;
      out["albumId"] = "";
      out["imageId"] = "";
      SendJson(res, kMalformed, out);
      return;
    }
    std::map<std::string, std::string> query;
    for (const char* name :
         {"authcode", "albumid", "albumname", "sourcecode", "file"}) {
      query[name] = req.get_param_value(name);
    }
    const auto& file = req.get_file_value("File");
    const json answer = service->Upload(query, file.content);
    SendJson(res, answer["errCode"] == "3003" ? kTooLarge : 200, answer);
  });

  http.Get("/", [service](const httplib::Request&, httplib::Response& res) {
    SendPage(res, service->HomePage());
  });
  http.Get(R"(/forgotpassword/t_=.*)",
           [service](const httplib::Request&, httplib::Response& res) {
             SendPage(res, service->ForgotPasswordPage());
           });
  http.Get(R"(/thumbnailshare/AlbumID=([^/]*)/u_=([^/]*))",
           [service](const httplib::Request& req, httplib::Response& res) {
             SendPage(res, service->AlbumPage(req.matches[1].str(),
                                              req.matches[2].str()));
           });
  http.Get(R"(/addressbook/AlbumID=([^/]*)/u_=([^/]*))",
           [service](const httplib::Request& req, httplib::Response& res) {
             SendPage(res, service->AddressBookPage(req.matches[1].str(),
                                                    req.matches[2].str()));
           });
  http.Get(R"(/orderstatus/o=([^/]*)/u_=([^/]*))",
           [service](const httplib::Request& req, httplib::Response& res) {
             SendPage(res, service->OrderStatusPage(req.matches[1].str(),
                                                    req.matches[2].str()));
           });
  http.Get(R"(/sharedalbum/([0-9a-f]+))",
           [service](const httplib::Request& req, httplib::Response& res) {
             SendPage(res, service->SharedAlbumPage(req.matches[1].str()));
           });
  http.Get(
      R"(/(photo/([^/]*)/u_=([^/]*)|sharedalbum/([0-9a-f]+)/photo/([^/]*)))",
      [service](const httplib::Request& req, httplib::Response& res) {
        const PhotoAnswer answer =
            req.matches[2].matched
                ? service->Photo(req.matches[2].str(), req.matches[3].str())
                : service->SharedPhoto(req.matches[4].str(),
                                       req.matches[5].str());
        if (!answer.file) {
          SendPage(res, answer.refusal);
          return;
        }
        std::ifstream in(answer.file->path, std::ios::binary);
        std::string content(std::istreambuf_iterator<char>(in), {});
        if (!in.is_open() || in.bad()) {
          SendPage(res, NotFound("Photo not found"));
          return;
        }
        // The type is the one the upload checked; a browser must not
        // guess another from the bytes.
        res.set_header("X-Content-Type-Options", "nosniff");
        res.set_content(content, answer.file->mime.c_str());
      });
  http.Get("/download/upgrade.xml", [service, https](
                                        const httplib::Request& req,
                                        httplib::Response& res) {
    res.set_content(service->UpgradeXml(BaseOf(req, https)), "application/xml");
  });
  http.Get("/download/upgrade1.exe", [service](const httplib::Request&,
                                               httplib::Response& res) {
    res.set_content(service->UpgradeFile(), "application/octet-stream");
  });
  // The detached signature of the upgrade file, when one is published.
  http.Get("/download/upgrade1.exe.sig",
           [service](const httplib::Request&, httplib::Response& res) {
             if (service->UpgradeSignature().empty()) {
               SendPage(res, NotFound("No signature is published"));
               return;
             }
             res.set_content(service->UpgradeSignature() + "\n", "text/plain");
           });

  // A failure inside the service answers with the envelope alone: what went
  // wrong, with its paths and statements, stays on the server.
  http.set_exception_handler([](const httplib::Request& req,
                                httplib::Response& res, std::exception_ptr) {
    json out = Failure("9999");
    if (req.path == "/exuploadimages") {
      out["fatal"] = true;
      out["albumId"] = "";
      out["imageId"] = "";
    }
    SendJson(res, kServerError, out);
  });
  // Answers that httplib makes itself (too large, unknown path) carry the
  // envelope too, so that a client can always read one.
  http.set_error_handler([](const httplib::Request&, httplib::Response& res) {
    if (!res.body.empty()) {
      return;
    }
    json out = Failure(res.status == kTooLarge ? "3003" : "9999");
    if (res.status == kTooLarge) {
      out["fatal"] = false;
    }
    SendJson(res, res.status, out);
  });
}

Server::~Server() {
  Stop();
}

int Server::Bind(const std::string& host, int port) {
  if (port == 0) {
    return impl_->http.bind_to_any_port(host);
  }
  return impl_->http.bind_to_port(host, port) ? port : -1;
}

bool Server::Run() {
  return impl_->http.listen_after_bind();
}

void Server::Stop() {
  impl_->http.stop();
}

}  // namespace qbpd::service
