// qbpd: the desktop program.
#include "app/program/program.h"
#include "platform/display_model.h"
#include "platform/launcher.h"
#include "platform/number_format.h"
#include "ui/qt/qt_clipboard.h"
#include "ui/qt/qt_host.h"

#include <QApplication>
#include <QTimer>

#include <clocale>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace {

// The command line as the program reads it: the arguments in one quoted
// text, as a desktop passes a photo's path.
std::string CommandLineOf(int argc, char** argv) {
  std::string joined;
  for (int i = 1; i < argc; ++i) {
    if (!joined.empty()) {
      joined += ' ';
    }
    joined += argv[i];
  }
  return joined.empty() ? "" : "\"" + joined + "\"";
}

// How often a second start's request to come forward is looked for.
constexpr int kInstancePollMs = 250;

}  // namespace

int main(int argc, char** argv) {
  // Taken before Qt starts, which takes the X11 startup id for itself: a
  // second start hands the token on to the running instance.
  qbpd::ActivationToken activation = qbpd::ActivationTokenFromEnvironment();
  QApplication qt_app(argc, argv);
  // Qt takes the whole locale of the environment; numbers in files, settings
  // and service answers are read and written with ".", so the C library's
  // number functions keep the C locale. The user's own format is read apart
  // and used where amounts are shown.
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName("Quillbay Picture Desk");
  QApplication::setQuitOnLastWindowClosed(false);
  const std::string command_line = CommandLineOf(argc, argv);

  qbpd::PlatformServices services =
      qbpd::MakePlatformServices(nullptr, std::move(activation));
  services.clipboard = qbpd::MakeQtClipboard();
  services.launcher = qbpd::MakeXdgLauncher();
  auto owned_host = std::make_unique<qbpd::QtHost>();
  qbpd::QtHost& host = *owned_host;
  // The photo view decodes on another thread while the window keeps
  // painting; the program sees nothing of the wait.
  // A photo whose cached thumbnail shows it shows that at once, while it
  // is decoded. The image library lives as long as the program.
  qbpd::ImageOperations* images = services.images.get();
  services.make_display = [&host, images] {
    return qbpd::MakeVipsDisplayControl(
        /*work_ahead=*/true,
        [&host](const std::function<bool()>& done) {
          host.WaitUnnoticed(done);
        },
        [images](const std::string& path) {
          return images->CachedStandIn(path);
        });
  };
  services.numbers = qbpd::SystemNumberFormat();

  qbpd::Application app(std::move(owned_host), std::move(services),
                        qbpd::RegisterProgram);
  host.SetIdleHook([&app] {
    app.forms().CollectGarbage();
    if (!app.IsRunning()) {
      QCoreApplication::quit();
    }
  });
  QTimer instance_poll;
  QObject::connect(&instance_poll, &QTimer::timeout, [&app, &host] {
    if (host.dispatch_depth() == 0 && !host.Holding()) {
      std::optional<qbpd::ActivationToken> request = app.PollInstanceRequests();
      host.AfterEvent();
      if (request) {
        host.BringForward(*request);
      }
    }
  });
  instance_poll.start(kInstancePollMs);

  app.Start(command_line);
  app.forms().CollectGarbage();
  if (!app.IsRunning()) {
    return 0;  // a second start handed over, or the start ended the run
  }
  return QApplication::exec();
}
