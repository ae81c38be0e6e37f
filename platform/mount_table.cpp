#include "platform/mount_table.h"

#include <fstream>
#include <sstream>

namespace qbpd {
namespace {

// "\040" and its kind stand for the characters that would break a field.
std::string Unescape(const std::string& field) {
  std::string out;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '\\' && i + 3 < field.size() && field[i + 1] >= '0' &&
        field[i + 1] <= '3' && field[i + 2] >= '0' && field[i + 2] <= '7' &&
        field[i + 3] >= '0' && field[i + 3] <= '7') {
      out += static_cast<char>((field[i + 1] - '0') * 64 +
                               (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
      i += 3;
    } else {
      out += field[i];
    }
  }
  return out;
}

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

std::vector<MountEntry> ParseMountTable(const std::string& text) {
  std::vector<MountEntry> table;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    std::istringstream fields(line);
    MountEntry entry;
    if (fields >> entry.device >> entry.folder >> entry.type) {
      entry.device = Unescape(entry.device);
      entry.folder = Unescape(entry.folder);
      table.push_back(std::move(entry));
    }
  }
  return table;
}

std::vector<MountEntry> ReadMountTable(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return ParseMountTable(text.str());
}

std::vector<std::string> RemovableMediaFolders(
    const std::vector<MountEntry>& table) {
  std::vector<std::string> folders;
  for (const MountEntry& entry : table) {
    if ((StartsWith(entry.folder, "/media/") ||
         StartsWith(entry.folder, "/run/media/")) &&
        StartsWith(entry.device, "/dev/")) {
      folders.push_back(entry.folder);
    }
  }
  return folders;
}

}  // namespace qbpd
