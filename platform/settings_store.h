#ifndef QBPD_PLATFORM_SETTINGS_STORE_H_
#define QBPD_PLATFORM_SETTINGS_STORE_H_

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qbpd {

// The settings tree of the program: keys written as registry paths
// ("Software\Quillbay Picture Desk\Preferences\Display"), each holding named
// text values. Key paths and value names are matched without regard to case.
// A value that is missing reads as an empty string. Nothing here reports an
// error to the user: a store that cannot be read reads as empty, and a failed
// write returns false.
class SettingsStore {
 public:
  virtual ~SettingsStore() = default;

  // The text of `value` under `key`; "" when either is missing.
  virtual std::string Read(std::string_view key, std::string_view value) = 0;
  // Sets `value` under `key` to `data`, creating the key when missing.
  [[nodiscard]] virtual bool Write(std::string_view key,
                                   std::string_view value,
                                   std::string_view data) = 0;
  // Removes one value; false when it wasn't there or couldn't be removed.
  virtual bool Delete(std::string_view key, std::string_view value) = 0;
  // The values of one key as (name, data), in the order they were made.
  virtual std::vector<std::pair<std::string, std::string>> List(
      std::string_view key) = 0;
  // Every key that holds at least one value, sorted.
  virtual std::vector<std::string> Keys() = 0;
};

// A store that lives in memory only, for a run that must leave nothing
// behind (the headless driver's scripts, tests).
std::unique_ptr<SettingsStore> MakeMemorySettingsStore();

// The settings database of the program: an SQLite file at `path`, made with
// mode 0600 (and its folder) on the first write. Two processes may use one
// file at once; a write waits briefly for the other and never loses a value.
std::unique_ptr<SettingsStore> MakeSqliteSettingsStore(std::string path);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_SETTINGS_STORE_H_
