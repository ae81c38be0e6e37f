// The work ahead on the second core (thumbnails of a load's first photos,
// the decoding of the photo to show and of the next one) changes nothing a
// user or a script can see: every acceptance script of the program runs
// with it and without it to the same end and the same transcript.
#include "app/driver/script_runner.h"
#include "app/program/program.h"
#include "core/settings.h"
#include "platform/desktop_screensaver.h"
#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "platform/launcher.h"
#include "platform/program_runner.h"
#include "platform/settings_store.h"
#include "platform/wallpaper.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace qbpd {
namespace {

namespace fs = std::filesystem;

// The program's acceptance scripts. Left out: a script with a second start
// (the driver makes that start by running its own executable again, which
// here is the test) and the camera import's (it runs the camera helper, a
// program found beside the driver's executable, not beside the test's).
std::vector<std::string> ProgramScripts() {
  std::vector<std::string> names;
  const fs::path folder = fs::path(QBPD_SOURCE_DIR) / "tests" / "acceptance";
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end;
       it.increment(error)) {
    if (it->path().extension() != ".qbs") {
      continue;
    }
    std::ifstream in(it->path());
    std::stringstream text;
    text << in.rdbuf();
    if (text.str().find("\nsecond start") == std::string::npos &&
        it->path().stem() != "camera_import") {
      names.push_back(it->path().stem().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

struct Outcome {
  int exit_code = 0;
  std::string failure;
  std::string transcript;
};

// Runs `script` as qbpd-script does, in `temp` (emptied first, so that both
// runs see the same paths), with the work ahead on or off.
Outcome RunScriptWith(const fs::path& script,
                      const fs::path& temp,
                      bool work_ahead) {
  std::error_code error;
  fs::remove_all(temp, error);
  fs::create_directories(temp);
  ScriptOptions options;
  options.script_path = script.string();
  options.temp_dir = temp.string();
  options.keep_temp = true;
  options.make_services = [work_ahead] {
    PlatformServices services = MakePlatformServices(MakeMemorySettingsStore());
    services.default_settings.clear();
    // The thumbnail cache on, as a new user's program has it: a photo seen
    // again loads from its cached thumbnail's stand-in.
    (void)services.settings->Write(kRootKey, "CacheEnable", "TRUE");
    services.launcher = MakeRecordingLauncher();
    services.wallpaper =
        MakeDesktopWallpaper(MakeSpawnRunner({{"GSETTINGS_BACKEND", "memory"}}),
                             {{"XDG_CURRENT_DESKTOP", "GNOME"}});
    services.screensaver =
        MakeDesktopScreensaver(MakeSpawnRunner({{"DISPLAY", ""}}),
                               {{"HOME", ProcessEnvironment()["HOME"]}},
                               services.places.program + "/qbpd-saver");
    services.images = MakeVipsImageOperations(
        services.places.cache + "/thumbnails", work_ahead);
    // With the work ahead, as the desktop program has it: a cached
    // thumbnail of a photo decoded whole stands in while it is decoded.
    ImageOperations* images = services.images.get();
    services.make_display = [work_ahead, images] {
      return MakeVipsDisplayControl(work_ahead, {},
                                    [images](const std::string& path) {
                                      return images->CachedStandIn(path);
                                    });
    };
    return services;
  };
  std::ostringstream out;
  const ScriptResult result = RunScript(options, RegisterProgram, out);
  return {result.exit_code, result.failure, out.str()};
}

class WorkAheadScriptTest : public ::testing::TestWithParam<std::string> {};

TEST_P(WorkAheadScriptTest, SameWithAndWithoutWorkAhead) {
  const fs::path script = fs::path(QBPD_SOURCE_DIR) / "tests" / "acceptance" /
                          (GetParam() + ".qbs");
  testing::TempDir temp;
  const Outcome without = RunScriptWith(script, temp / "run", false);
  const Outcome with = RunScriptWith(script, temp / "run", true);
  EXPECT_EQ(without.exit_code, 0) << without.failure;
  EXPECT_EQ(with.exit_code, without.exit_code) << with.failure;
  EXPECT_EQ(with.transcript, without.transcript);
}

INSTANTIATE_TEST_SUITE_P(
    AcceptanceScripts,
    WorkAheadScriptTest,
    ::testing::ValuesIn(ProgramScripts()),
    [](const ::testing::TestParamInfo<std::string>& script) {
      return script.param;
    });

}  // namespace
}  // namespace qbpd
