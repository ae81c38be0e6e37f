#include "platform/number_format.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace qbpd {
namespace {

// Sets the locale variables for one test and puts back what was there.
class LocaleEnvironment {
 public:
  LocaleEnvironment() {
    for (const char* name : kNames) {
      const char* value = std::getenv(name);
      saved_.push_back(value ? std::optional<std::string>(value)
                             : std::nullopt);
      unsetenv(name);
    }
  }
  ~LocaleEnvironment() {
    for (size_t i = 0; i < std::size(kNames); ++i) {
      if (saved_[i]) {
        setenv(kNames[i], saved_[i]->c_str(), 1);
      } else {
        unsetenv(kNames[i]);
      }
    }
  }
  void Set(const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
  }

 private:
  static constexpr const char* kNames[] = {"LOCPATH", "LC_ALL", "LC_NUMERIC",
                                           "LANG"};
  std::vector<std::optional<std::string>> saved_;
};

// Compiles the system's definition of `name` (say "de_DE") as UTF-8 into
// `folder`, so that the test needs no locale installed on the machine.
bool CompileLocale(const std::filesystem::path& folder,
                   const std::string& name) {
  const std::string command = "localedef -i " + name + " -f UTF-8 '" +
                              (folder / (name + ".UTF-8")).string() +
                              "' >/dev/null 2>&1";
  return std::system(command.c_str()) == 0;
}

TEST(SystemNumberFormat, ReadsTheLocaleTheEnvironmentNames) {
  testing::TempDir dir;
  ASSERT_TRUE(CompileLocale(dir.path(), "de_DE"))
      << "localedef and the locale sources (package locales) are needed";
  ASSERT_TRUE(CompileLocale(dir.path(), "en_IN"));
  LocaleEnvironment env;
  env.Set("LOCPATH", dir.path().string());

  env.Set("LANG", "de_DE.UTF-8");
  NumberFormat german = SystemNumberFormat();
  EXPECT_EQ(german.decimal_sign, ",");
  EXPECT_EQ(german.thousands_sign, ".");
  EXPECT_EQ(german.grouping, "\3\3");

  // LC_NUMERIC outranks LANG, and LC_ALL outranks both.
  env.Set("LC_NUMERIC", "en_IN.UTF-8");
  NumberFormat indian = SystemNumberFormat();
  EXPECT_EQ(indian.decimal_sign, ".");
  EXPECT_EQ(indian.thousands_sign, ",");
  EXPECT_EQ(indian.grouping, "\3\2");
  env.Set("LC_ALL", "de_DE.UTF-8");
  EXPECT_EQ(SystemNumberFormat().decimal_sign, ",");
}

TEST(SystemNumberFormat, NoLocaleOrAnUnknownOneIsTheCLocale) {
  LocaleEnvironment env;
  for (const char* name : {"C", "xx_NOWHERE.UTF-8"}) {
    env.Set("LC_ALL", name);
    const NumberFormat format = SystemNumberFormat();
    EXPECT_EQ(format.decimal_sign, ".") << name;
    EXPECT_EQ(format.thousands_sign, "") << name;
    EXPECT_EQ(format.grouping, "") << name;
  }
}

}  // namespace
}  // namespace qbpd
