#include "core/application.h"

#include "core/help.h"
#include "core/settings.h"
#include "platform/forms/runtime_error.h"
#include "platform/internet_check.h"

#include <cctype>
#include <string_view>

namespace qbpd {

Application::Application(std::unique_ptr<Host> host,
                         PlatformServices services,
                         const Catalog& catalog)
    : host_(std::move(host)), services_(std::move(services)), forms_(*host_) {
  if (!services_.settings) {
    services_.settings = MakeMemorySettingsStore();
  }
  if (!services_.clipboard) {
    services_.clipboard = MakeMemoryClipboard();
  }
  if (!services_.launcher) {
    services_.launcher = MakeRecordingLauncher();
  }
  if (!services_.camera_devices) {
    services_.camera_devices = MakeNoCameraDevices();
  }
  if (!services_.file_transfer) {
    services_.file_transfer = MakeVerifiedFileTransfer();
  }
  if (!services_.wallpaper) {
    services_.wallpaper = MakeDesktopWallpaper(nullptr, {});
  }
  if (!services_.screensaver) {
    services_.screensaver = MakeDesktopScreensaver(nullptr, {}, "");
  }
  if (!services_.default_viewer) {
    services_.default_viewer = MakeNoDefaultViewer();
  }
  if (!services_.autostart) {
    services_.autostart = MakeNoAutostart();
  }
  if (!services_.installer) {
    services_.installer = MakeRecordingLauncher();
  }
  // F1 on any form opens the help at that form's topic. A help that can't
  // be opened is, like any unplanned failure, not shown to the user.
  forms_.SetHelpHandler([this](Form& form, int context) {
    LaunchResult result = ShowHelp(*this, context);
    if (!result.ok) {
      host_->HandlerFailed(form.Name() + " help", result.error);
    }
  });
  if (catalog) {
    catalog(*this);
  }
}

Application::~Application() = default;

void Application::Start(std::string command_line) {
  if (entry_form_.empty() || !forms_.IsRegistered(entry_form_)) {
    throw RuntimeError(kErrNoSuchForm, "The program has no entry form");
  }
  command_line_ = std::move(command_line);
  if (!services_.default_settings.empty()) {
    // Start-up goes on over a set that can't be laid, as over every failure
    // of its own; what is missing then reads as empty.
    (void)LayDefaultSettings(*services_.settings, services_.default_settings,
                             InstallerVariables(services_.places.pictures));
  }
  forms_.Get(entry_form_);
  forms_.CollectGarbage();
}

ImageOperations& Application::images() {
  if (!services_.images) {
    throw RuntimeError(kErrNoSuchForm, "The run has no image library");
  }
  return *services_.images;
}

std::unique_ptr<HttpTransport> Application::ServiceTransport(ServiceNeed need) {
  std::unique_ptr<HttpTransport> inner;
  if (services_.make_transport) {
    inner = services_.make_transport();
  } else {
    HttpTransportOptions options;
    options.ca_file =
        TrimSpaces(ReadSetting(*services_.settings, kRootKey, "CAFile"));
    inner = MakeCurlTransport(std::move(options));
  }
  return MakeServiceTransport(std::move(inner), services_.service.get(), need);
}

std::string Application::PrepareService(const std::string& address,
                                        ServiceNeed need) {
  if (!services_.service) {
    return std::string();
  }
  return services_.service->Prepare(address, need, [this] {
    host_->DoEvents();
    return true;
  });
}

bool Application::CheckInternetConnection(ServiceNeed need) {
  const std::string address =
      TrimSpaces(ReadSetting(*services_.settings, kRootKey, "URL"));
  if (address.size() < 2) {
    return true;
  }
  if (!PrepareService(address, need).empty()) {
    return false;
  }
  if (services_.internet_check) {
    return services_.internet_check(address);
  }
  return qbpd::CheckInternetConnection(address);
}

bool Application::PrevInstance() {
  if (!prev_instance_) {
    prev_instance_ = services_.instance && !services_.instance->Claim();
  }
  return *prev_instance_;
}

bool Application::AskPrevInstanceToComeForward() {
  return services_.instance && services_.instance->AskFirstToComeForward();
}

std::optional<ActivationToken> Application::PollInstanceRequests() {
  if (!services_.instance) {
    return std::nullopt;
  }
  std::optional<ActivationToken> request =
      services_.instance->TakeComeForwardRequest();
  if (!request) {
    return std::nullopt;
  }
  // The program's windows are known by the start of their caption, as a
  // second start looks for them.
  constexpr std::string_view kTitle = "QUILLBAY PICTURE DESK";
  for (Form* form : forms_.Loaded()) {
    std::string caption = form->Caption().substr(0, kTitle.size());
    for (char& c : caption) {
      c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    if (!form->Visible() || caption != kTitle) {
      continue;
    }
    if (form->WindowState() == kWindowMinimized) {
      form->Dispatch("come forward",
                     [form] { form->SetWindowState(kWindowNormal); });
    }
  }
  forms_.CollectGarbage();
  return request;
}

void Application::End() {
  ended_ = true;
  for (Form* form : forms_.Loaded()) {
    form->Discard();
  }
  forms_.CollectGarbage();
}

bool Application::IsRunning() const {
  return !forms_.Loaded().empty();
}

}  // namespace qbpd
