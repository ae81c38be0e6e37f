#ifndef QBPD_PLATFORM_HTTP_TRANSPORT_H_
#define QBPD_PLATFORM_HTTP_TRANSPORT_H_

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qbpd {

// One file sent as a part of a multipart/form-data body.
struct HttpFilePart {
  std::string field_name;  // the form field, e.g. "File"
  std::string path;        // the file on disk
  std::string content_type = "application/octet-stream";
};

struct HttpRequest {
  std::string method = "GET";  // "GET" or "POST"
  // The address as the program built it; the transport makes it valid
  // (see MakeValidUrl) before it goes out.
  std::string url;
  std::vector<std::pair<std::string, std::string>> headers;
  // The body of a POST without a file part.
  std::string body;
  // With a file part, the body is multipart/form-data holding that file and
  // `body` is ignored.
  std::optional<HttpFilePart> file;
  // Answers longer than this are an error (kTooLarge), never kept in full.
  size_t max_response_bytes = 16 * 1024 * 1024;
};

// Why a request got no complete answer.
enum class HttpFailure {
  kNone,          // an answer came (of whatever status)
  kNoConnection,  // the peer couldn't be reached or the connection was lost
  kTimeout,       // connecting or the transfer took too long
  kTooLarge,      // the answer exceeded max_response_bytes
  kCancelled,     // Cancel() was called while the request ran
  kBadRequest,    // the request couldn't be made (unreadable file, bad URL)
};

struct HttpResponse {
  HttpFailure failure = HttpFailure::kNone;
  int status = 0;  // the HTTP status when failure is kNone
  std::string content_type;
  std::string body;
  // A sentence for the log or the user when failure isn't kNone.
  std::string error_text;
};

// Time-outs and limits of a transport.
struct HttpTransportOptions {
  // Connecting, name lookup included.
  int connect_timeout_ms = 10000;
  // A transfer whose speed stays below `low_speed_bytes` per second for
  // `low_speed_seconds` is given up. This, not a fixed total, bounds uploads
  // of large photos over slow links.
  long low_speed_bytes = 1;
  long low_speed_seconds = 30;
  // A fixed bound for requests without a file part (0: none).
  int total_timeout_ms = 120000;
  // How often the waiting request calls its pump.
  int pump_interval_ms = 10;
  // Sending is held below this many bytes per second (0: no bound), to
  // stand for a slow line.
  long long max_send_bytes_per_second = 0;
  // The certificate authorities that https:// peers are checked against: a
  // PEM file, in place of the system's store ("" uses the system's). A
  // private service's own authority goes here. The check itself is always
  // on: a peer whose certificate doesn't lead to a trusted authority, has
  // expired, or doesn't name the host asked for is never talked to.
  std::string ca_file;
};

// Sends one request at a time and waits for its answer on the calling thread.
// While it waits it calls `pump` every few milliseconds: the caller passes the
// host's DoEvents there, so timers and clicks run re-entrantly under the
// request. Cancel, called from inside the pump, ends the request at once with
// kCancelled.
class HttpTransport {
 public:
  using Pump = std::function<void()>;

  virtual ~HttpTransport() = default;

  // Performs `request` and returns what came back. Never throws for a failure
  // of the network or of the peer; they are told in the response.
  [[nodiscard]] virtual HttpResponse Perform(const HttpRequest& request,
                                             const Pump& pump) = 0;
  // Aborts the running request. Safe to call at any time, also when nothing
  // runs; a request started afterwards is not affected.
  virtual void Cancel() = 0;
};

// A transport on libcurl's multi interface.
std::unique_ptr<HttpTransport> MakeCurlTransport(
    HttpTransportOptions options = {});

// Makes a URL that the program built without escaping valid: spaces, quotes,
// angle brackets, backslashes, other characters that a URL can't hold, and
// bytes outside ASCII are percent-encoded; "%" stays only where two hex digits
// follow it; "#" is encoded too, since the program never means a fragment.
// Separators ("/", "?", "&", "=") are kept, so the query keeps its structure.
std::string MakeValidUrl(std::string_view url);

// Percent-encodes every byte of `value` except the unreserved characters
// (letters, digits, "-", ".", "_", "~"), for a value put into a query.
std::string EscapeQueryValue(std::string_view value);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_HTTP_TRANSPORT_H_
