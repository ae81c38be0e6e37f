// qbpd-service: the reference online service, alone on one machine or as one
// of several instances on a shared store (--database).

#include "platform/signature.h"
#include "service/front.h"
#include "service/server.h"
#include "service/service_core.h"

#include <cctype>
#include <charconv>
#include <cstdio>
#include <exception>
#include <memory>
#include <pthread.h>
#include <signal.h>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kUsageError = 2;
// Room for the multipart framing around a photo of the largest size.
constexpr std::size_t kMultipartSlack = 64 * 1024;

struct Arguments {
  int port = 8931;
  std::string data_dir;
  std::string listen = "127.0.0.1";
  // The version offered as an upgrade: by default this build's own, so
  // that a program of this build is never asked to upgrade to it.
  std::string upgrade_version = QBPD_VERSION;
  // The file offered instead of the made installer script.
  std::string upgrade_file;
  // The secret key (qbpd-sign --make-key) that signs the upgrade file.
  std::string signing_key;
  // Serve HTTPS with this certificate chain and key.
  std::string cert;
  std::string key;
  bool seed_demo = false;
  // Serve through nginx, as facing a network.
  bool front = false;
  // Share invitations go through this SMTP relay, not into the maildir.
  std::string mail_relay;
  // A PostgreSQL database shared with other instances.
  std::string database;
  // Load balancers whose X-Forwarded-For the front believes.
  std::vector<std::string> trusted_proxies;
};

// Instances that share a data folder each run a front of their own: no two
// of them listen on one port of one machine.
std::string FrontFolderName(const Arguments& args) {
  if (args.database.empty()) {
    return "front";
  }
  char host[256] = {};
  gethostname(host, sizeof host - 1);
  return "front-" + std::string(host) + "-" + std::to_string(args.port);
}

void PrintUsage() {
  std::fprintf(stderr,
               "usage: qbpd-service --port N --data-dir DIR [--seed-demo] "
               "[--database CONNINFO] [--trusted-proxy ADDR[/BITS]]... "
               "[--listen ADDR] [--upgrade-version V] [--front] "
               "[--mail-relay smtp://HOST:PORT] [--upgrade-file FILE] "
               "[--signing-key FILE] [--cert FILE --key FILE]\n");
}

bool ParseArguments(int argc, char** argv, Arguments& args) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view arg = argv[i];
    const bool has_value = i + 1 < argc;
    if (arg == "--seed-demo") {
      args.seed_demo = true;
    } else if (arg == "--front") {
      args.front = true;
    } else if (arg == "--port" && has_value) {
      const std::string_view value = argv[++i];
      const auto [end, error] =
          std::from_chars(value.data(), value.data() + value.size(), args.port);
      if (error != std::errc() || end != value.data() + value.size() ||
          args.port < 0 || args.port > 65535) {
        std::fprintf(stderr, "qbpd-service: bad port \"%s\"\n", argv[i]);
        return false;
      }
    } else if (arg == "--data-dir" && has_value) {
      args.data_dir = argv[++i];
    } else if (arg == "--listen" && has_value) {
      args.listen = argv[++i];
    } else if (arg == "--mail-relay" && has_value) {
      args.mail_relay = argv[++i];
    } else if (arg == "--database" && has_value) {
      args.database = argv[++i];
    } else if (arg == "--trusted-proxy" && has_value) {
      if (!qbpd::service::IsProxyAddress(argv[++i])) {
        std::fprintf(stderr,
                     "qbpd-service: --trusted-proxy wants an address or "
                     "network, not \"%s\"\n",
                     argv[i]);
        return false;
      }
      args.trusted_proxies.push_back(argv[i]);
    } else if (arg == "--upgrade-version" && has_value) {
      args.upgrade_version = argv[++i];
    } else if (arg == "--upgrade-file" && has_value) {
      args.upgrade_file = argv[++i];
    } else if (arg == "--signing-key" && has_value) {
      args.signing_key = argv[++i];
    } else if (arg == "--cert" && has_value) {
      args.cert = argv[++i];
    } else if (arg == "--key" && has_value) {
      args.key = argv[++i];
    } else {
      std::fprintf(stderr,
                   "qbpd-service: unknown or incomplete option \"%s\"\n",
                   argv[i]);
      return false;
    }
  }
  if (args.data_dir.empty()) {
    std::fprintf(stderr, "qbpd-service: --data-dir is required\n");
    return false;
  }
  if (args.cert.empty() != args.key.empty()) {
    std::fprintf(stderr, "qbpd-service: --cert and --key go together\n");
    return false;
  }
  if (args.front && !args.cert.empty()) {
    std::fprintf(stderr,
                 "qbpd-service: with --front, nginx's configuration serves "
                 "HTTPS, not --cert\n");
    return false;
  }
  if (args.front && args.port == 0) {
    std::fprintf(stderr, "qbpd-service: --front needs a port of its own\n");
    return false;
  }
  if (!args.trusted_proxies.empty() && !args.front) {
    std::fprintf(stderr, "qbpd-service: --trusted-proxy needs --front\n");
    return false;
  }
  return true;
}

// Signs the upgrade file as it is now, once: a file changed afterwards no
// longer matches what the service publishes beside it.
bool SignUpgradeFile(const std::string& key_file,
                     qbpd::service::ServiceOptions& options) {
  std::string secret;
  if (!qbpd::ReadKeyFile(key_file, secret)) {
    std::fprintf(stderr, "qbpd-service: cannot read the signing key %s\n",
                 key_file.c_str());
    return false;
  }
  const auto content = qbpd::service::UpgradeFileContent(options);
  if (!content) {
    std::fprintf(stderr, "qbpd-service: cannot read the upgrade file %s\n",
                 options.upgrade_file.c_str());
    return false;
  }
  options.upgrade_signature = qbpd::SignBytes(*content, secret);
  if (options.upgrade_signature.empty()) {
    std::fprintf(stderr, "qbpd-service: %s holds no signing key\n",
                 key_file.c_str());
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  Arguments args;
  if (!ParseArguments(argc, argv, args)) {
    PrintUsage();
    return kUsageError;
  }
  // The signals are taken by one waiting thread, not by a handler, so that
  // stopping the server happens outside signal context.
  sigset_t stop_signals;
  sigemptyset(&stop_signals);
  sigaddset(&stop_signals, SIGTERM);
  sigaddset(&stop_signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);

  try {
    qbpd::service::ServiceOptions options;
    options.data_dir = args.data_dir;
    options.database = args.database;
    options.seed_demo = args.seed_demo;
    options.upgrade_version = args.upgrade_version;
    options.mail_relay = args.mail_relay;
    options.upgrade_file = args.upgrade_file;
    if (!args.signing_key.empty()) {
      if (!SignUpgradeFile(args.signing_key, options)) {
        return 1;
      }
    } else if (!args.upgrade_file.empty()) {
      // A file signed elsewhere (qbpd-sign) comes with its FILE.sig.
      std::string signature;
      if (qbpd::ReadKeyFile(args.upgrade_file + ".sig", signature)) {
        while (!signature.empty() &&
               std::isspace(static_cast<unsigned char>(signature.back()))) {
          signature.pop_back();
        }
        options.upgrade_signature = signature;
      }
    }
    qbpd::service::ServiceCore core(options);
    qbpd::service::Server server(core, args.front, {args.cert, args.key});
    // Behind the front the service itself listens on a loopback port of
    // its own, and nginx on the one asked for.
    const int port = args.front ? server.Bind("127.0.0.1", 0)
                                : server.Bind(args.listen, args.port);
    if (port < 0) {
      std::fprintf(stderr, "qbpd-service: cannot listen on %s:%d\n",
                   args.listen.c_str(), args.port);
      return 1;
    }
    std::unique_ptr<qbpd::service::Front> front;
    if (args.front) {
      qbpd::service::FrontOptions front_options;
      front_options.listen = args.listen;
      front_options.port = args.port;
      front_options.upstream_port = port;
      front_options.folder = options.data_dir / FrontFolderName(args);
      front_options.max_body_bytes = core.max_upload_bytes() + kMultipartSlack;
      front_options.trusted_proxies = args.trusted_proxies;
      front = std::make_unique<qbpd::service::Front>(front_options);
      std::printf("listening on %s:%d (nginx, the service on 127.0.0.1:%d)\n",
                  args.listen.c_str(), args.port, port);
    } else {
      std::printf("listening on %s:%d\n", args.listen.c_str(), port);
    }
    if (!core.new_demo_password().empty()) {
      // Shown this once; the data folder keeps it for its owner only.
      std::printf("demo account %s, password %s (kept in %s)\n",
                  qbpd::service::kDemoEmail, core.new_demo_password().c_str(),
                  (options.data_dir / qbpd::service::kDemoAccountFile).c_str());
    }
    std::fflush(stdout);

    std::thread waiter([&server, &front, &stop_signals] {
      int signal_number = 0;
      sigwait(&stop_signals, &signal_number);
      // The front goes first: it finishes the answers under way and closes
      // the connections it keeps open to the service, whose threads would
      // otherwise wait out their keep-alive time before the server ends.
      front.reset();
      server.Stop();
    });
    const bool served = server.Run();
    // Run can also end on its own; wake the waiter so that it can be joined.
    pthread_kill(waiter.native_handle(), SIGTERM);
    waiter.join();
    return served ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qbpd-service: %s\n", error.what());
    return 1;
  }
}
