#include "platform/http_transport.h"

#include "platform/atomic_file.h"
#include "platform/photo_kind.h"

#include <curl/curl.h>

#include <cctype>
#include <chrono>
#include <cstdio>

namespace qbpd {

namespace {

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') ||
         (c >= 'A' && c <= 'F');
}

bool IsUnreserved(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' || c == '~';
}

// Characters that a path or query may hold as they are.
bool IsAllowedInPathOrQuery(unsigned char c) {
  if (IsUnreserved(c)) {
    return true;
  }
  switch (c) {
    case '/':
    case '?':
    case ':':
    case '@':
    case '!':
    case '$':
    case '&':
    case '\'':
    case '(':
    case ')':
    case '*':
    case '+':
    case ',':
    case ';':
    case '=':
      return true;
    default:
      return false;
  }
}

void AppendEscaped(std::string& out, unsigned char c) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  out += '%';
  out += kHex[c >> 4];
  out += kHex[c & 0x0F];
}

// The easy handle's settings and buffers for one request.
struct Transfer {
  std::string body;
  size_t limit = 0;
  bool too_large = false;
  char error_buffer[CURL_ERROR_SIZE] = {};
};

size_t WriteBody(char* data, size_t size, size_t count, void* user) {
  auto* transfer = static_cast<Transfer*>(user);
  size_t bytes = size * count;
  if (transfer->body.size() + bytes > transfer->limit) {
    transfer->too_large = true;
    return 0;  // makes libcurl stop with a write error
  }
  transfer->body.append(data, bytes);
  return bytes;
}

bool IsHttps(const std::string& url) {
  constexpr std::string_view kScheme = "https://";
  if (url.size() < kScheme.size()) {
    return false;
  }
  for (size_t i = 0; i < kScheme.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(url[i])) != kScheme[i]) {
      return false;
    }
  }
  return true;
}

HttpFailure FailureOf(CURLcode code, bool too_large) {
  if (too_large) {
    return HttpFailure::kTooLarge;
  }
  switch (code) {
    case CURLE_OK:
      return HttpFailure::kNone;
    case CURLE_OPERATION_TIMEDOUT:
      return HttpFailure::kTimeout;
    case CURLE_FILESIZE_EXCEEDED:
      return HttpFailure::kTooLarge;
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_READ_ERROR:
    case CURLE_FILE_COULDNT_READ_FILE:
    case CURLE_OUT_OF_MEMORY:
      return HttpFailure::kBadRequest;
    default:
      // Refused, reset, closed early, name not found, TLS failed: to the user
      // these are all a connection that isn't there.
      return HttpFailure::kNoConnection;
  }
}

class CurlTransport final : public HttpTransport {
 public:
  explicit CurlTransport(HttpTransportOptions options)
      : options_(options),
        global_ok_(curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK),
        multi_(global_ok_ ? curl_multi_init() : nullptr) {}

  ~CurlTransport() override {
    if (multi_ != nullptr) {
      curl_multi_cleanup(multi_);
    }
    if (global_ok_) {
      curl_global_cleanup();
    }
  }

  CurlTransport(const CurlTransport&) = delete;
  CurlTransport& operator=(const CurlTransport&) = delete;

  HttpResponse Perform(const HttpRequest& request, const Pump& pump) override {
    HttpResponse response;
    if (multi_ == nullptr) {
      response.failure = HttpFailure::kBadRequest;
      response.error_text = "The network library could not be started.";
      return response;
    }
    if (running_) {
      response.failure = HttpFailure::kBadRequest;
      response.error_text = "Another request of this connection is running.";
      return response;
    }
    // Only a plain file is sent, and looking never waits (a named pipe under
    // the file's name is refused at once).
    if (request.file &&
        FileDescriptor(OpenPhotoFile(request.file->path)).get() < 0) {
      response.failure = HttpFailure::kBadRequest;
      response.error_text =
          "The file " + request.file->path + " could not be read.";
      return response;
    }
    cancel_requested_ = false;
    running_ = true;
    response = Run(request, pump);
    running_ = false;
    return response;
  }

  void Cancel() override {
    if (running_) {
      cancel_requested_ = true;
    }
  }

 private:
  HttpResponse Run(const HttpRequest& request, const Pump& pump) {
    HttpResponse response;
    Transfer transfer;
    transfer.limit = request.max_response_bytes;

    CURL* easy = curl_easy_init();
    if (easy == nullptr) {
      response.failure = HttpFailure::kBadRequest;
      response.error_text = "The network library could not make a request.";
      return response;
    }
    std::string url = MakeValidUrl(request.url);
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    // A request made over https never follows a redirect back to plain
    // http, where a password or a download could be read or changed.
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR,
                     IsHttps(url) ? "https" : "http,https");
    // These are libcurl's defaults; they are set so that no other default
    // can ever switch the peer's check off.
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    if (!options_.ca_file.empty()) {
      curl_easy_setopt(easy, CURLOPT_CAINFO, options_.ca_file.c_str());
    }
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, transfer.error_buffer);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &WriteBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE,
                     static_cast<curl_off_t>(request.max_response_bytes));
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS,
                     static_cast<long>(options_.connect_timeout_ms));
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, options_.low_speed_bytes);
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME, options_.low_speed_seconds);
    if (options_.max_send_bytes_per_second > 0) {
      curl_easy_setopt(
          easy, CURLOPT_MAX_SEND_SPEED_LARGE,
          static_cast<curl_off_t>(options_.max_send_bytes_per_second));
    }
    if (!request.file && options_.total_timeout_ms > 0) {
      curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS,
                       static_cast<long>(options_.total_timeout_ms));
    }

    curl_slist* headers = nullptr;
    for (const auto& [name, value] : request.headers) {
      headers = curl_slist_append(headers, (name + ": " + value).c_str());
    }
    // Without this libcurl waits for a "100 Continue" before a large body,
    // which costs a round trip per photo.
    headers = curl_slist_append(headers, "Expect:");
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);

    curl_mime* mime = nullptr;
    if (request.file) {
      mime = curl_mime_init(easy);
      curl_mimepart* part = curl_mime_addpart(mime);
      curl_mime_name(part, request.file->field_name.c_str());
      curl_mime_filedata(part, request.file->path.c_str());
      curl_mime_type(part, request.file->content_type.c_str());
      curl_easy_setopt(easy, CURLOPT_MIMEPOST, mime);
    } else if (request.method == "POST") {
      curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE,
                       static_cast<curl_off_t>(request.body.size()));
      curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.data());
    } else {
      curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
      curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
      curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 5L);
    }

    curl_multi_add_handle(multi_, easy);
    CURLcode result = CURLE_OK;
    bool finished = false;
    bool cancelled = false;
    auto last_pump = std::chrono::steady_clock::now();
    const auto interval = std::chrono::milliseconds(options_.pump_interval_ms);
    while (!finished) {
      int still_running = 0;
      CURLMcode mc = curl_multi_perform(multi_, &still_running);
      if (mc != CURLM_OK) {
        result = CURLE_RECV_ERROR;
        break;
      }
      int queued = 0;
      while (CURLMsg* msg = curl_multi_info_read(multi_, &queued)) {
        if (msg->msg == CURLMSG_DONE && msg->easy_handle == easy) {
          result = msg->data.result;
          finished = true;
        }
      }
      if (finished) {
        break;
      }
      curl_multi_poll(multi_, nullptr, 0, options_.pump_interval_ms, nullptr);
      auto now = std::chrono::steady_clock::now();
      if (pump && now - last_pump >= interval) {
        last_pump = now;
        pump();
      }
      if (cancel_requested_) {
        cancelled = true;
        break;
      }
    }

    if (cancelled) {
      response.failure = HttpFailure::kCancelled;
      response.error_text = "The request was cancelled.";
    } else {
      response.failure = FailureOf(result, transfer.too_large);
      if (response.failure == HttpFailure::kNone) {
        long status = 0;
        curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
        response.status = static_cast<int>(status);
        char* type = nullptr;
        curl_easy_getinfo(easy, CURLINFO_CONTENT_TYPE, &type);
        if (type != nullptr) {
          response.content_type = type;
        }
        response.body = std::move(transfer.body);
      } else if (response.failure == HttpFailure::kTooLarge) {
        response.error_text = "The answer was larger than " +
                              std::to_string(request.max_response_bytes) +
                              " bytes.";
      } else {
        response.error_text = transfer.error_buffer[0] != '\0'
                                  ? transfer.error_buffer
                                  : curl_easy_strerror(result);
      }
    }

    // Removing the handle aborts a transfer that is still under way.
    curl_multi_remove_handle(multi_, easy);
    curl_easy_cleanup(easy);
    if (mime != nullptr) {
      curl_mime_free(mime);
    }
    curl_slist_free_all(headers);
    return response;
  }

  HttpTransportOptions options_;
  bool global_ok_;
  CURLM* multi_;
  bool running_ = false;
  bool cancel_requested_ = false;
};

}  // namespace

std::unique_ptr<HttpTransport> MakeCurlTransport(HttpTransportOptions options) {
  return std::make_unique<CurlTransport>(options);
}

std::string MakeValidUrl(std::string_view url) {
  std::string out;
  out.reserve(url.size() + 16);
  // The scheme and the host part stay as they are (an IPv6 host needs its
  // brackets); everything after them is made valid.
  size_t rest = 0;
  size_t scheme_end = url.find("://");
  if (scheme_end != std::string_view::npos) {
    size_t host_end = url.find_first_of("/?#", scheme_end + 3);
    rest = host_end == std::string_view::npos ? url.size() : host_end;
    out.append(url.substr(0, rest));
  }
  for (size_t i = rest; i < url.size(); ++i) {
    auto c = static_cast<unsigned char>(url[i]);
    if (c == '%') {
      if (i + 2 < url.size() && IsHexDigit(url[i + 1]) &&
          IsHexDigit(url[i + 2])) {
        out += '%';
      } else {
        AppendEscaped(out, c);
      }
    } else if (IsAllowedInPathOrQuery(c)) {
      out += static_cast<char>(c);
    } else {
      AppendEscaped(out, c);
    }
  }
  return out;
}

std::string EscapeQueryValue(std::string_view value) {
  std::string out;
  out.reserve(value.size());
  for (char ch : value) {
    auto c = static_cast<unsigned char>(ch);
    if (IsUnreserved(c)) {
      out += ch;
    } else {
      AppendEscaped(out, c);
    }
  }
  return out;
}

}  // namespace qbpd
