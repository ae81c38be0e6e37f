// The online service of a script's run: `service double` puts the scripted
// double behind every online form, `service answers ...` says what it
// answers per operation, `expect service ...` checks what it was called
// with; `service real` points the run at this user's reference service on a
// free loopback port, started on first need with its data in the run's
// folder and stopped at the end.
#include "app/driver/runner.h"
#include "core/settings.h"
#include "online/client_factory.h"
#include "online/scripted_service_client.h"
#include "platform/forms/scripted_host.h"
#include "platform/internet_check.h"
#include "platform/local_service.h"
#include "platform/loopback_port.h"

#include <tuple>

namespace qbpd::script {
namespace {

// "waits": until the call is cancelled, at most this long in virtual time.
constexpr long long kWaitForCancelMs = 10LL * 60 * 1000;

// The common tail of an answer: ok or fails CODE TEXT [fatal], then
// [after N ms] or [waits]. `values` receives the texts after "ok".
struct Answer {
  ScriptedReply reply;
  bool fatal = false;
  std::vector<std::string> values;
  std::vector<std::string> words;  // unquoted words after "ok"
};

Answer ParseAnswer(const std::vector<Token>& t, size_t i) {
  const char* usage =
      "expected: service answers [always] OPERATION ok [VALUES] | fails "
      "\"CODE\" \"TEXT\" [fatal], then [after N ms] or [waits]";
  Answer a;
  if (i >= t.size()) {
    throw ScriptSyntaxError(usage);
  }
  if (t[i].text == "fails" && !t[i].quoted) {
    if (i + 2 >= t.size()) {
      throw ScriptSyntaxError(usage);
    }
    a.reply.ok = false;
    a.reply.errCode = t[i + 1].text;
    a.reply.errText = t[i + 2].text;
    i += 3;
    if (i < t.size() && t[i].text == "fatal" && !t[i].quoted) {
      a.fatal = true;
      ++i;
    }
  } else if (t[i].text == "ok" && !t[i].quoted) {
    ++i;
    while (i < t.size() &&
           (t[i].quoted || (t[i].text != "after" && t[i].text != "waits"))) {
      (t[i].quoted ? a.values : a.words).push_back(t[i].text);
      ++i;
    }
  } else {
    throw ScriptSyntaxError(usage);
  }
  if (i < t.size() && t[i].text == "after") {
    if (i + 2 >= t.size() || t[i + 2].text != "ms") {
      throw ScriptSyntaxError(usage);
    }
    a.reply.wait_ms = Number(t[i + 1]);
    i += 3;
  } else if (i < t.size() && t[i].text == "waits") {
    a.reply.wait_ms = kWaitForCancelMs;
    ++i;
  }
  if (i != t.size()) {
    throw ScriptSyntaxError(usage);
  }
  return a;
}

// The run's connection to the reference service on this machine: while the
// double answers, no service is started or waited for (the double stands
// in for it, and the run must not depend on what listens on this machine).
class DoubleAwareConnection : public ServiceConnection {
 public:
  DoubleAwareConnection(std::unique_ptr<ServiceConnection> inner,
                        const bool& use_double)
      : inner_(std::move(inner)), use_double_(use_double) {}

  std::string Prepare(const std::string& address,
                      ServiceNeed need,
                      const Pump& pump) override {
    if (use_double_ || !inner_) {
      return std::string();
    }
    return inner_->Prepare(address, need, pump);
  }

 private:
  std::unique_ptr<ServiceConnection> inner_;
  const bool& use_double_;
};

template <class Reply>
Reply WithBase(const Answer& a) {
  Reply r;
  static_cast<ScriptedReply&>(r) = a.reply;
  return r;
}

}  // namespace

void Runner::WireService(PlatformServices& services) {
  double_ = std::make_unique<ScriptedServiceClient>(*host_);
  // Each call shows when it is made, in its place among the program's other
  // lines (a message box that follows it, an inside step that runs while it
  // waits), not when the program is next idle.
  double_->OnCall([this](const RecordedCall&) { ReportServiceCalls(); });
  services.make_client = [this]() -> std::unique_ptr<ctlExtAPI> {
    if (use_double_) {
      return ForwardTo(*double_);
    }
    Application* app = app_.get();
    return MakeServiceClient(app->host(),
                             [app] { return app->ServiceTransport(); });
  };
  services.internet_check = [this](const std::string& address) {
    return use_double_ ? connection_up_ : CheckInternetConnection(address);
  };
  services.service = std::make_unique<DoubleAwareConnection>(
      std::move(services.service), use_double_);
}

void Runner::ReportServiceCalls() {
  const auto& calls = double_->Calls();
  for (; calls_reported_ < calls.size(); ++calls_reported_) {
    const RecordedCall& call = calls[calls_reported_];
    std::string line = "service called " + call.operation;
    // The address of an upload tells which photo went where; no other input
    // is shown, so that a password never reaches the transcript.
    if (call.operation == "UploadFile") {
      line += " " + Quote(call.Input("url"));
    }
    Report(line);
  }
}

std::optional<Step> Runner::ParseServiceStep(const std::vector<Token>& t) {
  if (t[0].text != "service" || t.size() < 2) {
    return std::nullopt;
  }
  const std::string what = t[1].text;
  Step s;
  if (what == "double") {
    Require(t, 2, "service double");
    s.run = [this] { use_double_ = true; };
    return s;
  }
  if (what == "connection") {
    Require(t, 3, "service connection up|down");
    if (t[2].text != "up" && t[2].text != "down") {
      throw ScriptSyntaxError("expected: service connection up|down");
    }
    const bool up = t[2].text == "up";
    s.run = [this, up] { connection_up_ = up; };
    return s;
  }
  if (what == "real") {
    Require(t, 2, "service real");
    s.run = [this] {
      // Held for the run, so that nothing else is given the number before
      // the service, started on first need, binds it.
      held_port_ = std::make_unique<HeldLoopbackPort>();
      const int port = held_port_->port();
      if (port == 0) {
        throw HostAbort("no free loopback port for the service");
      }
      const std::string base = "http://127.0.0.1:" + std::to_string(port);
      if (!app_->settings().Write(kRootKey, "IP", base) ||
          !app_->settings().Write(kRootKey, "URL", base + "/api")) {
        throw HostAbort("The settings store refused the service's address");
      }
      use_double_ = false;
      Report("service at " + base);
    };
    return s;
  }
  if (what != "answers") {
    throw ScriptSyntaxError("unknown service step \"" + what + "\"");
  }
  size_t i = 2;
  bool always = false;
  if (i < t.size() && t[i].text == "always") {
    always = true;
    ++i;
  }
  if (i >= t.size()) {
    throw ScriptSyntaxError("expected an operation after service answers");
  }
  const std::string op = t[i].text;
  const Answer a = ParseAnswer(t, i + 1);
  auto give = [this, always](auto reply) {
    if (always) {
      double_->SetDefault(std::move(reply));
    } else {
      double_->Queue(std::move(reply));
    }
  };
  std::function<void()> queue;
  if (op == "LoginUser") {
    auto r = WithBase<LoginUserReply>(a);
    r.session = a.values;
    queue = [give, r] { give(r); };
  } else if (op == "GetAlbumList") {
    auto r = WithBase<GetAlbumListReply>(a);
    std::vector<std::string> ids, names;
    for (size_t k = 0; k + 1 < a.values.size(); k += 2) {
      ids.push_back(a.values[k]);
      names.push_back(a.values[k + 1]);
    }
    if (ids.empty()) {
      ids.push_back("");
      names.push_back("");
    }
    r.albums = TextGrid::FromRows({ids, names});
    queue = [give, r] { give(r); };
  } else if (op == "UploadFile") {
    auto r = WithBase<UploadFileReply>(a);
    r.fatal = a.fatal;
    // ok album "A" image "I": the words name the values in order.
    for (size_t k = 0; k < a.words.size() && k < a.values.size(); ++k) {
      if (a.words[k] == "album") {
        r.albumId = a.values[k];
      } else if (a.words[k] == "image") {
        r.imageId = a.values[k];
      } else {
        throw ScriptSyntaxError(
            "expected: UploadFile ok album \"ID\" image "
            "\"ID\"");
      }
    }
    queue = [give, r] { give(r); };
  } else if (op == "GetUserInfo") {
    auto r = WithBase<GetUserInfoReply>(a);
    r.accountType = a.values.empty() ? "FUL" : a.values[0];
    // Behind the type: the profile's e-mail address, first and last name.
    r.profile.assign(a.values.begin() + (a.values.empty() ? 0 : 1),
                     a.values.end());
    queue = [give, r] { give(r); };
  } else if (op == "GetAddressBook") {
    auto r = WithBase<GetAddressBookReply>(a);
    r.emails = a.values;
    queue = [give, r] { give(r); };
  } else if (op == "RegisterUser") {
    auto r = WithBase<RegisterUserReply>(a);
    r.result = a.values;
    queue = [give, r] { give(r); };
  } else if (op == "ShareAlbum") {
    auto r = WithBase<ShareAlbumReply>(a);
    r.accepted = a.values.empty() ? "" : a.values[0];
    queue = [give, r] { give(r); };
  } else if (op == "GetPriceList") {
    auto r = WithBase<GetPriceListReply>(a);
    queue = [give, r] { give(r); };
  } else if (op == "GetAlbumPhotos") {
    auto r = WithBase<GetAlbumPhotosReply>(a);
    for (size_t k = 0; k + 1 < a.values.size(); k += 2) {
      r.photos.Add(a.values[k], a.values[k + 1]);
    }
    queue = [give, r] { give(r); };
  } else if (op == "ConfirmOrder") {
    auto r = WithBase<ConfirmOrderReply>(a);
    queue = [give, r] { give(r); };
  } else {
    throw ScriptSyntaxError("the service double has no answers for \"" + op +
                            "\" in scripts");
  }
  s.run = queue;
  return s;
}

Step Runner::ParseExpectService(const std::vector<Token>& t) {
  const char* usage =
      "expected: expect service calls OPERATION... | expect service call N "
      "OPERATION [INPUT = \"value\" | INPUT contains \"part\"]... | expect "
      "service cancels = N";
  Step s;
  if (t.size() >= 3 && t[2].text == "calls") {
    std::vector<std::string> ops;
    for (size_t i = 3; i < t.size(); ++i) {
      ops.push_back(t[i].text);
    }
    s.run = [this, ops] {
      const std::vector<std::string> got = double_->Operations();
      if (got != ops) {
        std::string list;
        for (const std::string& op : got) {
          list += (list.empty() ? "" : " ") + op;
        }
        throw HostAbort("the service was called: " +
                        (list.empty() ? std::string("nothing") : list));
      }
    };
    return s;
  }
  if (t.size() >= 5 && t[2].text == "call") {
    const int n = Number(t[3]);
    const std::string op = t[4].text;
    std::vector<std::tuple<std::string, std::string, std::string>> checks;
    for (size_t i = 5; i < t.size(); i += 3) {
      if (i + 2 >= t.size() ||
          (t[i + 1].text != "=" && t[i + 1].text != "contains")) {
        throw ScriptSyntaxError(usage);
      }
      checks.emplace_back(t[i].text, t[i + 1].text, t[i + 2].text);
    }
    s.run = [this, n, op, checks] {
      const auto& calls = double_->Calls();
      if (n < 1 || static_cast<size_t>(n) > calls.size()) {
        throw HostAbort("the service had " + std::to_string(calls.size()) +
                        " calls, not " + std::to_string(n));
      }
      const RecordedCall& call = calls[n - 1];
      if (call.operation != op) {
        throw HostAbort("call " + std::to_string(n) + " was " + call.operation +
                        ", not " + op);
      }
      for (const auto& [name, how, value] : checks) {
        const std::string actual = call.Input(name);
        const bool ok = how == "=" ? actual == value
                                   : actual.find(value) != std::string::npos;
        if (!ok) {
          // A password is never shown, even when it differs.
          throw HostAbort("call " + std::to_string(n) + " " + op + ": " + name +
                          " is " +
                          (name == "password" ? std::string("another text")
                                              : Quote(actual)));
        }
      }
    };
    return s;
  }
  if (t.size() == 5 && t[2].text == "cancels" && t[3].text == "=") {
    const int n = Number(t[4]);
    s.run = [this, n] {
      if (double_->CancelRequests() != n) {
        throw HostAbort("the service was asked to cancel " +
                        std::to_string(double_->CancelRequests()) + " times");
      }
    };
    return s;
  }
  throw ScriptSyntaxError(usage);
}

}  // namespace qbpd::script
