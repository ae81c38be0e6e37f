#include "online/service_exchange.h"

#include "platform/forms/host.h"

#include <optional>
#include <utility>

namespace qbpd {

namespace {

constexpr char kServerProblem[] =
    "There is some problem with the server, please try after some time...";
constexpr char kCheckConnection[] = "Please check Internet Connection";
constexpr char kCancelledText[] = "The request was cancelled.";
constexpr char kBusyText[] =
    "Another request of this connection is still running.";

void Interpret(HttpResponse& response,
               bool expect_envelope,
               ServiceAnswer& answer) {
  switch (response.failure) {
    case HttpFailure::kNone:
      break;
    case HttpFailure::kNoConnection:
    case HttpFailure::kTimeout:
      answer.connection_lost = true;
      answer.error_code = kErrNoConnection;
      answer.error_text = kCheckConnection;
      return;
    case HttpFailure::kBadRequest:
      answer.local_failure = true;
      answer.error_code = kErrServiceFailed;
      answer.error_text = response.error_text;
      return;
    case HttpFailure::kTooLarge:
      answer.error_code = kErrServiceFailed;
      answer.error_text = response.error_text;
      return;
    case HttpFailure::kCancelled:
      answer.cancelled = true;
      answer.error_text = kCancelledText;
      return;
  }
  bool success_status = response.status >= 200 && response.status < 300;
  if (!expect_envelope) {
    if (!success_status) {
      answer.error_code = kErrServiceFailed;
      answer.error_text = "The service answered with HTTP status " +
                          std::to_string(response.status) + ".";
      return;
    }
    answer.ok = true;
    answer.envelope = JsonValue(std::move(response.body));
    return;
  }
  // The service answers its own refusals with an envelope under any status;
  // anything else that isn't an envelope means that it failed.
  std::optional<JsonValue> parsed = ParseJson(response.body);
  const JsonValue* ok = parsed ? parsed->Find("ok") : nullptr;
  if (!parsed || !parsed->is_object() || ok == nullptr) {
    answer.error_code = kErrServiceFailed;
    answer.error_text = kServerProblem;
    return;
  }
  answer.envelope = std::move(*parsed);
  if (ok->AsBool() && success_status) {
    answer.ok = true;
    return;
  }
  answer.from_envelope = true;
  const JsonValue* code = answer.envelope.Find("errCode");
  const JsonValue* text = answer.envelope.Find("errText");
  answer.error_code = code != nullptr ? code->AsText() : "";
  answer.error_text = text != nullptr ? text->AsText() : "";
  if (answer.error_code.empty()) {
    answer.error_code = kErrServiceFailed;
    if (answer.error_text.empty()) {
      answer.error_text = kServerProblem;
    }
  }
}

}  // namespace

ServiceExchange::ServiceExchange(Host& host, HttpTransportFactory factory)
    : host_(host), factory_(std::move(factory)) {
  if (!factory_) {
    factory_ = [] { return MakeCurlTransport(); };
  }
}

ServiceAnswer ServiceExchange::Send(const HttpRequest& request,
                                    bool expect_envelope) {
  ServiceAnswer answer;
  if (busy_) {
    answer.error_code = kErrServiceFailed;
    answer.error_text = kBusyText;
    return answer;
  }
  busy_ = true;
  cancelled_ = false;
  cancel_requested_ = false;
  if (!transport_) {
    transport_ = factory_();
  }
  HttpResponse response;
  if (transport_) {
    response = transport_->Perform(request, [this] { host_.DoEvents(); });
  } else {
    response.failure = HttpFailure::kBadRequest;
    response.error_text = "No network transport is available.";
  }
  busy_ = false;
  if (cancel_requested_ || response.failure == HttpFailure::kCancelled) {
    cancelled_ = true;
    answer.cancelled = true;
    answer.error_text = kCancelledText;
    return answer;
  }
  Interpret(response, expect_envelope, answer);
  return answer;
}

void ServiceExchange::Cancel() {
  if (busy_) {
    cancel_requested_ = true;
    if (transport_) {
      transport_->Cancel();
    }
  } else {
    cancelled_ = true;
  }
}

}  // namespace qbpd
