#include "core/frm_splash.h"

#include "core/quil_mod.h"

namespace qbpd {
namespace {

constexpr int kSplashWidth = 6000;
constexpr int kSplashHeight = 4000;
constexpr int kActivateDelayMs = 500;

// Settings values read in the same way: up to the first NUL, upper-cased.
std::string ReadFlag(Application& app,
                     std::string_view key,
                     std::string_view value) {
  return UpperCase(CutAtFirstNul(app.settings().Read(key, value)));
}

}  // namespace

frmSplash::frmSplash(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kSplashWidth, kSplashHeight);
  imgSplash.Move(0, 0, kSplashWidth, kSplashHeight - 600);
  lblVersion.Move(240, kSplashHeight - 540, kSplashWidth - 480, 300);
}

void frmSplash::Form_Load() {
  Session& s = app_.session();
  // The registration of helper components has no counterpart here.
  InitWorkingFolders(app_);

  s.goResources = std::make_unique<Resources>(app_.resources_folder());
  imgSplash.SetPicture(s.goResources->Picture("G10", "BUTTON"));
  lblVersion.SetCaption(
      "Version " + DropTrailingNul(app_.settings().Read(kRootKey, "Version")));

  s.gsCommandLine = app_.CommandLine();
  if (!s.gsCommandLine.empty()) {
    // The first and last characters are the quotes around the path.
    s.gsCommandLine =
        s.gsCommandLine.size() >= 2
            ? s.gsCommandLine.substr(1, s.gsCommandLine.size() - 2)
            : std::string();
    if (s.gsCommandLine.find('~') != std::string::npos) {
      s.gsCommandLine = GetLongPathName(s.gsCommandLine);
    }
  }

  if (app_.PrevInstance()) {
    WriteCommandImage(app_, s.gsCommandLine);
    ActivatePreviousInstance();
    app_.End();
    return;
  }

  s.gbCacheEnable =
      ReadFlag(app_, kRootKey, "CacheEnable").find("TRUE") != std::string::npos;
  s.gsCobrandId = ReadFlag(app_, kSiteSettingsKey, "CobrandId");
  s.gsAppTitle = s.goResources->AppTitle(s.gsCobrandId);
  s.gsRegistryRoot = s.goResources->RegistryRoot(s.gsCobrandId);
  s.gsPrefKey = "Software\\" + s.gsRegistryRoot + "\\Preferences\\";
  SetCaption(s.gsAppTitle);

  Show();
  app_.forms().Get("frmMainWindow");
  Unload();
  if (Form* main = app_.forms().Find("frmMainWindow")) {
    main->Show();
  }
}

void frmSplash::ActivatePreviousInstance() {
  host().Sleep(kActivateDelayMs);
  app_.AskPrevInstanceToComeForward();
}

}  // namespace qbpd
