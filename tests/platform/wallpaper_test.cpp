#include "platform/wallpaper.h"

#include "platform/program_runner.h"
#include "tests/support/fake_program_runner.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace qbpd {
namespace {

using qbpd::testing::FakeProgramRunner;
using Env = std::map<std::string, std::string>;

constexpr char kBitmap[] =
    "/home/ann/.local/share/qbpd/system/Quillbay picture desk.bmp";
constexpr char kUri[] =
    "file:///home/ann/.local/share/qbpd/system/Quillbay%20picture%20desk.bmp";

TEST(WallpaperTest, TheDesktopComesFromTheSession) {
  struct Row {
    Env env;
    DesktopKind kind;
  };
  const Row rows[] = {
      {{{"XDG_CURRENT_DESKTOP", "GNOME"}}, DesktopKind::kGnome},
      {{{"XDG_CURRENT_DESKTOP", "ubuntu:GNOME"}}, DesktopKind::kGnome},
      {{{"XDG_CURRENT_DESKTOP", "Budgie:GNOME"}}, DesktopKind::kGnome},
      {{{"XDG_CURRENT_DESKTOP", "KDE"}}, DesktopKind::kKde},
      {{{"XDG_CURRENT_DESKTOP", "XFCE"}}, DesktopKind::kXfce},
      {{{"XDG_CURRENT_DESKTOP", "MATE"}}, DesktopKind::kMate},
      {{{"XDG_CURRENT_DESKTOP", "X-Cinnamon"}}, DesktopKind::kCinnamon},
      // The first known name of the list wins.
      {{{"XDG_CURRENT_DESKTOP", "Unknown:MATE:GNOME"}}, DesktopKind::kMate},
      {{{"XDG_SESSION_DESKTOP", "xfce"}}, DesktopKind::kXfce},
      {{{"DESKTOP_SESSION", "/usr/share/xsessions/plasma"}}, DesktopKind::kKde},
      {{{"DESKTOP_SESSION", "cinnamon"}}, DesktopKind::kCinnamon},
      {{{"KDE_FULL_SESSION", "true"}}, DesktopKind::kKde},
      {{{"XDG_CURRENT_DESKTOP", "sway"}}, DesktopKind::kUnknown},
      {{}, DesktopKind::kUnknown},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.env.empty() ? "" : row.env.begin()->second);
    EXPECT_EQ(DetectDesktop(row.env), row.kind);
  }
}

TEST(WallpaperTest, FileUrisEscapeWhatAUriCantHold) {
  EXPECT_EQ(FileUri("/a b/c%d'e\\f"), "file:///a%20b/c%25d%27e%5Cf");
  EXPECT_EQ(FileUri("/photos/été.bmp"), "file:///photos/%C3%A9t%C3%A9.bmp");
}

struct Desktop {
  std::shared_ptr<FakeProgramRunner> runner =
      std::make_shared<FakeProgramRunner>();
  std::unique_ptr<Wallpaper> Make(const std::string& desktop) {
    return MakeDesktopWallpaper(runner, {{"XDG_CURRENT_DESKTOP", desktop}});
  }
};

TEST(WallpaperTest, GnomeSetsTheLightAndDarkPicturesAndTheOptions) {
  Desktop d;
  d.runner->Answer("gsettings list-keys", 0,
                   "picture-opacity\npicture-options\npicture-uri\n"
                   "picture-uri-dark\nprimary-color\n");
  EXPECT_EQ(d.Make("GNOME")->ChangeWallpaper(kBitmap, kWallpaperTiled), 1);
  const std::string quoted = std::string("'") + kUri + "'";
  EXPECT_EQ(d.runner->Transcript(),
            "gsettings list-keys org.gnome.desktop.background\n"
            "gsettings get org.gnome.desktop.background picture-uri\n"
            "gsettings set org.gnome.desktop.background picture-uri " +
                quoted +
                "\n"
                "gsettings get org.gnome.desktop.background picture-uri-dark\n"
                "gsettings set org.gnome.desktop.background picture-uri-dark " +
                quoted +
                "\n"
                "gsettings set org.gnome.desktop.background picture-options "
                "'wallpaper'\n");
}

TEST(WallpaperTest, TheArrangementsByTheirDesktopNames) {
  struct Row {
    int arrangement;
    const char* gnome;
  };
  for (const Row& row : {Row{kWallpaperTiled, "'wallpaper'"},
                         Row{kWallpaperCentered, "'centered'"},
                         Row{kWallpaperStretched, "'stretched'"}}) {
    Desktop d;
    d.runner->Answer("gsettings list-keys", 0,
                     "picture-uri\npicture-options\n");
    ASSERT_EQ(d.Make("GNOME")->ChangeWallpaper(kBitmap, row.arrangement), 1);
    EXPECT_EQ(d.runner->Calls().back().back(), row.gnome);
  }
  Desktop unknown_arrangement;
  EXPECT_EQ(unknown_arrangement.Make("GNOME")->ChangeWallpaper(kBitmap, 3), 0);
  EXPECT_TRUE(unknown_arrangement.runner->Calls().empty());
}

TEST(WallpaperTest, AKeyNamingTheSameFileIsResetFirst) {
  Desktop d;
  d.runner->Answer("gsettings list-keys", 0, "picture-uri\npicture-options\n");
  d.runner->Answer("gsettings get org.gnome.desktop.background picture-uri", 0,
                   std::string("'") + kUri + "'\n");
  ASSERT_EQ(d.Make("GNOME")->ChangeWallpaper(kBitmap, kWallpaperCentered), 1);
  const std::string t = d.runner->Transcript();
  const auto reset =
      t.find("gsettings reset org.gnome.desktop.background picture-uri\n");
  const auto set =
      t.find("gsettings set org.gnome.desktop.background picture-uri ");
  ASSERT_NE(reset, std::string::npos);
  EXPECT_LT(reset, set);
  // No dark key in this schema: none is set.
  EXPECT_EQ(t.find("picture-uri-dark"), std::string::npos);
}

TEST(WallpaperTest, CinnamonAndMateUseTheirOwnSchemas) {
  Desktop cinnamon;
  cinnamon.runner->Answer("gsettings list-keys", 0,
                          "picture-uri\npicture-options\n");
  ASSERT_EQ(cinnamon.Make("X-Cinnamon")
                ->ChangeWallpaper(kBitmap, kWallpaperStretched),
            1);
  EXPECT_NE(cinnamon.runner->Transcript().find(
                "gsettings set org.cinnamon.desktop.background picture-uri '" +
                std::string(kUri) + "'"),
            std::string::npos);
  Desktop mate;
  mate.runner->Answer("gsettings list-keys", 0,
                      "picture-filename\npicture-options\n");
  ASSERT_EQ(mate.Make("MATE")->ChangeWallpaper(kBitmap, kWallpaperCentered), 1);
  // MATE takes the path itself.
  EXPECT_NE(mate.runner->Transcript().find(
                "gsettings set org.mate.background picture-filename '" +
                std::string(kBitmap) + "'"),
            std::string::npos);
  EXPECT_NE(mate.runner->Transcript().find(
                "gsettings set org.mate.background picture-options 'centered'"),
            std::string::npos);
}

TEST(WallpaperTest, XfceSetsEveryMonitorAndWorkspace) {
  Desktop d;
  d.runner->Answer("xfconf-query -c xfce4-desktop -l", 0,
                   "/backdrop/screen0/monitorHDMI-1/workspace0/last-image\n"
                   "/backdrop/screen0/monitorHDMI-1/workspace0/image-style\n"
                   "/backdrop/screen0/monitoreDP-1/workspace1/last-image\n"
                   "/desktop-icons/style\n");
  ASSERT_EQ(d.Make("XFCE")->ChangeWallpaper(kBitmap, kWallpaperTiled), 1);
  const std::string t = d.runner->Transcript();
  for (const char* monitor :
       {"monitorHDMI-1/workspace0", "monitoreDP-1/workspace1"}) {
    SCOPED_TRACE(monitor);
    const std::string base = std::string("/backdrop/screen0/") + monitor;
    EXPECT_NE(t.find("-p " + base + "/last-image -s " + kBitmap),
              std::string::npos);
    EXPECT_NE(t.find("-p " + base + "/image-style -n -t int -s 2"),
              std::string::npos);
  }
  // A desktop that never had a picture gets one on its first monitor.
  Desktop fresh;
  ASSERT_EQ(fresh.Make("XFCE")->ChangeWallpaper(kBitmap, kWallpaperStretched),
            1);
  EXPECT_NE(fresh.runner->Transcript().find(
                "-p /backdrop/screen0/monitor0/workspace0/image-style -n -t "
                "int -s 3"),
            std::string::npos);
}

TEST(WallpaperTest, PlasmaGetsAScriptOverDBus) {
  Desktop d;
  ASSERT_EQ(d.Make("KDE")->ChangeWallpaper(kBitmap, kWallpaperCentered), 1);
  ASSERT_EQ(d.runner->Calls().size(), 1u);
  const auto& call = d.runner->Calls()[0];
  EXPECT_EQ(call[0], "dbus-send");
  EXPECT_EQ(call[5], "org.kde.PlasmaShell.evaluateScript");
  EXPECT_NE(call[6].find("d.writeConfig('Image', '" + std::string(kUri) + "')"),
            std::string::npos);
  EXPECT_NE(call[6].find("d.writeConfig('FillMode', 6)"), std::string::npos);

  Desktop qdbus_only;
  qdbus_only.runner->Remove("dbus-send");
  qdbus_only.runner->Remove("qdbus6");
  ASSERT_EQ(qdbus_only.Make("KDE")->ChangeWallpaper(kBitmap, kWallpaperTiled),
            1);
  EXPECT_EQ(qdbus_only.runner->Calls()[0][0], "qdbus");
  EXPECT_NE(qdbus_only.runner->Calls()[0][4].find("'FillMode', 3"),
            std::string::npos);

  Desktop neither;
  for (const char* p : {"dbus-send", "qdbus6", "qdbus", "qdbus-qt5"}) {
    neither.runner->Remove(p);
  }
  EXPECT_EQ(neither.Make("KDE")->ChangeWallpaper(kBitmap, kWallpaperTiled), 0);
}

TEST(WallpaperTest, FailuresComeBackAsZero) {
  Desktop unknown;
  EXPECT_EQ(unknown.Make("sway")->ChangeWallpaper(kBitmap, kWallpaperTiled), 0);
  EXPECT_TRUE(unknown.runner->Calls().empty());
  Desktop no_tool;
  no_tool.runner->Remove("gsettings");
  EXPECT_EQ(no_tool.Make("GNOME")->ChangeWallpaper(kBitmap, kWallpaperTiled),
            0);
  Desktop refused;
  refused.runner->Answer("gsettings list-keys", 0,
                         "picture-uri\npicture-options\n");
  refused.runner->Answer(
      "gsettings set org.gnome.desktop.background picture-options", 1);
  EXPECT_EQ(refused.Make("GNOME")->ChangeWallpaper(kBitmap, kWallpaperTiled),
            0);
  Desktop xfce_refused;
  xfce_refused.runner->Answer("xfconf-query", 1);
  EXPECT_EQ(
      xfce_refused.Make("XFCE")->ChangeWallpaper(kBitmap, kWallpaperTiled), 0);
  Desktop plasma_refused;
  plasma_refused.runner->Answer("dbus-send", 1);
  EXPECT_EQ(
      plasma_refused.Make("KDE")->ChangeWallpaper(kBitmap, kWallpaperTiled), 0);
  // Without a runner (the application's default) nothing is set.
  EXPECT_EQ(MakeDesktopWallpaper(nullptr, {{"XDG_CURRENT_DESKTOP", "GNOME"}})
                ->ChangeWallpaper(kBitmap, kWallpaperTiled),
            0);
}

// The real gsettings with its memory backend: the schema's own keys and
// choices check what is written, and nothing reaches this machine's desktop.
TEST(WallpaperTest, TheRealGsettingsAcceptsEveryValue) {
  auto runner = std::shared_ptr<ProgramRunner>(
      MakeSpawnRunner({{"GSETTINGS_BACKEND", "memory"}}));
  if (!runner->Has("gsettings") ||
      !runner->Run({"gsettings", "list-keys", "org.gnome.desktop.background"})
           .ok()) {
    GTEST_SKIP() << "gsettings or the GNOME desktop schemas are not installed "
                    "(scripts/setup installs them)";
  }
  auto wallpaper =
      MakeDesktopWallpaper(runner, {{"XDG_CURRENT_DESKTOP", "GNOME"}});
  for (int arrangement :
       {kWallpaperTiled, kWallpaperCentered, kWallpaperStretched}) {
    SCOPED_TRACE(arrangement);
    EXPECT_EQ(
        wallpaper->ChangeWallpaper("/tmp/it's a \"test\" é.bmp", arrangement),
        1);
  }
  // A value outside the schema's choices is refused by the tool itself.
  EXPECT_FALSE(runner
                   ->Run({"gsettings", "set", "org.gnome.desktop.background",
                          "picture-options", "'stretch'"})
                   .ok());
}

TEST(ProgramRunnerTest, RunsWithoutAShell) {
  qbpd::testing::TempDir dir;
  auto runner = MakeSpawnRunner({{"QBPD_TEST_VALUE", "from the runner"}});
  const std::string marker = (dir / "made").string();
  const ProgramResult echo =
      runner->Run({"echo", "$(touch " + marker + ")", "a b"});
  ASSERT_TRUE(echo.ok());
  EXPECT_EQ(echo.output, "$(touch " + marker + ") a b\n");
  EXPECT_FALSE(std::filesystem::exists(marker));
  const ProgramResult env = runner->Run({"env"});
  EXPECT_NE(env.output.find("QBPD_TEST_VALUE=from the runner\n"),
            std::string::npos);
  const ProgramResult failing = runner->Run({"false"});
  EXPECT_TRUE(failing.started);
  EXPECT_EQ(failing.exit_code, 1);
  EXPECT_FALSE(failing.ok());
  EXPECT_FALSE(runner->Run({"qbpd-no-such-program"}).started);
  EXPECT_FALSE(runner->Has("qbpd-no-such-program"));
  EXPECT_TRUE(runner->Has("echo"));
  EXPECT_FALSE(runner->Run({}).started);
}

TEST(ProgramRunnerTest, AProgramThatHangsIsKilled) {
  auto runner = MakeSpawnRunner({}, /*timeout_ms=*/50);
  const ProgramResult hung = runner->Run({"sleep", "30"});
  EXPECT_TRUE(hung.started);
  EXPECT_EQ(hung.exit_code, -1);
}

}  // namespace
}  // namespace qbpd
