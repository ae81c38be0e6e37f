#include "core/quil_mod.h"

#include "core/application.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <vector>

namespace qbpd {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kCommandImageFile = "CommandImage.txt";

std::vector<std::string> Split(const std::string& path) {
  std::vector<std::string> parts;
  std::string part;
  std::istringstream in(path);
  while (std::getline(in, part, '/')) {
    parts.push_back(part);
  }
  if (!path.empty() && path.back() == '/') {
    parts.emplace_back();
  }
  return parts;
}

bool Exists(const std::string& path) {
  struct stat info {};
  return lstat(path.c_str(), &info) == 0;
}

std::string WithSeparator(std::string path) {
  if (path.empty() || path.back() != '/') {
    path += '/';
  }
  return path;
}

}  // namespace

std::string Trim(std::string_view text) {
  return TrimSpaces(text);
}

std::string UpperCase(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return out;
}

std::string FileNamePart(std::string_view path) {
  size_t slash = path.rfind('/');
  return std::string(slash == std::string_view::npos ? path
                                                     : path.substr(slash + 1));
}

std::string PhotoThumbnailFile(std::string_view folder,
                               const std::string& photo) {
  std::string key = photo;
  struct stat info {};
  if (::stat(photo.c_str(), &info) == 0) {
    key += '\0' + std::to_string(info.st_size) + '\0' +
           std::to_string(info.st_mtim.tv_sec) + '.' +
           std::to_string(info.st_mtim.tv_nsec);
  }
  // FNV-1a, 64 bits: a name key, not a secret.
  std::uint64_t hash = 0xcbf29ce484222325ULL;
  for (unsigned char c : key) {
    hash = (hash ^ c) * 0x100000001b3ULL;
  }
  char hex[17];
  std::snprintf(hex, sizeof hex, "%016llx",
                static_cast<unsigned long long>(hash));
  return std::string(folder) + FileNamePart(photo) + "." + hex + ".jpg";
}

std::string DoubleAmpersands(std::string_view text) {
  std::string out;
  for (char c : text) {
    out += c;
    if (c == '&') {
      out += '&';
    }
  }
  return out;
}

namespace {
bool IsContinuationByte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}
}  // namespace

size_t CharacterCount(std::string_view text) {
  size_t count = 0;
  for (char c : text) {
    if (!IsContinuationByte(c)) {
      ++count;
    }
  }
  return count;
}

std::string FirstCharacters(std::string_view text, size_t count) {
  size_t end = 0;
  size_t taken = 0;
  while (end < text.size()) {
    if (!IsContinuationByte(text[end])) {
      if (taken == count) {
        break;
      }
      ++taken;
    }
    ++end;
  }
  return std::string(text.substr(0, end));
}

std::string BaseName(std::string_view path) {
  std::string name = FileNamePart(path);
  size_t dot = name.rfind('.');
  if (dot != std::string::npos && dot > 0) {
    name.resize(dot);
  }
  return name;
}

std::string ParentFolder(std::string_view path) {
  size_t slash = path.rfind('/');
  return slash == std::string_view::npos
             ? std::string()
             : std::string(path.substr(0, slash + 1));
}

std::string UpperExtension(std::string_view path) {
  std::string name = FileNamePart(path);
  size_t dot = name.rfind('.');
  return dot == std::string::npos ? std::string()
                                  : UpperCase(name.substr(dot + 1));
}

bool IsPhotoExtension(std::string_view ext) {
  for (std::string_view type :
       {"BMP", "JPEG", "JPG", "JPE", "TIF", "PNG", "TIFF"}) {
    if (ext == type) {
      return true;
    }
  }
  return false;
}

bool HasPhotoExtension(std::string_view path) {
  const size_t slash = path.rfind('/');
  const std::string_view name =
      slash == std::string_view::npos ? path : path.substr(slash + 1);
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) {
    return false;
  }
  const std::string_view extension = name.substr(dot + 1);
  // The longest of the types has four letters.
  char upper[4];
  if (extension.size() > sizeof upper) {
    return false;
  }
  for (size_t i = 0; i < extension.size(); ++i) {
    upper[i] = static_cast<char>(
        std::toupper(static_cast<unsigned char>(extension[i])));
  }
  return IsPhotoExtension(std::string_view(upper, extension.size()));
}

std::string AppPath(const Application& app) {
  return app.places().data;
}

std::string GetInternetCachePath(const Application& app) {
  // The browsers keep their caches in the user's cache folder, the parent of
  // ours.
  return WithSeparator(fs::path(app.places().cache).parent_path().string());
}

void InitWorkingFolders(Application& app) {
  Session& s = app.session();
  std::string temp = MakePrivateTempFolder(app.places());
  s.gsTempLoc = temp.empty() ? std::string() : WithSeparator(temp);
  if (!s.gsTempLoc.empty()) {
    s.gsThumbnailFolder = s.gsTempLoc + "Thumbnails/";
    MakeFolders(s.gsThumbnailFolder, 0700);
    s.gsToJpgFolder = s.gsTempLoc + "ToJpgs/";
    MakeFolders(s.gsToJpgFolder, 0700);
  }
  s.gsDesktopPath = WithSeparator(app.places().desktop);
  s.gsSystemFolder = WithSeparator(app.places().data + "/system");
  MakeFolders(s.gsSystemFolder, 0700);
  std::string app_path =
      Trim(DropTrailingNul(app.settings().Read(kRootKey, "AppPath")));
  s.gsScrIniPath = (app_path.empty() ? AppPath(app) : app_path) + "/scr.ini";
}

void WriteCommandImage(const Application& app, const std::string& path) {
  const std::string file = AppPath(app) + "/" + std::string(kCommandImageFile);
  if (path.empty()) {
    std::error_code ignored;
    fs::remove(file, ignored);
    return;
  }
  MakeFolders(AppPath(app), 0700);
  const std::string temp = file + ".part";
  {
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    out << path;
    if (!out.flush()) {
      return;
    }
  }
  std::error_code ignored;
  fs::rename(temp, file, ignored);
}

void ReadCommandImage(const Application& app, std::string& path) {
  std::ifstream in(AppPath(app) + "/" + std::string(kCommandImageFile),
                   std::ios::binary);
  if (!in) {
    return;
  }
  std::ostringstream text;
  text << in.rdbuf();
  path = DropTrailingNul(Trim(text.str()));
}

std::string GetLongPathName(const std::string& path) {
  if (path.rfind("//", 0) == 0) {
    return path;
  }
  std::vector<std::string> parts = Split(path);
  if (parts.size() < 2) {
    return std::string();
  }
  // The first part is the root: "" for an absolute path.
  std::string result = parts[0];
  std::string probe = parts[0];
  for (size_t i = 1; i < parts.size(); ++i) {
    probe += "/" + parts[i];
    if (parts[i].empty() || !Exists(probe)) {
      break;
    }
    result += "/" + parts[i];
  }
  return result;
}

void EnsureFolderPath(const std::string& path) {
  std::vector<std::string> parts = Split(path);
  std::string built;
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) {
      built += "/";
    }
    built += parts[i];
    if (!built.empty() && built != "/" && !Exists(built)) {
      std::error_code ignored;
      fs::create_directory(built, ignored);
    }
  }
}

}  // namespace qbpd
