#include "platform/default_viewer.h"

#include "platform/atomic_file.h"
#include "platform/places.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <vector>

namespace qbpd {
namespace {

constexpr std::string_view kJpegType = "image/jpeg";
constexpr std::string_view kDefaultSection = "[Default Applications]";

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
    text.remove_prefix(1);
  }
  while (!text.empty() &&
         (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
    text.remove_suffix(1);
  }
  return text;
}

// The file as lines without their line feeds; `ends_open` tells that the
// last line had none.
struct ListFile {
  std::vector<std::string> lines;
  bool ends_open = false;
  bool exists = false;
};

bool ReadListFile(const std::string& path, ListFile& file) {
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    // No file yet: nothing to keep. A file that exists but can't be read
    // must not be replaced, so an error of the check fails.
    return !error;
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    return false;
  }
  file.exists = true;
  std::stringstream buffer;
  buffer << in.rdbuf();
  const std::string text = buffer.str();
  size_t start = 0;
  while (start < text.size()) {
    const size_t end = text.find('\n', start);
    if (end == std::string::npos) {
      file.lines.push_back(text.substr(start));
      file.ends_open = true;
      break;
    }
    file.lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return !in.bad();
}

bool IsSectionLine(std::string_view line) {
  line = TrimBlanks(line);
  return !line.empty() && line.front() == '[';
}

// Where the section starts (its header line) and ends (one past its last
// line); start is npos when the file has none.
struct Span {
  size_t header = std::string::npos;
  size_t end = 0;
};

Span FindDefaultSection(const ListFile& file) {
  Span span;
  for (size_t i = 0; i < file.lines.size(); ++i) {
    if (TrimBlanks(file.lines[i]) == kDefaultSection) {
      span.header = i;
      span.end = i + 1;
      while (span.end < file.lines.size() &&
             !IsSectionLine(file.lines[span.end])) {
        ++span.end;
      }
      return span;
    }
  }
  return span;
}

// The line of image/jpeg inside the section, or npos.
size_t FindJpegLine(const ListFile& file, const Span& span) {
  if (span.header == std::string::npos) {
    return std::string::npos;
  }
  for (size_t i = span.header + 1; i < span.end; ++i) {
    const std::string_view line = file.lines[i];
    const size_t equals = line.find('=');
    if (equals != std::string::npos &&
        TrimBlanks(line.substr(0, equals)) == kJpegType) {
      return i;
    }
  }
  return std::string::npos;
}

std::string ValueOf(std::string_view line) {
  return std::string(TrimBlanks(line.substr(line.find('=') + 1)));
}

// The first desktop entry of a value ("a.desktop;b.desktop;").
std::string FirstEntry(std::string_view value) {
  return std::string(TrimBlanks(value.substr(0, value.find(';'))));
}

std::string Join(const ListFile& file) {
  std::string text;
  for (size_t i = 0; i < file.lines.size(); ++i) {
    text += file.lines[i];
    if (i + 1 < file.lines.size() || !file.ends_open) {
      text += '\n';
    }
  }
  return text;
}

std::string ReadMemory(const std::string& path) {
  std::ifstream in(path);
  std::string value;
  std::getline(in, value);
  return value;
}

class XdgDefaultViewer : public DefaultViewer {
 public:
  XdgDefaultViewer(std::string config_home,
                   std::string desktop_id,
                   std::string memory)
      : list_(config_home + "/mimeapps.list"),
        config_home_(std::move(config_home)),
        desktop_id_(std::move(desktop_id)),
        memory_(std::move(memory)) {}

  bool IsDefault() override {
    ListFile file;
    if (!ReadListFile(list_, file)) {
      return false;
    }
    const size_t at = FindJpegLine(file, FindDefaultSection(file));
    return at != std::string::npos &&
           FirstEntry(ValueOf(file.lines[at])) == desktop_id_;
  }

  std::string SetDefault(bool on) override {
    ListFile file;
    if (!ReadListFile(list_, file)) {
      return list_ + " can't be read";
    }
    Span span = FindDefaultSection(file);
    const size_t at = FindJpegLine(file, span);
    const std::string value =
        at == std::string::npos ? "" : ValueOf(file.lines[at]);
    const bool is_default = FirstEntry(value) == desktop_id_;
    if (on == is_default) {
      return "";
    }
    const std::string jpeg_key(kJpegType);
    if (on) {
      if (!WriteMemory(value)) {
        return memory_ + " can't be written";
      }
      const std::string line = jpeg_key + "=" + desktop_id_ + ";";
      if (at != std::string::npos) {
        file.lines[at] = line;
      } else if (span.header != std::string::npos) {
        file.lines.insert(file.lines.begin() + span.end, line);
      } else {
        if (file.ends_open) {
          file.ends_open = false;
        }
        if (!file.lines.empty() && !TrimBlanks(file.lines.back()).empty()) {
          file.lines.emplace_back();
        }
        file.lines.emplace_back(kDefaultSection);
        file.lines.push_back(line);
      }
    } else {
      const std::string before = ReadMemory(memory_);
      if (before.empty()) {
        file.lines.erase(file.lines.begin() + at);
      } else {
        file.lines[at] = jpeg_key + "=" + before;
      }
    }
    if (!MakeFolders(config_home_, 0700)) {
      return config_home_ + " can't be made";
    }
    const std::string text = Join(file);
    if (!WriteFileAtomically(list_, text.data(), text.size())) {
      return list_ + " can't be written";
    }
    if (!on) {
      std::remove(memory_.c_str());
    }
    return "";
  }

 private:
  bool WriteMemory(const std::string& value) {
    const size_t slash = memory_.rfind('/');
    if (slash != std::string::npos && !MakeFolders(memory_.substr(0, slash))) {
      return false;
    }
    const std::string text = value + "\n";
    return WriteFileAtomically(memory_, text.data(), text.size());
  }

  std::string list_;
  std::string config_home_;
  std::string desktop_id_;
  std::string memory_;
};

class NoDefaultViewer : public DefaultViewer {
 public:
  bool IsDefault() override { return false; }
  std::string SetDefault(bool) override { return "no desktop is known"; }
};

}  // namespace

std::unique_ptr<DefaultViewer> MakeNoDefaultViewer() {
  return std::make_unique<NoDefaultViewer>();
}

std::unique_ptr<DefaultViewer> MakeXdgDefaultViewer(std::string config_home,
                                                    std::string desktop_id,
                                                    std::string memory) {
  return std::make_unique<XdgDefaultViewer>(
      std::move(config_home), std::move(desktop_id), std::move(memory));
}

std::string XdgConfigHome() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  if (config != nullptr && config[0] == '/') {
    return config;
  }
  const char* home = std::getenv("HOME");
  return std::string(home != nullptr ? home : "") + "/.config";
}

}  // namespace qbpd
