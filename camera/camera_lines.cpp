#include "camera/camera_lines.h"

#include "core/quil_mod.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace qbpd {
namespace {

constexpr std::size_t kCodeLength = 3;
constexpr int kNumberTries = 999;

std::string TwoDigits(int value) {
  char text[16];
  std::snprintf(text, sizeof(text), "%02d", value);
  return text;
}

std::string Suffix(int n) {
  char text[16];
  std::snprintf(text, sizeof(text), "_%03d", n);
  return text;
}

std::string Lower(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

}  // namespace

DevMonLine ParseDevMonLine(const std::string& trimmed_line) {
  DevMonLine line;
  line.code =
      trimmed_line.substr(0, std::min(kCodeLength, trimmed_line.size()));
  // Position 5 to the last but one.
  if (trimmed_line.size() > kCodeLength + 2) {
    line.device = trimmed_line.substr(kCodeLength + 1,
                                      trimmed_line.size() - kCodeLength - 2);
  }
  return line;
}

std::string MakeDevMonLine(const std::string& code, const std::string& device) {
  return code + " " + device + "|\n";
}

ImgAcqLine ParseImgAcqLine(const std::string& trimmed_line) {
  ImgAcqLine line;
  line.code =
      trimmed_line.substr(0, std::min(kCodeLength, trimmed_line.size()));
  if (trimmed_line.size() > kCodeLength + 1) {
    line.folder = trimmed_line.substr(kCodeLength + 1);
  }
  if (!line.folder.empty() && line.folder.back() == '\0') {
    line.folder.pop_back();
  }
  if (!line.folder.empty() && line.folder.back() == '|') {
    line.folder.pop_back();
  }
  return line;
}

std::string MakeImgAcqLine(const std::string& code, const std::string& folder) {
  return code + " " + folder + "\n";
}

std::vector<std::string> DeviceListEntries(std::string answer) {
  if (!answer.empty() && answer.back() == '\0') {
    answer.pop_back();
  }
  if (!answer.empty() && answer.back() == '|') {
    answer.pop_back();
  }
  std::vector<std::string> entries;
  if (answer.empty()) {
    return entries;
  }
  std::size_t start = 0;
  for (;;) {
    const std::size_t bar = answer.find('|', start);
    const std::string entry = answer.substr(
        start, bar == std::string::npos ? std::string::npos : bar - start);
    const bool seen = std::any_of(
        entries.begin(), entries.end(),
        [&](const std::string& e) { return Lower(e) == Lower(entry); });
    if (entry != " " && !seen) {
      entries.push_back(entry);
    }
    if (bar == std::string::npos) {
      break;
    }
    start = bar + 1;
  }
  return entries;
}

std::string DateFolderName(const std::string& folder_name,
                           int year,
                           int month,
                           int day) {
  const std::string y = std::to_string(year);
  if (folder_name == "0") {
    return TwoDigits(month) + "-" + TwoDigits(day) + "-" + y;
  }
  if (folder_name == "1") {
    return TwoDigits(day) + "-" + TwoDigits(month) + "-" + y;
  }
  return "";
}

std::string NumberedFolder(
    const std::string& path,
    const std::function<bool(const std::string&)>& exists) {
  if (!exists(path)) {
    return path;
  }
  std::string candidate;
  for (int n = 1; n <= kNumberTries; ++n) {
    candidate = path + Suffix(n);
    if (!exists(candidate)) {
      break;
    }
  }
  return candidate;
}

std::string FreeFileName(const std::string& name,
                         const std::function<bool(const std::string&)>& taken) {
  if (!taken(name)) {
    return name;
  }
  const std::size_t dot = name.rfind('.');
  const std::string stem =
      dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
  const std::string extension =
      dot == std::string::npos || dot == 0 ? "" : name.substr(dot);
  for (int n = 1;; ++n) {
    const std::string candidate = stem + Suffix(n) + extension;
    if (!taken(candidate)) {
      return candidate;
    }
  }
}

std::string PictureName(const std::string& base,
                        int number,
                        const std::string& camera_name) {
  const std::size_t dot = camera_name.rfind('.');
  const std::string extension =
      dot == std::string::npos || dot == 0 ? "" : camera_name.substr(dot);
  const std::string stem = base.empty() ? std::to_string(number)
                                        : base + " " + std::to_string(number);
  return stem + extension;
}

bool TakeExchangeLine(const std::string& path, std::string& line) {
  line.clear();
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    return false;
  }
  std::getline(in, line);
  in.close();
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
  return true;
}

}  // namespace qbpd
