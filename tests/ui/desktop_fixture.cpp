#include "tests/ui/desktop_fixture.h"

#include "app/program/program.h"
#include "core/settings.h"
#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "platform/places.h"
#include "platform/settings_store.h"
#include "platform/single_instance.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_clipboard.h"
#include "ui/qt/qt_host.h"

#include <QCoreApplication>
#include <QTest>
#include <QTimer>

#include <cstdio>

namespace qbpd::testing {

namespace fs = std::filesystem;

void DesktopTest::SetUp() {
  EnsureQtApplication();
  folder_ = tmp_.path() / "Pictures" / "Walk";
  fs::create_directories(folder_);
  for (int i = 1; i <= photo_count_; ++i) {
    char name[32];
    std::snprintf(name, sizeof(name), "photo%03d.jpg", i);
    MakePhoto((folder_ / name).string(), photo_width_, photo_height_,
              (i * 30) % 200);
  }
  PlatformServices services;
  services.settings = MakeMemorySettingsStore();
  services.places.config = (tmp_.path() / "config").string();
  services.places.data = (tmp_.path() / "data").string();
  services.places.cache = (tmp_.path() / "cache").string();
  services.places.desktop = (tmp_.path() / "Desktop").string();
  services.places.pictures = (tmp_.path() / "Pictures").string();
  services.resources = FindResourcesFolder(services.places);
  services.images =
      MakeVipsImageOperations((tmp_.path() / "cache" / "t").string());
  auto owned = std::make_unique<QtHost>();
  host_ = owned.get();
  // As the desktop program makes it: the decoding waits unnoticed.
  services.make_display = [host = host_] {
    return MakeVipsDisplayControl(
        /*work_ahead=*/true, [host](const std::function<bool()>& done) {
          host->WaitUnnoticed(done);
        });
  };
  services.clipboard = MakeQtClipboard();
  if (!instance_folder_.empty()) {
    services.instance = MakeSingleInstance(instance_folder_);
  }
  SettingsStore& store = *services.settings;
  (void)store.Write(kSettingsKey, "LastOpenFolderInPreviousSession", "False");
  (void)store.Write(kSettingsKey, "DefaultFolder", folder_.string());
  (void)store.Write(kDisplayKey, "ZoomSettings", zoom_setting_);
  (void)store.Write(kDisplayKey, "NoOfRecentFolders", "5");
  (void)store.Write(kRootKey, "Version", "1.0.0");
  if (adjust_services_) {
    adjust_services_(services);
  }
  app_ = std::make_unique<Application>(std::move(owned), std::move(services),
                                       RegisterProgram);
  Application* app = app_.get();
  host_->SetIdleHook([app] { app->forms().CollectGarbage(); });
  app_->Start("");
  main_ = app_->forms().Find<frmMainWindow>();
  ASSERT_NE(main_, nullptr);
  window_ = host_->WindowOf(*main_);
  ASSERT_NE(window_, nullptr);
  ASSERT_TRUE(QTest::qWaitFor(
      [this] { return !main_->ctlDisplayImage.PhotoPath().empty(); }, 15000));
  ASSERT_EQ(app_->session().gdicPhotoList.Count(), photo_count_);
}

void DesktopTest::TearDown() {
  app_->End();
  app_.reset();
  QCoreApplication::processEvents();
}

QWidget* DesktopTest::WidgetFor(const Control& c) {
  ControlWidget* w = window_->WidgetOf(c);
  return w != nullptr ? w->widget() : nullptr;
}

void RunSteps(std::shared_ptr<std::vector<ScreenStep>> steps, size_t i) {
  if (i >= steps->size()) {
    return;
  }
  QTimer::singleShot(50, [steps, i] {
    if (!(*steps)[i].ready()) {
      RunSteps(steps, i);
      return;
    }
    RunSteps(steps, i + 1);
    (*steps)[i].act();
  });
}

Form* DesktopTest::Shown(const char* name) {
  Form* f = app_->forms().Find(name);
  return f != nullptr && f->Visible() ? f : nullptr;
}

}  // namespace qbpd::testing
