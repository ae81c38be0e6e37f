#ifndef QBPD_TESTS_ONLINE_ONLINE_FIXTURE_H_
#define QBPD_TESTS_ONLINE_ONLINE_FIXTURE_H_

#include "app/program/program.h"
#include "browser/frm_main_window.h"
#include "core/application.h"
#include "core/settings.h"
#include "online/client_factory.h"
#include "online/scripted_service_client.h"
#include "platform/display_model.h"
#include "platform/forms/scripted_host.h"
#include "platform/forms/user_input.h"
#include "platform/http_transport.h"
#include "platform/image_operations.h"
#include "platform/launcher.h"
#include "platform/places.h"
#include "platform/settings_store.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qbpd::testing_support {

// The whole program on the scripted host with the scripted service double
// behind every online form, a folder of real photos, settings in memory
// that point at a site, and a recording launcher. A test queues what the
// user does (Queue, Click), scripts the service's answers (client()), and
// runs the steps with Run().
class OnlineTest : public ::testing::Test {
 protected:
  static constexpr char kSite[] = "http://127.0.0.1:8931/api";
  static constexpr char kAddress[] = "http://127.0.0.1:8931";

  OnlineTest();
  ~OnlineTest() override;

  // Writes `count` JPEG photos photo001.jpg ... into the photo folder.
  void WritePhotos(int count);
  // Writes a 40 x 30 PNG drawing of one grey `level` into the photo folder.
  void WriteDrawing(const std::string& name, int level);
  std::filesystem::path photos() const { return dir_.path() / "Photos"; }
  std::string Photo(int n) const;

  // Starts the program on the photo folder and lets the first load run;
  // the settings are laid first (kSite, kAddress, AutoLogin False).
  void Start();
  // Ticks the first `count` photos of the grid (indexes from 0).
  void Select(int count);

  // Stored login: user, scrambled password and AutoLogin.
  void StoreLogin(const std::string& user,
                  const std::string& password,
                  const std::string& auto_login);

  // --- the user ---------------------------------------------------------
  void Queue(const std::string& what, std::function<void()> step) {
    host_->Queue(what, std::move(step));
  }
  void QueueInside(const std::string& what,
                   std::function<void()> step,
                   int skip = 0) {
    host_->QueueInside(what, std::move(step), skip);
  }
  // Queues a click on `control` of form `form` (found when the step runs).
  void QueueClick(const std::string& form, const std::string& control);
  void QueueClickInside(const std::string& form,
                        const std::string& control,
                        int skip = 0);
  void QueueText(const std::string& form,
                 const std::string& control,
                 const std::string& text);
  // The next message box must say `text`; it is answered with OK.
  void ExpectBox(const std::string& text);
  // Runs every queued step; a step the program didn't foresee fails the
  // test with the host's words.
  void Run();

  // --- what happened ----------------------------------------------------
  std::vector<std::string> Messages() const;
  std::vector<std::string> Operations() const { return client_->Operations(); }
  Form* Find(const std::string& name) const { return app_->forms().Find(name); }
  Form& Get(const std::string& name) { return app_->forms().Get(name); }
  Value FieldOf(const std::string& form,
                const std::string& control,
                const std::string& property) {
    return Get(form).control(control).Property(property);
  }

  frmMainWindow& main() { return app_->forms().Get<frmMainWindow>(); }
  Session& session() { return app_->session(); }
  ScriptedHost& host() { return *host_; }
  Application& app() { return *app_; }
  ScriptedServiceClient& client() { return *client_; }
  SettingsStore& settings() { return app_->settings(); }
  const std::vector<std::string>& Opened() const { return launcher_->Opened(); }

  bool internet_ = true;
  int internet_checks_ = 0;
  // The service the run talks to; with `real_client_` the online forms use
  // the real client and the real connection check against it.
  std::string site_ = kSite;
  std::string address_ = kAddress;
  bool real_client_ = false;
  // With the real client: the transport under it (none is libcurl).
  std::function<std::unique_ptr<HttpTransport>()> make_transport_;
  // Wraps the real image library the program gets (none leaves it as is).
  std::function<std::unique_ptr<ImageOperations>(
      std::unique_ptr<ImageOperations>)>
      wrap_images_;
  // How the user's locale writes numbers (the program's own by default).
  NumberFormat numbers_;
  // What starts a downloaded upgrade (none records), and the key that its
  // signature must match.
  std::unique_ptr<Launcher> installer_;
  std::string upgrade_key_;

 private:
  testing::TempDir dir_;
  ScriptedHost* host_ = nullptr;
  RecordingLauncher* launcher_ = nullptr;
  std::unique_ptr<ScriptedServiceClient> client_;
  std::unique_ptr<Application> app_;
};

// A login answer with a session code and a user code.
LoginUserReply LoginOk(const std::string& code = "S1",
                       const std::string& user = "U1");
// An album list: ids and names.
GetAlbumListReply Albums(const std::vector<std::string>& ids,
                         const std::vector<std::string>& names);
// A failure of any operation.
template <class Reply>
Reply Failure(const std::string& code, const std::string& text) {
  Reply r;
  r.ok = false;
  r.errCode = code;
  r.errText = text;
  return r;
}

}  // namespace qbpd::testing_support

#endif  // QBPD_TESTS_ONLINE_ONLINE_FIXTURE_H_
