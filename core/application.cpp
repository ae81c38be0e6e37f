#include "core/application.h"

#include "platform/forms/runtime_error.h"

namespace qbpd {

Application::Application(std::unique_ptr<Host> host,
                         PlatformServices services,
                         const Catalog& catalog)
    : host_(std::move(host)), services_(std::move(services)), forms_(*host_) {
  if (!services_.settings) {
    services_.settings = MakeMemorySettingsStore();
  }
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
  forms_.Get(entry_form_);
  forms_.CollectGarbage();
}

bool Application::IsRunning() const {
  return !forms_.Loaded().empty();
}

}  // namespace qbpd
