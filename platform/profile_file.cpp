#include "platform/profile_file.h"

#include "platform/atomic_file.h"

// Plain 8-bit text: no Unicode conversion library is needed or wanted.
#define SI_NO_CONVERSION
// The packaged header keeps the template bodies behind this switch.
#define SI_IMPLEMENTATION
#include <SimpleIni.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <optional>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {
namespace {

// CSimpleIniA compares section and key names without regard to case.
using Profile = CSimpleIniA;

constexpr mode_t kNewFileMode = 0600;

// The file's text; "" when it doesn't exist, nothing when it can't be read.
std::optional<std::string> ReadText(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) {
    if (errno == ENOENT) {
      return std::string();
    }
    return std::nullopt;
  }
  if (!S_ISREG(info.st_mode)) {
    return std::nullopt;
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    return std::nullopt;
  }
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad()) {
    return std::nullopt;
  }
  return text.str();
}

bool Load(const std::string& text, Profile& profile) {
  profile.SetSpaces(false);
  return profile.LoadData(text) >= 0;
}

// The file a path stands for: a symbolic link is followed, so that the new
// text replaces its target and the link stays.
std::string TargetOf(const std::string& path) {
  char resolved[PATH_MAX];
  struct stat info {};
  if (lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode) &&
      realpath(path.c_str(), resolved) != nullptr) {
    return resolved;
  }
  return path;
}

// Replaces the file at `path` with `text`, keeping the old file's mode (a
// new file is private to the user).
bool ReplaceFile(const std::string& path, const std::string& text) {
  const std::string target = TargetOf(path);
  struct stat old_info {};
  AtomicWrite how;
  how.mode = stat(target.c_str(), &old_info) == 0 ? (old_info.st_mode & 07777)
                                                  : kNewFileMode;
  return WriteFileAtomically(target, text.data(), text.size(), how);
}

// True when a line opens a section name with "[" and does not close it: the
// parser reads the name on through the following lines, and rewriting the
// file would merge them into it.
bool HasUnclosedSection(const std::string& text) {
  // A byte-order mark may come before the first line; the parser ends a
  // line at a carriage return as at a line feed.
  std::size_t start = text.rfind("\xEF\xBB\xBF", 0) == 0 ? 3 : 0;
  while (start < text.size()) {
    std::size_t end = text.find_first_of("\r\n", start);
    if (end == std::string::npos) {
      end = text.size();
    }
    const std::size_t first = text.find_first_not_of(" \t", start);
    if (first < end && text[first] == '[' && text.find(']', first) >= end) {
      return true;
    }
    start = end + 1;
  }
  return false;
}

// Loads the file, lets `change` alter it and writes it back when the text
// differs. `change` returns false to give up without writing.
template <class Change>
bool Modify(const std::string& path, Change change) {
  const std::optional<std::string> text = ReadText(path);
  // The parser stops at a NUL byte; rewriting such a file would drop all
  // that follows it, so it is left alone.
  if (!text || text->find('\0') != std::string::npos ||
      HasUnclosedSection(*text)) {
    return false;
  }
  Profile profile;
  if (!Load(*text, profile)) {
    return false;
  }
  if (!change(profile)) {
    return false;
  }
  std::string out;
  if (profile.Save(out) < 0) {
    return false;
  }
  if (out == *text) {
    return true;
  }
  return ReplaceFile(path, out);
}

// Cuts `text` to what fits in the read buffer, never inside a UTF-8
// character.
std::string CutToBuffer(std::string_view text) {
  constexpr std::size_t kMax = kProfileValueBuffer - 1;
  if (text.size() <= kMax) {
    return std::string(text);
  }
  std::size_t end = kMax;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
    --end;
  }
  return std::string(text.substr(0, end));
}

bool HasLineBreak(std::string_view s) {
  return s.find_first_of("\r\n") != std::string_view::npos;
}

bool CanHold(std::string_view section,
             std::string_view key,
             std::string_view value) {
  if (key.empty() || HasLineBreak(section) || HasLineBreak(key) ||
      HasLineBreak(value)) {
    return false;
  }
  if (section.find(']') != std::string_view::npos ||
      key.find('=') != std::string_view::npos) {
    return false;
  }
  const char first = key.front();
  return first != '[' && first != ';' && first != '#';
}

}  // namespace

std::string GetProfileString(const std::string& path,
                             std::string_view section,
                             std::string_view key,
                             std::string_view default_value) {
  const std::optional<std::string> text = ReadText(path);
  Profile profile;
  if (text && Load(*text, profile)) {
    const char* value = profile.GetValue(std::string(section).c_str(),
                                         std::string(key).c_str(), nullptr);
    if (value != nullptr) {
      return CutToBuffer(value);
    }
  }
  return CutToBuffer(default_value);
}

bool WriteProfileString(const std::string& path,
                        std::string_view section,
                        std::string_view key,
                        std::string_view value) {
  if (!CanHold(section, key, value)) {
    return false;
  }
  return Modify(path, [&](Profile& profile) {
    return profile.SetValue(std::string(section).c_str(),
                            std::string(key).c_str(),
                            std::string(value).c_str()) >= 0;
  });
}

int RemoveProfileKey(const std::string& path,
                     std::string_view section,
                     std::string_view key) {
  const bool ok = Modify(path, [&](Profile& profile) {
    profile.Delete(std::string(section).c_str(), std::string(key).c_str(),
                   /*a_bRemoveEmpty=*/false);
    return true;
  });
  return ok ? 1 : 0;
}

int RemoveProfileSection(const std::string& path, std::string_view section) {
  const bool ok = Modify(path, [&](Profile& profile) {
    profile.Delete(std::string(section).c_str(), nullptr);
    return true;
  });
  return ok ? 1 : 0;
}

namespace {

std::string UpperAscii(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'a' && c <= 'z') {
      c = static_cast<char>(c - 'a' + 'A');
    }
  }
  return out;
}

std::string ContentsKey(std::string_view section, std::string_view key) {
  return UpperAscii(section) + '\n' + UpperAscii(key);
}

}  // namespace

std::string ProfileContents::Get(std::string_view section,
                                 std::string_view key,
                                 std::string_view default_value) const {
  const std::string wanted = ContentsKey(section, key);
  const auto at = std::lower_bound(
      values_.begin(), values_.end(), wanted,
      [](const auto& item, const std::string& k) { return item.first < k; });
  if (at != values_.end() && at->first == wanted) {
    return at->second;
  }
  return std::string(default_value);
}

bool ProfileContents::HasSection(std::string_view section) const {
  return std::binary_search(sections_.begin(), sections_.end(),
                            UpperAscii(section));
}

ProfileContents ReadProfile(const std::string& path) {
  ProfileContents contents;
  const std::optional<std::string> text = ReadText(path);
  Profile profile;
  if (!text || !Load(*text, profile)) {
    return contents;
  }
  Profile::TNamesDepend sections;
  profile.GetAllSections(sections);
  for (const Profile::Entry& section : sections) {
    contents.sections_.push_back(UpperAscii(section.pItem));
    const Profile::TKeyVal* keys = profile.GetSection(section.pItem);
    if (keys == nullptr) {
      continue;
    }
    for (const auto& [entry, value] : *keys) {
      contents.values_.emplace_back(ContentsKey(section.pItem, entry.pItem),
                                    value);
    }
  }
  std::sort(contents.sections_.begin(), contents.sections_.end());
  // A key given twice keeps its first value, as GetValue does.
  std::stable_sort(
      contents.values_.begin(), contents.values_.end(),
      [](const auto& a, const auto& b) { return a.first < b.first; });
  return contents;
}

bool ChangeProfile(const std::string& path,
                   const std::vector<ProfileChange>& changes) {
  for (const ProfileChange& change : changes) {
    if (change.kind == ProfileChange::Kind::kSet &&
        !CanHold(change.section, change.key, change.value)) {
      return false;
    }
  }
  return Modify(path, [&](Profile& profile) {
    for (const ProfileChange& change : changes) {
      switch (change.kind) {
        case ProfileChange::Kind::kSet:
          if (profile.SetValue(change.section.c_str(), change.key.c_str(),
                               change.value.c_str()) < 0) {
            return false;
          }
          break;
        case ProfileChange::Kind::kRemoveKey:
          profile.Delete(change.section.c_str(), change.key.c_str(),
                         /*a_bRemoveEmpty=*/false);
          break;
        case ProfileChange::Kind::kRemoveSection:
          profile.Delete(change.section.c_str(), nullptr);
          break;
      }
    }
    return true;
  });
}

std::vector<std::string> GetProfileSectionNames(const std::string& path) {
  std::vector<std::string> out;
  const std::optional<std::string> text = ReadText(path);
  Profile profile;
  if (!text || !Load(*text, profile)) {
    return out;
  }
  Profile::TNamesDepend sections;
  profile.GetAllSections(sections);
  sections.sort(Profile::Entry::LoadOrder());
  for (const Profile::Entry& entry : sections) {
    // Keys before the first section line belong to no section.
    if (entry.pItem[0] != '\0') {
      out.emplace_back(entry.pItem);
    }
  }
  return out;
}

std::vector<std::pair<std::string, std::string>> GetProfileSection(
    const std::string& path,
    std::string_view section) {
  std::vector<std::pair<std::string, std::string>> out;
  const std::optional<std::string> text = ReadText(path);
  Profile profile;
  if (!text || !Load(*text, profile)) {
    return out;
  }
  const Profile::TKeyVal* keys =
      profile.GetSection(std::string(section).c_str());
  if (keys == nullptr) {
    return out;
  }
  std::vector<std::pair<int, std::pair<std::string, std::string>>> ordered;
  for (const auto& [entry, value] : *keys) {
    ordered.push_back({entry.nOrder, {entry.pItem, value}});
  }
  std::sort(ordered.begin(), ordered.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  for (auto& item : ordered) {
    out.push_back(std::move(item.second));
  }
  return out;
}

}  // namespace qbpd
