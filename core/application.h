#ifndef QBPD_CORE_APPLICATION_H_
#define QBPD_CORE_APPLICATION_H_

#include "core/session.h"
#include "platform/forms/form_set.h"
#include "platform/forms/host.h"
#include "platform/settings_store.h"

#include <functional>
#include <memory>
#include <string>

namespace qbpd {

// The services of the platform that the program uses, made by whoever makes
// the application: real ones in the programs, fakes in tests.
struct PlatformServices {
  std::unique_ptr<SettingsStore> settings;
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

  // The form that a start loads; its Form_Load runs the start-up.
  void SetEntryForm(std::string name) { entry_form_ = std::move(name); }
  const std::string& EntryForm() const { return entry_form_; }

  // The command line of this start, as the program reads it.
  const std::string& CommandLine() const { return command_line_; }

  // Starts the program with `command_line`: loads the entry form. The run
  // then lives on the host's events until the last form unloads.
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
};

}  // namespace qbpd

#endif  // QBPD_CORE_APPLICATION_H_
