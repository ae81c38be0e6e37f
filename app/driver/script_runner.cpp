#include "app/driver/script_runner.h"

#include "app/driver/runner.h"
#include "platform/forms/controls.h"
#include "platform/forms/scripted_host.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sys/stat.h>

namespace qbpd {

namespace fs = std::filesystem;

ScriptResult RunScript(const ScriptOptions& options,
                       const Application::Catalog& catalog,
                       std::ostream& out) {
  ScriptResult result;
  std::ifstream in(options.script_path);
  if (!in) {
    result.exit_code = 2;
    result.failure = "can't read the script " + options.script_path;
    return result;
  }
  // ${TMP}: a private folder of this run.
  std::string temp = options.temp_dir;
  bool made_temp = false;
  if (temp.empty()) {
    std::string pattern =
        (fs::temp_directory_path() / "qbpd-script-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      result.exit_code = 2;
      result.failure = "can't make a temporary folder";
      return result;
    }
    temp = pattern;
    made_temp = true;
  }
  std::map<std::string, std::string> places;
  if (options.private_places) {
    const std::string home = temp + "/home";
    places = {{"HOME", home},
              {"XDG_CONFIG_HOME", home + "/.config"},
              {"XDG_DATA_HOME", home + "/.local/share"},
              {"XDG_CACHE_HOME", home + "/.cache"},
              {"XDG_RUNTIME_DIR", temp + "/run"}};
    for (const auto& [name, value] : places) {
      fs::create_directories(value);
      setenv(name.c_str(), value.c_str(), 1);
    }
    chmod((temp + "/run").c_str(), 0700);
    fs::create_directories(home + "/Desktop");
    fs::create_directories(home + "/Pictures");
    places["DESKTOP"] = home + "/Desktop";
    places["PICTURES"] = home + "/Pictures";
    places["DATA"] = home + "/.local/share/quillbay-picture-desk";
  }
  {
    script::Runner runner(options, catalog, out);
    runner.SetVariable("TMP", temp);
    for (const auto& [name, value] : places) {
      runner.SetVariable(name, value);
    }
    runner.SetVariable(
        "SCRIPT_DIR",
        fs::absolute(fs::path(options.script_path)).parent_path().string());
    std::vector<script::Step> steps;
    try {
      steps = runner.Parse(in);
    } catch (const script::ScriptSyntaxError& e) {
      result.exit_code = 2;
      result.failure = e.what();
    }
    if (result.exit_code == 0) {
      result = runner.Run(std::move(steps));
    }
  }
  if (made_temp && !options.keep_temp) {
    std::error_code ec;
    fs::remove_all(temp, ec);
  }
  return result;
}

void DescribeControls(std::ostream& out) {
  // A throwaway form to ask each kind for its property table.
  class Probe : public Form {
   public:
    explicit Probe(Host& host) : Form(host, "probe") {}
  };
  ScriptedHost host;
  Probe form(host);
  auto describe = [&out](const Control& c) {
    out << KindName(c.Kind()) << ":";
    for (const PropertyInfo& p : c.Properties()) {
      out << " " << p.name << (p.indexed ? "(i)" : "")
          << (p.writable ? "" : " (read-only)");
    }
    out << "\n";
  };
  describe(Label(form, "a"));
  describe(TextBox(form, "b"));
  describe(CheckBox(form, "c"));
  describe(OptionButton(form, "d"));
  describe(ComboBox(form, "e"));
  describe(ListBox(form, "f"));
  describe(CommandButton(form, "g"));
  describe(PictureButton(form, "h"));
  describe(PictureBox(form, "i"));
  describe(Frame(form, "j"));
  describe(Shape(form, "k"));
  describe(Line(form, "l"));
  describe(Timer(form, "m"));
  describe(Menu(form, "n"));
  describe(ScrollBar(form, "o"));
  describe(ProgressBar(form, "p"));
  describe(Slider(form, "q"));
  describe(TabStrip(form, "r"));
  describe(Thumbnail(form, "s"));
  describe(PhotoView(form, "t"));
  describe(FolderTree(form, "u"));
  describe(ScreensaverPlayer(form, "v"));
  describe(WebView(form, "w"));
}

int ScriptMain(int argc,
               char** argv,
               const Application::Catalog& catalog,
               std::function<PlatformServices()> make_services) {
  ScriptOptions options;
  options.make_services = make_services;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--second-start" && i + 1 < argc) {
      PlatformServices services =
          make_services ? make_services() : PlatformServices{};
      auto host = std::make_unique<ScriptedHost>();
      ScriptedHost& scripted = *host;
      Application app(std::move(host), std::move(services), catalog);
      app.Start(argv[i + 1]);
      scripted.Run();
      return 0;
    } else if (arg == "--user-places") {
      options.private_places = false;
    } else if (arg == "--tmp" && i + 1 < argc) {
      options.temp_dir = argv[++i];
    } else if (arg == "--keep-tmp") {
      options.keep_temp = true;
    } else if (arg == "--describe-controls") {
      DescribeControls(std::cout);
      return 0;
    } else if (arg == "--help" || arg == "-h") {
      std::cout << "usage: " << argv[0]
                << " [--tmp DIR] [--keep-tmp] [--describe-controls] SCRIPT\n";
      return 0;
    } else if (!arg.empty() && arg[0] == '-') {
      std::cerr << argv[0] << ": unknown option " << arg << "\n";
      return 2;
    } else {
      options.script_path = arg;
    }
  }
  if (options.script_path.empty()) {
    std::cerr << "usage: " << argv[0] << " [--tmp DIR] [--keep-tmp] SCRIPT\n";
    return 2;
  }
  ScriptResult result = RunScript(options, catalog, std::cout);
  if (result.exit_code == 0) {
    std::cout << "passed: " << result.steps_run << " steps\n";
  } else {
    std::cout << (result.exit_code == 2 ? "SCRIPT ERROR " : "FAILED ")
              << result.failure << "\n";
  }
  return result.exit_code;
}

}  // namespace qbpd
