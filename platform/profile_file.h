#ifndef QBPD_PLATFORM_PROFILE_FILE_H_
#define QBPD_PLATFORM_PROFILE_FILE_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qbpd {

// Profile files: text files of "[section]" lines followed by "key=value"
// lines (the screensaver store scr.ini, its scratch copy TempScr.ini, the
// installer's default settings). Section and key names are matched without
// regard to the case of ASCII letters; names and values are trimmed of
// surrounding white space when read. Lines starting with ';' or '#' are
// comments. Every change rewrites the whole file atomically: the new text
// goes to a temporary file in the same folder, is flushed to disk and then
// renamed over the old one, so a crash leaves either the old or the new file
// and never a broken one. Other sections, keys, comments and their order are
// kept. A file that does not exist reads as empty; a change makes it (mode
// 0600) but never makes its folder.

// The read buffer of a profile value, terminator included: a value comes back
// with at most kProfileValueBuffer - 1 (254) bytes. A longer value is cut
// there, backing off to the start of a UTF-8 character so that the text
// stays valid.
inline constexpr std::size_t kProfileValueBuffer = 255;

// The value of `key` in `section` of the file at `path`, trimmed and cut to
// the buffer; `default_value` (cut the same way) when the file, the section or
// the key is missing or the file can't be read.
std::string GetProfileString(const std::string& path,
                             std::string_view section,
                             std::string_view key,
                             std::string_view default_value);

// Sets `key` in `section` to `value`, making the file, the section and the key
// as needed. False when the file can't be read or written, or when a name or
// the value can't be held by the format (an empty key, a line break anywhere,
// "]" in a section name, "=" in a key, a key starting with "[", ";" or "#").
[[nodiscard]] bool WriteProfileString(const std::string& path,
                                      std::string_view section,
                                      std::string_view key,
                                      std::string_view value);

// Removes one key of a section (the section stays, even when empty). Non-zero
// when the key is not in the file afterwards (also when it never was, or the
// file doesn't exist: nothing is then made); 0 when the file couldn't be read
// or written.
int RemoveProfileKey(const std::string& path,
                     std::string_view section,
                     std::string_view key);

// Removes a whole section with its keys. Non-zero and 0 as for
// RemoveProfileKey.
int RemoveProfileSection(const std::string& path, std::string_view section);

// The section names of the file in file order; empty when it can't be read.
std::vector<std::string> GetProfileSectionNames(const std::string& path);

// The keys of one section with their whole values (trimmed, not cut), in
// file order; empty when the section or the file is missing.
std::vector<std::pair<std::string, std::string>> GetProfileSection(
    const std::string& path,
    std::string_view section);

// A whole profile file read once, for a reader that looks at many values
// (the screensaver store's repair reads every photo of every screensaver).
// Names are matched as the functions above match them; values are trimmed
// and, unlike GetProfileString, not cut.
class ProfileContents {
 public:
  // The value, or `default_value` when the section or the key is missing.
  std::string Get(std::string_view section,
                  std::string_view key,
                  std::string_view default_value) const;
  bool HasSection(std::string_view section) const;

 private:
  friend ProfileContents ReadProfile(const std::string& path);
  // Upper-cased section and key to value.
  std::vector<std::pair<std::string, std::string>> values_;
  std::vector<std::string> sections_;
};

// Reads the file at `path`; empty contents when it is missing or can't be
// read.
ProfileContents ReadProfile(const std::string& path);

// One change of ChangeProfile.
struct ProfileChange {
  enum class Kind { kSet, kRemoveKey, kRemoveSection };
  Kind kind = Kind::kSet;
  std::string section;
  std::string key;
  std::string value;
};

// Makes every change of `changes`, in order, and writes the file once,
// atomically: a reader sees the file before all of them or after all of
// them. False (and the file as it was) when the file can't be read or
// written, or when one change can't be held by the format (as
// WriteProfileString says).
[[nodiscard]] bool ChangeProfile(const std::string& path,
                                 const std::vector<ProfileChange>& changes);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_PROFILE_FILE_H_
