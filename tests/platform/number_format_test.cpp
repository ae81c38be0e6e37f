#include "platform/number_format.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace qbpd {
namespace {

// SystemNumberFormat in a child process whose locale variables are
// `environment` alone: the test's own environment stays as it is, and the
// C library's locale loading (which keeps what it read of LOCPATH for the
// process's life) ends with the child. The three fields come back joined by
// "|"; empty when the child failed.
std::string FormatIn(const std::map<std::string, std::string>& environment) {
  int pipe_ends[2];
  if (::pipe(pipe_ends) != 0) {
    return "";
  }
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(pipe_ends[0]);
    for (const char* name : {"LOCPATH", "LC_ALL", "LC_NUMERIC", "LANG"}) {
      ::unsetenv(name);
    }
    for (const auto& [name, value] : environment) {
      ::setenv(name.c_str(), value.c_str(), 1);
    }
    const NumberFormat format = SystemNumberFormat();
    const std::string text = format.decimal_sign + "|" + format.thousands_sign +
                             "|" + format.grouping;
    const bool written = ::write(pipe_ends[1], text.data(), text.size()) ==
                         static_cast<ssize_t>(text.size());
    ::_exit(written ? 0 : 1);
  }
  ::close(pipe_ends[1]);
  std::string text;
  char buffer[256];
  for (ssize_t got; (got = ::read(pipe_ends[0], buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<size_t>(got));
  }
  ::close(pipe_ends[0]);
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child ||
      !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    return "";
  }
  return text;
}

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
  const std::string path = dir.path().string();
  EXPECT_EQ(FormatIn({{"LOCPATH", path}, {"LANG", "de_DE.UTF-8"}}), ",|.|\3\3");
  // LC_NUMERIC outranks LANG, and LC_ALL outranks both.
  EXPECT_EQ(FormatIn({{"LOCPATH", path},
                      {"LANG", "de_DE.UTF-8"},
                      {"LC_NUMERIC", "en_IN.UTF-8"}}),
            ".|,|\3\2");
  EXPECT_EQ(FormatIn({{"LOCPATH", path},
                      {"LC_ALL", "de_DE.UTF-8"},
                      {"LC_NUMERIC", "en_IN.UTF-8"}}),
            ",|.|\3\3");
}

TEST(SystemNumberFormat, NoLocaleOrAnUnknownOneIsTheCLocale) {
  EXPECT_EQ(FormatIn({}), ".||");
  EXPECT_EQ(FormatIn({{"LC_ALL", "C"}}), ".||");
  EXPECT_EQ(FormatIn({{"LC_ALL", "xx_NOWHERE.UTF-8"}}), ".||");
}

}  // namespace
}  // namespace qbpd
