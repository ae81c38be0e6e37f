#ifndef QBPD_ONLINE_SERVICE_EXCHANGE_H_
#define QBPD_ONLINE_SERVICE_EXCHANGE_H_

// One request to the service at a time: sent through the transport while
// the window's events are pumped, with the busy and cancel bookkeeping of
// the client, and its answer read as the service's envelope.
#include "online/service_client.h"
#include "platform/http_transport.h"
#include "platform/json_value.h"

#include <memory>
#include <string>

namespace qbpd {

class Host;

// What came of one exchange.
struct ServiceAnswer {
  bool ok = false;
  // The answer's JSON object; for an exchange without an envelope, the
  // answer's body as text.
  JsonValue envelope;
  bool connection_lost = false;  // errCode "0"
  bool cancelled = false;
  bool from_envelope = false;  // the service itself said no
  bool local_failure = false;  // the request couldn't be made here
  std::string error_code;
  std::string error_text;
};

class ServiceExchange {
 public:
  ServiceExchange(Host& host, HttpTransportFactory factory);

  // Sends `request` and waits for its answer, pumping events. A second
  // request while one runs (from an event handler) is refused at once.
  ServiceAnswer Send(const HttpRequest& request, bool expect_envelope);

  // The user's cancel: stops the running request, or, with none running,
  // marks the client cancelled until its next request.
  void Cancel();

  bool busy() const { return busy_; }
  bool cancelled() const { return cancelled_; }

 private:
  Host& host_;
  HttpTransportFactory factory_;
  std::unique_ptr<HttpTransport> transport_;
  bool busy_ = false;
  bool cancelled_ = false;
  bool cancel_requested_ = false;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_SERVICE_EXCHANGE_H_
