#ifndef QBPD_TESTS_BROWSER_MAIN_WINDOW_FIXTURE_H_
#define QBPD_TESTS_BROWSER_MAIN_WINDOW_FIXTURE_H_

#include "app/program/program.h"
#include "browser/frm_main_window.h"
#include "core/application.h"
#include "core/settings.h"
#include "platform/display_model.h"
#include "platform/forms/scripted_host.h"
#include "platform/image_operations.h"
#include "platform/launcher.h"
#include "platform/places.h"
#include "platform/settings_store.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace qbpd::testing_support {

// A run of the whole program on the scripted host, with its places in a
// private folder, settings in memory and the real image library. Tests write
// photos into a folder, start the program on it and drive the main window.
class MainWindowTest : public ::testing::Test {
 protected:
  MainWindowTest() {
    VIPS_INIT("browser_tests");
    std::filesystem::create_directories(dir_ / "Pictures");
    std::filesystem::create_directories(dir_ / "Desktop");
  }

  // Writes a JPEG of `width` x `height` in one grey level to `name` inside
  // the photo folder, and returns its path.
  std::string WritePhoto(const std::string& name,
                         int width = 320,
                         int height = 240,
                         int grey = 128) const {
    std::filesystem::path path = photos() / name;
    std::filesystem::create_directories(path.parent_path());
    vips::VImage::black(width, height, vips::VImage::option()->set("bands", 3))
        .linear(1.0, grey)
        .cast(VIPS_FORMAT_UCHAR)
        .jpegsave(path.c_str());
    return path.string();
  }

  std::filesystem::path photos() const { return dir_ / "Pictures" / "Photos"; }

  // Starts the program on the photo folder and lets the first load run.
  void Start(const std::string& command_line = "") {
    PlatformServices services;
    services.settings = MakeMemorySettingsStore();
    services.places.config = (dir_ / "config").string();
    services.places.data = (dir_ / "data").string();
    services.places.cache = (dir_ / "cache").string();
    services.places.desktop = (dir_ / "Desktop").string();
    services.places.pictures = (dir_ / "Pictures").string();
    services.images = MakeVipsImageOperations((dir_ / "cache" / "t").string());
    services.make_display = [] { return MakeVipsDisplayControl(); };
    services.resources = FindResourcesFolder(services.places);
    services.wallpaper = std::move(wallpaper_);
    auto launcher = MakeRecordingLauncher();
    launcher_ = launcher.get();
    services.launcher = std::move(launcher);
    SettingsStore& store = *services.settings;
    Write(store, kSettingsKey, "LastOpenFolderInPreviousSession", "False");
    Write(store, kSettingsKey, "DefaultFolder", photos().string());
    Write(store, kDisplayKey, "ZoomSettings", zoom_setting_);
    Write(store, kDisplayKey, "NoOfRecentFolders", "5");
    Write(store, kRootKey, "Version", "1.0.0");
    for (const auto& [key, name, value] : extra_settings_) {
      Write(store, key, name, value);
    }
    if (adjust_services_) {
      adjust_services_(services);
    }
    auto host = std::make_unique<ScriptedHost>();
    host_ = host.get();
    app_ = std::make_unique<Application>(std::move(host), std::move(services),
                                         RegisterProgram);
    host_->SetIdleHook([this] { app_->forms().CollectGarbage(); });
    app_->Start(command_line);
    host_->Run();
    host_->Advance(500);
  }

  frmMainWindow& main() { return app_->forms().Get<frmMainWindow>(); }
  Session& session() { return app_->session(); }
  ScriptedHost& host() { return *host_; }
  Application& app() { return *app_; }

  // The texts of the message boxes shown so far.
  std::vector<std::string> Messages() const {
    std::vector<std::string> texts;
    for (const MsgBoxCall& call : host_->MessageBoxes()) {
      texts.push_back(call.prompt);
    }
    return texts;
  }

  // The user's answer to the next message box.
  void Answer(int button) {
    host_->QueueMsgBoxAnswer("answer",
                             [button](const MsgBoxCall&) { return button; });
  }

  std::string zoom_setting_ = "FitToWidth";
  // Changes the platform services before the program starts (fakes in the
  // place of the real image library or photo view model).
  std::function<void(PlatformServices&)> adjust_services_;
  // Further settings the program starts with: key, name, value.
  std::vector<std::tuple<std::string, std::string, std::string>>
      extra_settings_;
  // The desktop's wallpaper the program starts with; none knows no desktop.
  std::unique_ptr<Wallpaper> wallpaper_;
  // What the program asked the desktop to open (help pages, web pages).
  RecordingLauncher* launcher_ = nullptr;

 private:
  static void Write(SettingsStore& store,
                    std::string_view key,
                    std::string_view name,
                    std::string_view value) {
    EXPECT_TRUE(store.Write(key, name, value));
  }

  testing::TempDir dir_;
  ScriptedHost* host_ = nullptr;
  std::unique_ptr<Application> app_;
};

}  // namespace qbpd::testing_support

#endif  // QBPD_TESTS_BROWSER_MAIN_WINDOW_FIXTURE_H_
