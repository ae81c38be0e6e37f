// qbpd-script: runs the program headless on a script of user actions.
#include "app/driver/script_runner.h"
#include "app/program/program.h"
#include "platform/desktop_screensaver.h"
#include "platform/program_runner.h"
#include "platform/wallpaper.h"

int main(int argc, char** argv) {
  return qbpd::ScriptMain(argc, argv, qbpd::RegisterProgram, [] {
    // A script's settings live in memory and start empty: it says what it
    // needs.
    qbpd::PlatformServices services =
        qbpd::MakePlatformServices(qbpd::MakeMemorySettingsStore());
    services.default_settings.clear();
    // A script opens no windows of other programs: help and web pages it
    // asks for are only recorded.
    services.launcher = qbpd::MakeRecordingLauncher();
    // Nor does it change this machine's wallpaper: the desktop it sets is a
    // GNOME one whose settings live in memory for the run (gsettings with
    // its memory backend), so the real tools still check every value.
    services.wallpaper = qbpd::MakeDesktopWallpaper(
        qbpd::MakeSpawnRunner({{"GSETTINGS_BACKEND", "memory"}}),
        {{"XDG_CURRENT_DESKTOP", "GNOME"}});
    // Its screen saver is XScreenSaver only when the script gives the run's
    // home a ~/.xscreensaver; no daemon of this machine's display is asked.
    services.screensaver = qbpd::MakeDesktopScreensaver(
        qbpd::MakeSpawnRunner({{"DISPLAY", ""}}),
        {{"HOME", qbpd::ProcessEnvironment()["HOME"]}},
        services.places.program + "/qbpd-saver");
    return services;
  });
}
