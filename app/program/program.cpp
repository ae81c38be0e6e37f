#include "app/program/program.h"

#include "browser/frm_main_window.h"
#include "camera/frm_cam_progress.h"
#include "camera/frm_camera_copy.h"
#include "camera/frm_device_list.h"
#include "camera/frm_image_transfer.h"
#include "camera/mod_camera_conn.h"
#include "core/frm_about_us.h"
#include "core/frm_msg_infrm.h"
#include "core/frm_splash.h"
#include "core/settings.h"
#include "editor/frm_rotate.h"
#include "online/online_forms.h"
#include "online/upgrade_check.h"
#include "platform/default_viewer.h"
#include "platform/display_model.h"
#include "platform/local_service.h"
#include "platform/session_autostart.h"
#include "platform/signature.h"
#include "platform/wallpaper.h"
#include "preferences/frm_preferences.h"
#include "presentation/frm_photo_info.h"
#include "presentation/frm_slide_show.h"
#include "presentation/frm_wallpaper.h"
#include "printorder/printorder_forms.h"
#include "screensaver/screensaver_forms.h"

#include <cstdio>
#include <filesystem>

namespace qbpd {

void RegisterProgram(Application& app) {
  Application* a = &app;
  app.forms().Register<frmSplash>(
      [a] { return std::make_unique<frmSplash>(*a); });
  app.forms().Register<frmMainWindow>([a] {
    auto window = std::make_unique<frmMainWindow>(*a);
    WireCameraImport(*window, *a);
    WireUpgradeCheck(*window, *a);
    return window;
  });
  app.forms().Register<frmMsgInfrm>(
      [a] { return std::make_unique<frmMsgInfrm>(*a); });
  app.forms().Register<frmAboutUs>(
      [a] { return std::make_unique<frmAboutUs>(*a); });
  app.forms().Register<frmRotate>(
      [a] { return std::make_unique<frmRotate>(*a); });
  RegisterOnlineForms(app);
  RegisterPrintOrderForms(app);
  app.forms().Register<frmPhotoInfo>(
      [a] { return std::make_unique<frmPhotoInfo>(*a); });
  app.forms().Register<frmSlideShow>(
      [a] { return std::make_unique<frmSlideShow>(*a); });
  app.forms().Register<frmWallpaper>(
      [a] { return std::make_unique<frmWallpaper>(*a); });
  app.forms().Register<frmDeviceList>(
      [a] { return std::make_unique<frmDeviceList>(*a); });
  app.forms().Register<frmCameraCopy>(
      [a] { return std::make_unique<frmCameraCopy>(*a); });
  app.forms().Register<frmImageTransfer>(
      [a] { return std::make_unique<frmImageTransfer>(*a); });
  app.forms().Register<frmCamProgress>(
      [a] { return std::make_unique<frmCamProgress>(*a); });
  RegisterScreensaverForms(app);
  app.forms().Register<frmPreferences>(
      [a] { return std::make_unique<frmPreferences>(*a); });
  app.SetEntryForm("frmSplash");
}

PlatformServices MakePlatformServices(std::unique_ptr<SettingsStore> settings,
                                      ActivationToken token) {
  PlatformServices services;
  services.places = FindPlaces();
  services.settings =
      settings
          ? std::move(settings)
          : MakeSqliteSettingsStore(services.places.config + "/settings.db");
  // The desktop's shared thumbnails lie beside the program's cache folder,
  // in $XDG_CACHE_HOME/thumbnails.
  services.images = MakeVipsImageOperations(
      services.places.cache + "/thumbnails", /*thumbnails_ahead=*/true,
      std::filesystem::path(services.places.cache).parent_path().string() +
          "/thumbnails");
  std::string runtime =
      services.places.runtime.empty()
          ? MakePrivateTempFolder(services.places)
          : services.places.runtime + "/quillbay-picture-desk";
  services.instance = MakeSingleInstance(runtime, std::move(token));
  // The reference service beside the program, started when an online command
  // first needs it and stopped with the last of the user's programs that
  // used it.
  LocalServiceOptions service;
  service.program = services.places.program + "/qbpd-service";
  service.data_dir = services.places.data + "/service";
  service.lock_folder = runtime;
  service.tell = [](const std::string& text) {
    std::fprintf(stderr, "qbpd: %s\n", text.c_str());
  };
  services.service = MakeLocalServiceConnection(std::move(service));
  services.resources = FindResourcesFolder(services.places);
  if (!services.resources.empty()) {
    services.default_settings = services.resources + "/default-settings.ini";
  }
  services.launcher = MakeXdgLauncher();
  // A downloaded upgrade is an installer script; it is read by the shell
  // rather than executed, so a temp folder mounted noexec doesn't stop it.
  services.installer = MakeXdgLauncher("/bin/sh");
  // The public half of the key that upgrades are signed with ships with
  // the resources; without it every download is refused.
  if (!services.resources.empty() &&
      !ReadKeyFile(services.resources + "/upgrade-key.pub",
                   services.upgrade_key)) {
    services.upgrade_key.clear();
  }
  services.wallpaper =
      MakeDesktopWallpaper(MakeSpawnRunner(), ProcessEnvironment());
  services.screensaver =
      MakeDesktopScreensaver(MakeSpawnRunner(), ProcessEnvironment(),
                             services.places.program + "/qbpd-saver");
  services.make_display = [] { return MakeVipsDisplayControl(); };
  const std::string config_home = XdgConfigHome();
  services.default_viewer =
      MakeXdgDefaultViewer(config_home, "quillbay-picture-desk.desktop",
                           services.places.config + "/jpeg-viewer-before");
  services.autostart =
      MakeXdgAutostart(config_home, services.places.program + "/qbpd-devmon");
  services.camera_devices = MakeLinuxCameraDevices(
      services.places.program + "/qbpd-imgacq", services.places.data);
  return services;
}

}  // namespace qbpd
