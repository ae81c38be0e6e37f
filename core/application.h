#ifndef QBPD_CORE_APPLICATION_H_
#define QBPD_CORE_APPLICATION_H_

#include "core/session.h"
#include "platform/camera_devices.h"
#include "platform/clipboard.h"
#include "platform/default_viewer.h"
#include "platform/desktop_screensaver.h"
#include "platform/file_transfer.h"
#include "platform/forms/display_control.h"
#include "platform/forms/form_set.h"
#include "platform/forms/host.h"
#include "platform/http_transport.h"
#include "platform/image_operations.h"
#include "platform/launcher.h"
#include "platform/local_service.h"
#include "platform/number_format.h"
#include "platform/places.h"
#include "platform/session_autostart.h"
#include "platform/settings_store.h"
#include "platform/single_instance.h"
#include "platform/wallpaper.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qbpd {

class ctlExtAPI;  // NOLINT(readability-identifier-naming)

// The services of the platform that the program uses, made by whoever makes
// the application: real ones in the programs, fakes in tests.
struct PlatformServices {
  std::unique_ptr<SettingsStore> settings;
  // Thumbnails and the other image operations.
  std::unique_ptr<ImageOperations> images;
  // The lock of the running instance; none means every start is the first.
  std::unique_ptr<SingleInstance> instance;
  // The clipboard of the photo commands; none gives the in-process one.
  std::unique_ptr<Clipboard> clipboard;
  // Where the program keeps its files; see places.h.
  Places places;
  // How the user's locale writes numbers (amounts of money); the default is
  // the program's own "1,234.50".
  NumberFormat numbers;
  // Folder of the program's read-only files (pictures, help, defaults).
  std::string resources;
  // The installer's default set (default-settings.ini): every start lays
  // the values of it that the settings don't hold yet, so that a fresh home
  // works without qbpd-reg. Empty lays nothing (tests and scripts say what
  // they need).
  std::string default_settings;
  // Opens help pages and web pages; none means a recording one that opens
  // nothing.
  std::unique_ptr<Launcher> launcher;
  // Makes the picture model of a photo view; none leaves photo views empty.
  std::function<std::unique_ptr<DisplayControl>()> make_display;
  // Whether and how the online service at an address may be used: the
  // programs' connection starts this user's reference service when a command
  // first needs it and refuses another user's. None uses every address as
  // it stands.
  std::unique_ptr<ServiceConnection> service;
  // Sets the desktop's wallpaper; none knows no desktop, and every change
  // fails.
  std::unique_ptr<Wallpaper> wallpaper;
  // The session's screen saver; none knows none, and every change fails.
  std::unique_ptr<DesktopScreensaver> screensaver;
  // Makes the network transport under ServiceTransport; none is libcurl.
  std::function<std::unique_ptr<HttpTransport>()> make_transport;
  // Makes the service client of an online form (a scripted double in tests
  // and scripts); none gives the real client over ServiceTransport (see
  // online/client_factory.h).
  std::function<std::unique_ptr<ctlExtAPI>()> make_client;
  // CheckInternetConnection: whether the service at an address can be
  // reached now; none asks the network (platform/internet_check.h).
  std::function<bool(const std::string& address)> internet_check;
  // The cameras and removable media, and the camera transfer helper; none
  // knows no device and starts no helper.
  std::unique_ptr<CameraDevices> camera_devices;
  // Copies and moves card files, verified; none is the real one.
  std::unique_ptr<FileTransfer> file_transfer;
  // The desktop's default viewer of JPEG photos; none knows no desktop, and
  // every change fails.
  std::unique_ptr<DefaultViewer> default_viewer;
  // Whether the device monitor starts with the session; none knows no
  // session, and every change fails.
  std::unique_ptr<SessionAutostart> autostart;
  // Starts a downloaded upgrade (an installer script of this program) and
  // doesn't wait for it; none is a recording one that starts nothing.
  std::unique_ptr<Launcher> installer;
  // The public key (base64 Ed25519) that an upgrade download must be signed
  // with; empty refuses every download.
  std::string upgrade_key;
};

// One run of the program: the host it talks to, the platform services, the
// session values and the forms. Nothing of a run lives outside this object,
// so every test builds a fresh one.
class Application {
 public:
  // Declares the program's forms (FormSet::Register) and its entry form.
  using Catalog = std::function<void(Application&)>;

  Application(std::unique_ptr<Host> host,
              PlatformServices services,
              const Catalog& catalog);
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;
  ~Application();

  Host& host() { return *host_; }
  Session& session() { return session_; }
  FormSet& forms() { return forms_; }
  SettingsStore& settings() { return *services_.settings; }
  // The image library; a RuntimeError when the run was made without one.
  ImageOperations& images();
  const Places& places() const { return services_.places; }
  const NumberFormat& numbers() const { return services_.numbers; }
  Clipboard& clipboard() { return *services_.clipboard; }
  const std::string& resources_folder() const { return services_.resources; }
  // Opens help pages and the service's pages in the user's programs.
  Launcher& launcher() { return *services_.launcher; }
  Wallpaper& wallpaper() { return *services_.wallpaper; }
  // The camera import's devices and its file layer.
  CameraDevices& camera_devices() { return *services_.camera_devices; }
  FileTransfer& file_transfer() { return *services_.file_transfer; }
  DesktopScreensaver& screensaver() { return *services_.screensaver; }
  DefaultViewer& default_viewer() { return *services_.default_viewer; }
  SessionAutostart& autostart() { return *services_.autostart; }
  // Starts a downloaded upgrade, and the key its signature must match.
  Launcher& installer() { return *services_.installer; }
  const std::string& upgrade_key() const { return services_.upgrade_key; }
  // A new picture model for a photo view; null when the run has none.
  std::shared_ptr<DisplayControl> NewDisplayControl() const {
    return services_.make_display ? services_.make_display() : nullptr;
  }

  // The one way to the online service. Every service client gets its
  // transport here (MakeServiceClient(host, [&app] { return
  // app.ServiceTransport(); })): before each request it has the service
  // connection make sure that the service at the request's address may be
  // used, starting this user's reference service when a command first needs
  // it (kStart); a background check passes kRunning and starts nothing.
  // Without a maker of transports it is libcurl, trusting the authorities of
  // the setting `CAFile` when it names a file (a private service's own).
  std::unique_ptr<HttpTransport> ServiceTransport(
      ServiceNeed need = ServiceNeed::kStart);
  // The same preparation without a request, for the check of the connection
  // (CheckInternetConnection) that an online command makes first: "" when
  // the service at `address` may be used now, else why not. Events run while
  // a start is waited for.
  std::string PrepareService(const std::string& address,
                             ServiceNeed need = ServiceNeed::kStart);

  // The maker of the online forms' service clients that the run was given;
  // empty when the run uses the real client.
  const std::function<std::unique_ptr<ctlExtAPI>()>& ClientMaker() const {
    return services_.make_client;
  }
  // CheckInternetConnection: true when the service at the site setting
  // (`URL`) can be used and reached now. The service is prepared first (this
  // user's reference service starts when an online command first needs it).
  // Without a site setting there is nothing to ask and the answer is true,
  // so that the command goes on to say what is missing. A check in the
  // background passes kRunning: it starts no service, and a service that
  // doesn't run counts as no connection.
  bool CheckInternetConnection(ServiceNeed need = ServiceNeed::kStart);

  // App.PrevInstance: whether another instance of the program runs. The
  // first call decides, and makes this process the running instance when
  // none is.
  bool PrevInstance();
  // From a second start: asks the running instance to come forward.
  bool AskPrevInstanceToComeForward();
  // In the running instance: acts on a second start's request, if one came.
  // A minimised window of the program is restored, which raises its Resize
  // event. Hosts call this when they are idle; the answer is the second
  // start's activation token, with which a desktop host brings the window
  // to the front, or nothing when no request came.
  std::optional<ActivationToken> PollInstanceRequests();

  // Ends the process's run: unloads every form without asking.
  void End();
  bool Ended() const { return ended_; }

  // The form that a start loads; its Form_Load runs the start-up.
  void SetEntryForm(std::string name) { entry_form_ = std::move(name); }
  const std::string& EntryForm() const { return entry_form_; }

  // The command line of this start, as the program reads it.
  const std::string& CommandLine() const { return command_line_; }

  // Starts the program with `command_line`: lays the missing default
  // settings, then loads the entry form. The run then lives on the host's
  // events until the last form unloads.
  void Start(std::string command_line);
  // Whether any form is still loaded.
  bool IsRunning() const;

 private:
  std::unique_ptr<Host> host_;
  PlatformServices services_;
  Session session_;
  FormSet forms_;
  std::string entry_form_;
  std::string command_line_;
  std::optional<bool> prev_instance_;
  bool ended_ = false;
};

}  // namespace qbpd

#endif  // QBPD_CORE_APPLICATION_H_
