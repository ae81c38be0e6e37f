#include "screensaver/scr_store.h"

#include "core/quil_mod.h"
#include "platform/profile_file.h"

#include <sys/stat.h>
#include <unordered_set>

namespace qbpd {
namespace {

using Kind = ProfileChange::Kind;

ProfileChange Set(std::string section, std::string key, std::string value) {
  return {Kind::kSet, std::move(section), std::move(key), std::move(value)};
}
ProfileChange RemoveKey(std::string section, std::string key) {
  return {Kind::kRemoveKey, std::move(section), std::move(key), {}};
}
ProfileChange RemoveSection(std::string section) {
  return {Kind::kRemoveSection, std::move(section), {}, {}};
}

std::string NameKey(int i) {
  return kScrNameKeyPrefix + std::to_string(i);
}
std::string ImageKey(int i) {
  return kScrImageKeyPrefix + std::to_string(i);
}

std::vector<std::string> NamesOf(const ProfileContents& contents) {
  std::vector<std::string> names;
  const int count = ScrNumber(contents.Get(kScrGeneral, kScrCountKey, ""));
  for (int i = 1; i <= count; ++i) {
    names.push_back(contents.Get(kScrGeneral, NameKey(i), ""));
  }
  return names;
}

std::vector<std::string> PhotosOf(const ProfileContents& contents,
                                  std::string_view name) {
  std::vector<std::string> photos;
  const int count = ScrNumber(contents.Get(name, kScrImageCountKey, ""));
  for (int i = 1; i <= count; ++i) {
    std::string photo = contents.Get(name, ImageKey(i), "");
    if (!photo.empty()) {
      photos.push_back(std::move(photo));
    }
  }
  return photos;
}

// The changes that write `photos` as the whole list of a section whose
// list held `old_count` entries.
void WritePhotos(std::vector<ProfileChange>& changes,
                 const std::string& name,
                 const std::vector<std::string>& photos,
                 int old_count) {
  const int count = static_cast<int>(photos.size());
  for (int i = 0; i < count; ++i) {
    changes.push_back(Set(name, ImageKey(i + 1), photos[i]));
  }
  for (int i = count + 1; i <= old_count; ++i) {
    changes.push_back(RemoveKey(name, ImageKey(i)));
  }
  changes.push_back(Set(name, kScrImageCountKey, std::to_string(count)));
}

// The changes that write `names` as the whole name list of a list that
// held `old_count`.
void WriteNames(std::vector<ProfileChange>& changes,
                const std::vector<std::string>& names,
                int old_count) {
  const int count = static_cast<int>(names.size());
  for (int i = 0; i < count; ++i) {
    changes.push_back(Set(kScrGeneral, NameKey(i + 1), names[i]));
  }
  for (int i = count + 1; i <= old_count; ++i) {
    changes.push_back(RemoveKey(kScrGeneral, NameKey(i)));
  }
  changes.push_back(Set(kScrGeneral, kScrCountKey, std::to_string(count)));
}

bool SameName(std::string_view a, std::string_view b) {
  return UpperCase(a) == UpperCase(b);
}

}  // namespace

int ScrNumber(std::string_view text) {
  const std::string t = Trim(text);
  size_t at = 0;
  bool negative = false;
  if (at < t.size() && (t[at] == '-' || t[at] == '+')) {
    negative = t[at] == '-';
    ++at;
  }
  long long value = 0;
  for (; at < t.size() && t[at] >= '0' && t[at] <= '9'; ++at) {
    value = value * 10 + (t[at] - '0');
    if (value > 1000000000) {
      break;
    }
  }
  return static_cast<int>(negative ? -value : value);
}

std::string DecodeTransitionEffects(int value) {
  std::string codes;
  for (int pass = 0; pass < 4; ++pass) {
    if (value >= 15) {
      codes += std::string(">") + kCodeFromCentre;
      value -= kEffectFromCentre;
    } else if (value >= 4) {
      codes += std::string(">") + kCodeDiagonal;
      value -= kEffectDiagonal;
    } else if (value >= 2) {
      codes += std::string(">") + kCodeTopToBottom;
      value -= kEffectTopToBottom;
    } else if (value == 1) {
      codes += std::string(">") + kCodeLeftToRight;
      value -= kEffectLeftToRight;
    } else {
      break;
    }
  }
  return codes.empty() ? codes : codes.substr(1);
}

EffectBoxes DecodeEffectBoxes(int value) {
  EffectBoxes boxes;
  for (int pass = 0; pass < 4; ++pass) {
    if (value >= 15) {
      boxes.from_centre = true;
      value -= kEffectFromCentre;
    } else if (value >= 4) {
      boxes.diagonal = true;
      value -= kEffectDiagonal;
    } else if (value >= 2) {
      boxes.top_to_bottom = true;
      value -= kEffectTopToBottom;
    } else if (value == 1) {
      boxes.left_to_right = true;
      value -= kEffectLeftToRight;
    } else {
      break;
    }
  }
  return boxes;
}

int EffectsValue(const EffectBoxes& boxes) {
  return (boxes.from_centre ? kEffectFromCentre : 0) +
         (boxes.diagonal ? kEffectDiagonal : 0) +
         (boxes.top_to_bottom ? kEffectTopToBottom : 0) +
         (boxes.left_to_right ? kEffectLeftToRight : 0);
}

std::string EffectCodes(const EffectBoxes& boxes) {
  std::string codes;
  for (auto [set, code] : {std::pair{boxes.from_centre, kCodeFromCentre},
                           std::pair{boxes.diagonal, kCodeDiagonal},
                           std::pair{boxes.top_to_bottom, kCodeTopToBottom},
                           std::pair{boxes.left_to_right, kCodeLeftToRight}}) {
    if (set) {
      codes += std::string(">") + code;
    }
  }
  return codes.empty() ? codes : codes.substr(1);
}

bool MakeScrIniIfMissing(const std::string& ini) {
  struct stat info {};
  if (stat(ini.c_str(), &info) == 0) {
    return true;
  }
  return ChangeProfile(ini,
                       {Set(kScrGeneral, kScrFileNameKey, kScrDefaultFileName),
                        Set(kScrGeneral, kScrCountKey, "0"),
                        Set(kScrGeneral, kScrDefaultKey, "")});
}

std::vector<std::string> ReadScreensaverNames(const std::string& ini) {
  return NamesOf(ReadProfile(ini));
}

bool HasScreensaverName(const std::vector<std::string>& names,
                        std::string_view name) {
  for (const std::string& n : names) {
    if (SameName(n, name)) {
      return true;
    }
  }
  return false;
}

std::vector<std::string> ReadScreensaverPhotos(const std::string& ini,
                                               std::string_view name) {
  return PhotosOf(ReadProfile(ini), name);
}

bool PhotoFileExists(const std::string& path) {
  struct stat info {};
  return !path.empty() && stat(path.c_str(), &info) == 0 &&
         S_ISREG(info.st_mode);
}

bool RepairScreensavers(const std::string& ini) {
  const ProfileContents contents = ReadProfile(ini);
  const std::vector<std::string> names = NamesOf(contents);
  const std::string current = contents.Get(kScrGeneral, kScrDefaultKey, "");
  std::vector<ProfileChange> changes;
  std::vector<std::string> kept_names;
  bool names_changed = false;
  bool current_gone = false;
  for (const std::string& name : names) {
    const int old_count = ScrNumber(contents.Get(name, kScrImageCountKey, ""));
    std::vector<std::string> kept;
    bool gap = false;
    for (int i = 1; i <= old_count; ++i) {
      std::string photo = contents.Get(name, ImageKey(i), "");
      if (PhotoFileExists(photo)) {
        kept.push_back(std::move(photo));
      } else {
        gap = true;
      }
    }
    if (!name.empty() && !kept.empty()) {
      if (gap) {
        WritePhotos(changes, name, kept, old_count);
      }
      kept_names.push_back(name);
      continue;
    }
    // An empty name has no section of its own: "General" isn't it.
    if (!name.empty() && contents.HasSection(name)) {
      changes.push_back(RemoveSection(name));
    }
    names_changed = true;
    if (!name.empty() && SameName(name, current)) {
      current_gone = true;
    }
  }
  if (names_changed) {
    WriteNames(changes, kept_names, static_cast<int>(names.size()));
  }
  if (current_gone) {
    changes.push_back(Set(kScrGeneral, kScrDefaultKey, ""));
  }
  return changes.empty() || ChangeProfile(ini, changes);
}

bool CreateScreensaver(const std::string& ini,
                       const std::string& name,
                       const std::vector<std::string>& photos,
                       int& count) {
  const ProfileContents contents = ReadProfile(ini);
  const int old_count = ScrNumber(contents.Get(kScrGeneral, kScrCountKey, ""));
  std::vector<ProfileChange> changes;
  changes.push_back(
      Set(kScrGeneral, kScrCountKey, std::to_string(old_count + 1)));
  changes.push_back(Set(kScrGeneral, NameKey(old_count + 1), name));
  WritePhotos(changes, name, photos,
              ScrNumber(contents.Get(name, kScrImageCountKey, "")));
  changes.push_back(
      Set(name, kScrIntervalKey, std::to_string(kScrNewInterval)));
  changes.push_back(Set(name, kScrEffectsKey, std::to_string(kScrAllEffects)));
  if (!ChangeProfile(ini, changes)) {
    return false;
  }
  count = old_count + 1;
  return true;
}

bool AddPhotosToScreensaver(const std::string& ini,
                            const std::string& name,
                            const std::vector<std::string>& photos,
                            int& added) {
  const ProfileContents contents = ReadProfile(ini);
  int count = ScrNumber(contents.Get(name, kScrImageCountKey, ""));
  std::unordered_set<std::string> held;
  for (int i = 1; i <= count; ++i) {
    held.insert(UpperCase(contents.Get(name, ImageKey(i), "")));
  }
  std::vector<ProfileChange> changes;
  int new_photos = 0;
  for (const std::string& photo : photos) {
    if (held.insert(UpperCase(photo)).second) {
      ++count;
      ++new_photos;
      changes.push_back(Set(name, ImageKey(count), photo));
    }
  }
  changes.push_back(Set(name, kScrImageCountKey, std::to_string(count)));
  if (!ChangeProfile(ini, changes)) {
    return false;
  }
  added = new_photos;
  return true;
}

bool SaveScreensaver(const std::string& ini,
                     const std::string& name,
                     const std::vector<std::string>& photos,
                     int interval,
                     int effects) {
  const ProfileContents contents = ReadProfile(ini);
  std::vector<ProfileChange> changes;
  WritePhotos(changes, name, photos,
              ScrNumber(contents.Get(name, kScrImageCountKey, "")));
  changes.push_back(Set(name, kScrIntervalKey, std::to_string(interval)));
  changes.push_back(Set(name, kScrEffectsKey, std::to_string(effects)));
  return ChangeProfile(ini, changes);
}

bool DeleteScreensaver(const std::string& ini, const std::string& name) {
  const ProfileContents contents = ReadProfile(ini);
  const std::vector<std::string> names = NamesOf(contents);
  std::vector<std::string> kept;
  for (const std::string& n : names) {
    if (!SameName(n, name)) {
      kept.push_back(n);
    }
  }
  std::vector<ProfileChange> changes;
  changes.push_back(RemoveSection(name));
  WriteNames(changes, kept, static_cast<int>(names.size()));
  if (SameName(contents.Get(kScrGeneral, kScrDefaultKey, ""), name)) {
    changes.push_back(Set(kScrGeneral, kScrDefaultKey, ""));
  }
  return ChangeProfile(ini, changes);
}

bool WriteTempScr(const std::string& temp_ini,
                  const std::string& name,
                  const std::vector<std::string>& photos) {
  std::vector<ProfileChange> changes;
  for (const std::string& section : GetProfileSectionNames(temp_ini)) {
    changes.push_back(RemoveSection(section));
  }
  changes.push_back(Set(name, "NumberOfImages", std::to_string(photos.size())));
  for (size_t i = 0; i < photos.size(); ++i) {
    changes.push_back(Set(name, ImageKey(static_cast<int>(i) + 1), photos[i]));
  }
  return ChangeProfile(temp_ini, changes);
}

}  // namespace qbpd
