#ifndef QBPD_CORE_SETTINGS_H_
#define QBPD_CORE_SETTINGS_H_

#include <map>
#include <span>
#include <string>
#include <string_view>

namespace qbpd {

class SettingsStore;

// --- the settings tree -------------------------------------------------------
//
// Every setting is a text value under one key tree. The paths below are those
// of the default brand, whose registry root (gsRegistryRoot) is
// "Quillbay Picture Desk"; gsPrefKey on that brand is kPrefKey.

inline constexpr std::string_view kDefaultRegistryRoot =
    "Quillbay Picture Desk";
inline constexpr std::string_view kRootKey = "Software\\Quillbay Picture Desk";
inline constexpr std::string_view kSiteSettingsKey =
    "Software\\Quillbay Picture Desk\\SiteSettings";
inline constexpr std::string_view kCameraListKey =
    "Software\\Quillbay Picture Desk\\DeviceList\\CameraList";
// The preferences prefix, with its trailing backslash.
inline constexpr std::string_view kPrefKey =
    "Software\\Quillbay Picture Desk\\Preferences\\";
inline constexpr std::string_view kDisplayKey =
    "Software\\Quillbay Picture Desk\\Preferences\\Display";
inline constexpr std::string_view kSettingsKey =
    "Software\\Quillbay Picture Desk\\Preferences\\Settings";
inline constexpr std::string_view kExpressPrintsKey =
    "Software\\Quillbay Picture Desk\\Preferences\\ExpressPrints";
inline constexpr std::string_view kCameraTransferKey =
    "Software\\Quillbay Picture Desk\\Preferences\\CameraTransfer";

// The photo file association, kept in the same store: the default value (the
// value of empty name) of each key says which program opens photos.
inline constexpr std::string_view kJpgClassKey = "Classes\\.jpg";
inline constexpr std::string_view kJpeClassKey = "Classes\\.jpe";
inline constexpr std::string_view kJpegClassKey = "Classes\\.jpeg";
inline constexpr std::string_view kJpegOpenHere = "QBPDJPG";
inline constexpr std::string_view kJpegOpenElsewhere = "jpegfile";

// What a value holds. Every value is stored as text.
enum class SettingForm {
  kText,         // free text
  kBoolean,      // "True" or "False", compared in upper case
  kWholeNumber,  // decimal text
  kListIndex,    // a list's index as decimal text
  kFolder,       // a folder path without trailing "/"
  kScrambled,    // text scrambled by EncryptPassword
};

// One value of the tree, declared once for every reader, writer, the default
// set and the settings command.
struct SettingValue {
  std::string_view key;
  // The value's name. "<device>" stands for any name (one value per camera),
  // a name ending in "<n>" for a numbered family ("RecentFolder<n>" is
  // RecentFolder1, RecentFolder2, ...), "" for a key's default value.
  std::string_view name;
  SettingForm form;
  // What a reader takes when the value is missing or empty.
  std::string_view fallback;
  // The range the dialogs accept for a number, both 0 when there is none.
  int minimum;
  int maximum;
  // Laid by the installer's default set rather than written by the program.
  bool installed;
};

// Every value of the tree, key by key.
std::span<const SettingValue> SettingsSchema();

// The declared value that `name` under `key` is (case-insensitive, numbered
// and device names included); nullptr when it isn't part of the tree.
const SettingValue* FindSetting(std::string_view key, std::string_view name);

// --- reading values ----------------------------------------------------------

// A value read back may still hold its terminating NUL. Removes the last
// character when it is a NUL; the text is otherwise unchanged.
std::string DropTrailingNul(std::string text);
// Cuts the text at its first NUL, dropping that NUL and everything after it.
std::string CutAtFirstNul(std::string text);
// Removes leading and trailing spaces (only the space character, as the
// program's trimming always did).
std::string TrimSpaces(std::string_view text);
// Whether a Boolean value reads as true: "True", "TRUE", "true" ... .
bool IsTrueText(std::string_view text);
// The value as most readers take it: read, then its trailing NUL dropped.
std::string ReadSetting(SettingsStore& store,
                        std::string_view key,
                        std::string_view name);

// --- the stored password -----------------------------------------------------
//
// Each character is taken as its 8-bit code. EncryptPassword raises every
// code by 5; DecryptPassword lowers by 5 the codes of every character but the
// last one (it expects the terminating NUL that a value read back from the
// store may hold, and drops the last character whether it is a NUL or not).
// A code that can't be formed (above 255 going forward, below 0 going back)
// ends the routine with an empty result.
std::string EncryptPassword(std::string_view text);
std::string DecryptPassword(std::string_view text);

// --- the screensaver store (scr.ini) -----------------------------------------

// Reads `key` of `section` from the profile file `scr_ini_path` (at most 254
// characters), trims it, and when it ends in a NUL removes every NUL and
// trims again. `result` receives the text; true when it isn't empty.
bool ReadIniValue(const std::string& scr_ini_path,
                  std::string_view section,
                  std::string_view key,
                  std::string_view default_value,
                  std::string& result);
// Writes `key` of `section` in the profile file; false when it couldn't.
bool WriteIniValue(const std::string& scr_ini_path,
                   std::string_view section,
                   std::string_view key,
                   std::string_view text);
// Remove one key, or a whole section, of a profile file. Non-zero when the
// key or section is gone afterwards, 0 when the file couldn't be changed.
int RemoveFieldAndItsValue(std::string_view section,
                           std::string_view field,
                           const std::string& ini_path);
int RemoveSectionAndItsData(std::string_view section,
                            const std::string& ini_path);

// --- the installer's default set ---------------------------------------------

// Lays every value of the profile file `defaults_file` (a section per key
// path, a "name=data" line per value) that the store doesn't hold yet; values
// already there, empty ones too, are kept. "${NAME}" in a data text is
// replaced by variables.at("NAME") (the programs pass at least "PICTURES",
// the user's pictures folder). False when the file is missing or empty, when
// a value names an unknown variable (that value is not laid) or when a write
// failed; the other values are laid all the same. `laid`, when given,
// receives the number of values written.
bool LayDefaultSettings(SettingsStore& store,
                        const std::string& defaults_file,
                        const std::map<std::string, std::string>& variables,
                        int* laid = nullptr);

// This build's version, the text the installer lays as `Version`.
std::string_view ProgramVersion();

// The variables of the default set as the programs lay it for a user:
// "PICTURES", the user's pictures folder; "SERVICE_PORT", the user's port of
// the reference service (UserServicePort); "VERSION", ProgramVersion().
std::map<std::string, std::string> InstallerVariables(
    const std::string& pictures_folder);

// --- the photo file association ----------------------------------------------

// Whether photos open in this program: the default value of kJpgClassKey, cut
// to a 255-character buffer, cut at its first NUL and trimmed, equals
// "QBPDJPG".
bool ReadJpegAssociation(SettingsStore& store);
// Writes "QBPDJPG" (or "jpegfile") through an 8-character buffer, trimmed, as
// the default value of the .jpg, .jpe and .jpeg keys. False when a write
// failed.
bool WriteJpegAssociation(SettingsStore& store, bool open_in_program);

}  // namespace qbpd

#endif  // QBPD_CORE_SETTINGS_H_
