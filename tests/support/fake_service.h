#ifndef QBPD_TESTS_SUPPORT_FAKE_SERVICE_H_
#define QBPD_TESTS_SUPPORT_FAKE_SERVICE_H_

#include "platform/http_transport.h"
#include "platform/local_service.h"

#include <map>
#include <string>
#include <vector>

namespace qbpd::testing {

// Who listens on which port, as a test sets it: an empty port has no
// listener, and `unreadable` makes every lookup fail as unreadable socket
// tables would.
class FakePortListeners {
 public:
  void Listen(int port, unsigned uid) {
    listeners_[port] = {PortListener::State::kFound, uid, ""};
  }
  void Close(int port) { listeners_.erase(port); }
  bool unreadable = false;
  int lookups = 0;

  ListenerLookup Lookup() {
    return [this](int port) {
      ++lookups;
      if (unreadable) {
        return PortListener{PortListener::State::kUnknown, 0,
                            "made to fail by the test"};
      }
      auto found = listeners_.find(port);
      return found == listeners_.end() ? PortListener{} : found->second;
    };
  }

 private:
  std::map<int, PortListener> listeners_;
};

// A service connection that answers as the test says and records what it
// was asked.
class FakeServiceConnection : public ServiceConnection {
 public:
  struct Call {
    std::string address;
    ServiceNeed need;
  };
  // The answer of every Prepare; "" lets the service be used.
  std::string refusal;
  // Pumps this many times before answering; stops early when the pump says
  // to give up.
  int pumps = 0;
  std::vector<Call> calls;

  std::string Prepare(const std::string& address,
                      ServiceNeed need,
                      const Pump& pump) override {
    calls.push_back({address, need});
    for (int i = 0; i < pumps; ++i) {
      if (!pump()) {
        return "gave up";
      }
    }
    return refusal;
  }
};

// A transport that records its requests and answers 200 with `body`.
class RecordingTransport : public HttpTransport {
 public:
  explicit RecordingTransport(std::vector<std::string>* urls) : urls_(urls) {}
  HttpResponse Perform(const HttpRequest& request, const Pump&) override {
    urls_->push_back(request.url);
    HttpResponse response;
    response.status = 200;
    response.body = "{}";
    return response;
  }
  void Cancel() override {}

 private:
  std::vector<std::string>* urls_;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAKE_SERVICE_H_
