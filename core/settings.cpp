#include "core/settings.h"

#include "platform/local_service.h"
#include "platform/profile_file.h"
#include "platform/settings_store.h"

#include <array>
#include <cctype>
#include <vector>

namespace qbpd {
namespace {

using F = SettingForm;

// The tree as the installer and the program leave it. Fallbacks are what the
// readers take for a missing value; the dialogs' ranges go with numbers.
constexpr std::array kSchema = {
    // The installation.
    SettingValue{kRootKey, "AppPath", F::kFolder, "", 0, 0, true},
    SettingValue{kRootKey, "Version", F::kText, "", 0, 0, true},
    // "TRUE" anywhere in the upper-cased text switches the cache on.
    SettingValue{kRootKey, "CacheEnable", F::kText, "", 0, 0, true},
    // The service's address and site path, at least 2 characters each.
    SettingValue{kRootKey, "IP", F::kText, "", 0, 0, true},
    SettingValue{kRootKey, "URL", F::kText, "", 0, 0, true},
    // A PEM file of the authorities that an https:// service is checked
    // against in place of the system's; empty uses the system's.
    // Set by whoever runs a private service; the installer lays nothing.
    SettingValue{kRootKey, "CAFile", F::kText, "", 0, 0, false},
    // The window at the last exit: "0" normal, "2" (or "1") maximised.
    SettingValue{kRootKey, "PrevMode", F::kWholeNumber, "0", 0, 2, false},
    SettingValue{kRootKey, "PrevHt", F::kWholeNumber, "9000", 9000, 0, false},
    SettingValue{kRootKey, "PrevWidth", F::kWholeNumber, "12845", 12845, 0,
                 false},
    // The brand and the tags passed to the service.
    SettingValue{kSiteSettingsKey, "CobrandId", F::kText, "", 0, 0, true},
    SettingValue{kSiteSettingsKey, "SourceCode", F::kText, "", 0, 0, true},
    SettingValue{kSiteSettingsKey, "SubscriberId", F::kText, "", 0, 0, true},
    // One value per device met: its identity and its description.
    SettingValue{kCameraListKey, "<device>", F::kText, "", 0, 0, false},
    // "FitToWidth" or "OriginalSize"; only the first letter is kept.
    SettingValue{kDisplayKey, "ZoomSettings", F::kText, "", 0, 0, true},
    SettingValue{kDisplayKey, "SlideshowImageIntervalInSeconds",
                 F::kWholeNumber, "", 2, 20, true},
    // Empty: the folder pane never closes by itself.
    SettingValue{kDisplayKey, "ExplorerCloseIntervalInSeconds", F::kWholeNumber,
                 "", 10, 60, true},
    // 0 or empty: no recent folder list.
    SettingValue{kDisplayKey, "NoOfRecentFolders", F::kWholeNumber, "", 1, 10,
                 true},
    // Newest first; "" when the place is free.
    SettingValue{kDisplayKey, "RecentFolder<n>", F::kFolder, "", 0, 0, false},
    SettingValue{kSettingsKey, "UserName", F::kText, "", 0, 0, false},
    SettingValue{kSettingsKey, "EncryptedPassword", F::kScrambled, "", 0, 0,
                 false},
    SettingValue{kSettingsKey, "AutoLogin", F::kBoolean, "", 0, 0, true},
    SettingValue{kSettingsKey, "LastOpenFolderInPreviousSession", F::kBoolean,
                 "", 0, 0, true},
    SettingValue{kSettingsKey, "DefaultFolder", F::kFolder, "", 0, 0, true},
    // "4x6Singles", "4x6Doubles", "5x7Singles" or empty.
    SettingValue{kExpressPrintsKey, "ExpressPrints", F::kText, "", 0, 0, true},
    SettingValue{kCameraTransferKey, "BaseFolder", F::kFolder, "", 0, 0, true},
    // 0 "Transfer Date MM/DD/YYYY", 1 "Transfer Date DD/MM/YYYY",
    // 2 "Always ask me for a name".
    SettingValue{kCameraTransferKey, "FolderName", F::kListIndex, "0", 0, 2,
                 true},
    // 0 "Picture 1", 1 "(Folder Name) 1".
    SettingValue{kCameraTransferKey, "PhotoName", F::kListIndex, "0", 0, 1,
                 true},
    SettingValue{kCameraTransferKey, "DeleteImagesStatus", F::kBoolean, "", 0,
                 0, true},
    SettingValue{kCameraTransferKey, "DisplayDialogtoCopy", F::kBoolean, "", 0,
                 0, true},
    SettingValue{kCameraTransferKey, "DetectUSBDevices", F::kBoolean, "", 0, 0,
                 true},
    // The photo file association: "QBPDJPG" or "jpegfile".
    SettingValue{kJpgClassKey, "", F::kText, "", 0, 0, false},
    SettingValue{kJpeClassKey, "", F::kText, "", 0, 0, false},
    SettingValue{kJpegClassKey, "", F::kText, "", 0, 0, false},
};

constexpr std::string_view kNumbered = "<n>";
constexpr std::string_view kAnyName = "<device>";
// The fixed buffers of the association's read and write sides.
constexpr std::size_t kAssociationReadBuffer = 255;
constexpr std::size_t kAssociationWriteBuffer = 8;
constexpr int kPasswordShift = 5;
constexpr int kHighestCode = 255;

bool SameText(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::toupper(static_cast<unsigned char>(a[i])) !=
        std::toupper(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

bool NameMatches(std::string_view pattern, std::string_view name) {
  if (pattern == kAnyName) {
    return !name.empty();
  }
  if (pattern.ends_with(kNumbered)) {
    const std::string_view stem = pattern.substr(0, pattern.size() - 3);
    if (name.size() <= stem.size() ||
        !SameText(name.substr(0, stem.size()), stem)) {
      return false;
    }
    for (char c : name.substr(stem.size())) {
      if (!std::isdigit(static_cast<unsigned char>(c))) {
        return false;
      }
    }
    return true;
  }
  return SameText(pattern, name);
}

bool StoreHolds(SettingsStore& store,
                std::string_view key,
                std::string_view name) {
  for (const auto& [held, data] : store.List(key)) {
    if (SameText(held, name)) {
      return true;
    }
  }
  return false;
}

// Replaces every "${NAME}" by its variable; false when a name is unknown or
// a placeholder isn't closed.
bool Expand(std::string_view text,
            const std::map<std::string, std::string>& variables,
            std::string& out) {
  out.clear();
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t open = text.find("${", at);
    if (open == std::string_view::npos) {
      out.append(text.substr(at));
      break;
    }
    out.append(text.substr(at, open - at));
    const std::size_t close = text.find('}', open + 2);
    if (close == std::string_view::npos) {
      return false;
    }
    const auto found =
        variables.find(std::string(text.substr(open + 2, close - open - 2)));
    if (found == variables.end()) {
      return false;
    }
    out.append(found->second);
    at = close + 1;
  }
  return true;
}

}  // namespace

std::span<const SettingValue> SettingsSchema() {
  return kSchema;
}

const SettingValue* FindSetting(std::string_view key, std::string_view name) {
  for (const SettingValue& value : kSchema) {
    if (SameText(value.key, key) && NameMatches(value.name, name)) {
      return &value;
    }
  }
  return nullptr;
}

std::string DropTrailingNul(std::string text) {
  if (!text.empty() && text.back() == '\0') {
    text.pop_back();
  }
  return text;
}

std::string CutAtFirstNul(std::string text) {
  const std::size_t nul = text.find('\0');
  if (nul != std::string::npos) {
    text.erase(nul);
  }
  return text;
}

std::string TrimSpaces(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) {
    return std::string();
  }
  const std::size_t last = text.find_last_not_of(' ');
  return std::string(text.substr(first, last - first + 1));
}

bool IsTrueText(std::string_view text) {
  return SameText(text, "TRUE");
}

std::string ReadSetting(SettingsStore& store,
                        std::string_view key,
                        std::string_view name) {
  return DropTrailingNul(store.Read(key, name));
}

std::string EncryptPassword(std::string_view text) {
  std::string out;
  for (char c : text) {
    const int code = static_cast<unsigned char>(c) + kPasswordShift;
    if (code > kHighestCode) {
      return std::string();
    }
    out.push_back(static_cast<char>(code));
  }
  return out;
}

std::string DecryptPassword(std::string_view text) {
  std::string out;
  // The last character is left out on purpose: it is taken for the NUL
  // that ends a value read back from the store.
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    const int code = static_cast<unsigned char>(text[i]) - kPasswordShift;
    if (code < 0) {
      return std::string();
    }
    out.push_back(static_cast<char>(code));
  }
  return out;
}

bool ReadIniValue(const std::string& scr_ini_path,
                  std::string_view section,
                  std::string_view key,
                  std::string_view default_value,
                  std::string& result) {
  std::string text =
      TrimSpaces(GetProfileString(scr_ini_path, section, key, default_value));
  if (!text.empty() && text.back() == '\0') {
    std::erase(text, '\0');
    text = TrimSpaces(text);
  }
  result = text;
  return !result.empty();
}

bool WriteIniValue(const std::string& scr_ini_path,
                   std::string_view section,
                   std::string_view key,
                   std::string_view text) {
  return WriteProfileString(scr_ini_path, section, key, text);
}

int RemoveFieldAndItsValue(std::string_view section,
                           std::string_view field,
                           const std::string& ini_path) {
  return RemoveProfileKey(ini_path, section, field);
}

int RemoveSectionAndItsData(std::string_view section,
                            const std::string& ini_path) {
  return RemoveProfileSection(ini_path, section);
}

bool LayDefaultSettings(SettingsStore& store,
                        const std::string& defaults_file,
                        const std::map<std::string, std::string>& variables,
                        int* laid) {
  int written = 0;
  bool ok = true;
  const std::vector<std::string> keys = GetProfileSectionNames(defaults_file);
  for (const std::string& key : keys) {
    for (const auto& [name, data] : GetProfileSection(defaults_file, key)) {
      if (StoreHolds(store, key, name)) {
        continue;
      }
      std::string expanded;
      if (!Expand(data, variables, expanded) ||
          !store.Write(key, name, expanded)) {
        ok = false;
        continue;
      }
      ++written;
    }
  }
  if (laid != nullptr) {
    *laid = written;
  }
  return ok && !keys.empty();
}

std::map<std::string, std::string> InstallerVariables(
    const std::string& pictures_folder) {
  return {{"PICTURES", pictures_folder},
          {"SERVICE_PORT", std::to_string(UserServicePort())},
          {"VERSION", std::string(ProgramVersion())}};
}

bool ReadJpegAssociation(SettingsStore& store) {
  std::string text = store.Read(kJpgClassKey, "");
  if (text.size() > kAssociationReadBuffer) {
    text.resize(kAssociationReadBuffer);
  }
  return TrimSpaces(CutAtFirstNul(std::move(text))) == kJpegOpenHere;
}

bool WriteJpegAssociation(SettingsStore& store, bool open_in_program) {
  // A fixed-length buffer cuts a longer text and pads a shorter one with
  // spaces, which the trim then takes off again.
  std::string buffer(open_in_program ? kJpegOpenHere : kJpegOpenElsewhere);
  buffer.resize(kAssociationWriteBuffer, ' ');
  const std::string text = TrimSpaces(buffer);
  bool ok = true;
  for (std::string_view key : {kJpgClassKey, kJpeClassKey, kJpegClassKey}) {
    ok = store.Write(key, "", text) && ok;
  }
  return ok;
}

}  // namespace qbpd
