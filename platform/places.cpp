#include "platform/places.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {
namespace {

constexpr std::string_view kProgramFolderName = "quillbay-picture-desk";

std::string Env(const char* name) {
  const char* value = std::getenv(name);
  return value ? std::string(value) : std::string();
}

std::string StripSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

std::string Home() {
  std::string home = Env("HOME");
  return home.empty() ? std::string("/") : StripSlash(home);
}

// An XDG base directory: the variable when it holds an absolute path, else
// the fallback under HOME.
std::string BaseDir(const char* variable, std::string_view fallback) {
  std::string value = Env(variable);
  if (!value.empty() && value.front() == '/') {
    return StripSlash(value);
  }
  return Home() + "/" + std::string(fallback);
}

// Reads one entry of user-dirs.dirs ("XDG_DESKTOP_DIR="$HOME/Desktop"").
std::string UserDir(const std::string& config_home,
                    std::string_view name,
                    std::string_view fallback) {
  std::ifstream in(config_home + "/user-dirs.dirs");
  std::string line;
  const std::string prefix = std::string(name) + "=";
  while (std::getline(in, line)) {
    if (line.rfind(prefix, 0) != 0) {
      continue;
    }
    std::string value = line.substr(prefix.size());
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
      value = value.substr(1, value.size() - 2);
    }
    if (value.rfind("$HOME", 0) == 0) {
      value = Home() + value.substr(5);
    }
    if (!value.empty() && value.front() == '/') {
      return StripSlash(value);
    }
  }
  return Home() + "/" + std::string(fallback);
}

std::string ExecutableFolder() {
  std::error_code error;
  auto exe = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) {
    return std::string();
  }
  return exe.parent_path().string();
}

// True when `path` is a real directory (no symbolic link) of this user with
// no access for anyone else.
bool IsPrivateFolder(const std::string& path) {
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0) {
    return false;
  }
  return S_ISDIR(info.st_mode) && info.st_uid == geteuid() &&
         (info.st_mode & 0077) == 0;
}

}  // namespace

Places FindPlaces() {
  Places places;
  const std::string config_home = BaseDir("XDG_CONFIG_HOME", ".config");
  places.config = config_home + "/" + std::string(kProgramFolderName);
  places.data = BaseDir("XDG_DATA_HOME", ".local/share") + "/" +
                std::string(kProgramFolderName);
  places.cache = BaseDir("XDG_CACHE_HOME", ".cache") + "/" +
                 std::string(kProgramFolderName);
  std::string runtime = Env("XDG_RUNTIME_DIR");
  places.runtime = (!runtime.empty() && runtime.front() == '/')
                       ? StripSlash(runtime)
                       : std::string();
  places.desktop = UserDir(config_home, "XDG_DESKTOP_DIR", "Desktop");
  places.pictures = UserDir(config_home, "XDG_PICTURES_DIR", "Pictures");
  places.program = ExecutableFolder();
  return places;
}

bool MakeFolders(const std::string& path, unsigned mode) {
  if (path.empty()) {
    return false;
  }
  std::string built;
  std::size_t start = 0;
  while (start <= path.size()) {
    std::size_t slash = path.find('/', start);
    if (slash == std::string::npos) {
      slash = path.size();
    }
    built = path.substr(0, slash);
    if (!built.empty() && mkdir(built.c_str(), mode) != 0 && errno != EEXIST) {
      return false;
    }
    start = slash + 1;
  }
  std::error_code error;
  return std::filesystem::is_directory(path, error);
}

std::string MakePrivateTempFolder(const Places& places) {
  if (places.cache.empty() || !MakeFolders(places.cache, 0700)) {
    return std::string();
  }
  const std::string wanted = places.cache + "/temp";
  if (mkdir(wanted.c_str(), 0700) == 0 || errno == EEXIST) {
    if (IsPrivateFolder(wanted)) {
      return wanted;
    }
  }
  // The usual name is taken by something we must not trust: make a fresh one.
  std::string pattern = places.cache + "/temp-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    return std::string();
  }
  return pattern;
}

std::string FindResourcesFolder(const Places& places) {
  std::error_code error;
  if (!places.program.empty()) {
    const std::filesystem::path program(places.program);
    for (const auto& candidate :
         {program.parent_path() / "share" / std::string(kProgramFolderName) /
              "resources",
          program / "resources"}) {
      if (std::filesystem::is_directory(candidate, error)) {
        return candidate.string();
      }
    }
  }
#ifdef QBPD_SOURCE_DIR
  const std::filesystem::path source =
      std::filesystem::path(QBPD_SOURCE_DIR) / "resources";
  if (std::filesystem::is_directory(source, error)) {
    return source.string();
  }
#endif
  return std::string();
}

}  // namespace qbpd
