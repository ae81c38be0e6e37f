#ifndef QBPD_TESTS_SUPPORT_TEMP_DIR_H_
#define QBPD_TESTS_SUPPORT_TEMP_DIR_H_

#include <filesystem>
#include <string>

namespace qbpd::testing {

// A fresh private folder for one test, removed with everything in it when the
// object goes away.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // The path of `name` inside the folder.
  std::filesystem::path operator/(const std::string& name) const {
    return path_ / name;
  }
  // Writes `content` to `name` (creating parent folders) and returns its path.
  std::filesystem::path WriteFile(const std::string& name,
                                  const std::string& content) const;

 private:
  std::filesystem::path path_;
};

// The whole content of a file ("" when it can't be read).
std::string ReadFile(const std::filesystem::path& path);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_TEMP_DIR_H_
