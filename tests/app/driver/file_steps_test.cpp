// Files acted on behind the program's back, and texts with NULs.
#include "tests/app/driver/script_run.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>

namespace qbpd {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::RunText;
using testing::TempDir;

TEST(FileStepsTest, ActOnFilesAsAnotherProgramWould) {
  TempDir dir;
  const fs::path tmp = dir.path() / "tmp";
  testing::ScriptRun run = RunText(
      "write file \"${TMP}/a.txt\" \"one\\0two\"\n"
      "rename \"${TMP}/a.txt\" \"${TMP}/b.txt\"\n"
      "expect file \"${TMP}/a.txt\" missing\n"
      "write file \"${TMP}/c.bin\" \"abcdefgh\"\n"
      "truncate \"${TMP}/c.bin\" 3\n"
      "write bytes \"${TMP}/c.bin\" at 1 FF 00 41\n"
      "write bytes \"${TMP}/d.bin\" 00 0a\n"
      "make folder \"${TMP}/gone/deep\"\n"
      "write file \"${TMP}/gone/deep/x\" \"x\"\n"
      "delete \"${TMP}/gone\"\n"
      "write file \"${TMP}/locked\" \"x\"\n"
      "make read-only \"${TMP}/locked\"\n",
      nullptr, &dir);
  ASSERT_EQ(run.result.exit_code, 0) << run.result.failure << run.transcript;
  EXPECT_EQ(ReadFile(tmp / "b.txt"), std::string("one\0two", 7));
  EXPECT_EQ(ReadFile(tmp / "c.bin"), std::string("a\xFF\0A", 4));
  EXPECT_EQ(ReadFile(tmp / "d.bin"), std::string("\0\n", 2));
  EXPECT_FALSE(fs::exists(tmp / "gone"));
  struct stat st {};
  ASSERT_EQ(stat((tmp / "locked").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0222, 0u);
  fs::permissions(tmp / "locked", fs::perms::owner_write,
                  fs::perm_options::add);
}

TEST(FileStepsTest, WhatCannotBeDoneFailsWithTheReason) {
  struct Case {
    std::string script;
    std::string failure;
  };
  for (const Case& c : std::vector<Case>{
           {"delete \"${TMP}/nothing\"\n", "there is no such file"},
           {"rename \"${TMP}/nothing\" \"${TMP}/other\"\n", "Can't rename "},
           {"write file \"${TMP}/a\" \"1\"\nwrite file \"${TMP}/b\" \"2\"\n"
            "rename \"${TMP}/a\" \"${TMP}/b\"\n",
            "that name is taken"},
           {"write file \"${TMP}/a\" \"12\"\ntruncate \"${TMP}/a\" 5\n",
            "to 5 bytes: it has only 2"},
           {"truncate \"${TMP}/nothing\" 0\n", "Can't truncate "},
           {"write file \"${TMP}/a\" \"12\"\n"
            "write bytes \"${TMP}/a\" at 3 00\n",
            "Can't write at 3 in "},
           {"make read-only \"${TMP}/nothing\"\n", "Can't make "},
       }) {
    testing::ScriptRun run = RunText(c.script);
    EXPECT_EQ(run.result.exit_code, 1) << c.script;
    EXPECT_NE(run.result.failure.find(c.failure), std::string::npos)
        << c.script << "\n"
        << run.result.failure;
  }
}

TEST(FileStepsTest, BadFileStepsAreScriptErrors) {
  for (const char* script : {
           "write bytes \"${TMP}/a\" GG\n",
           "write bytes \"${TMP}/a\" at\n",
           "write bytes \"${TMP}/a\" at -1 00\n",
           "truncate \"${TMP}/a\" -1\n",
           "delete\n",
           "rename \"${TMP}/a\"\n",
       }) {
    testing::ScriptRun run = RunText(script);
    EXPECT_EQ(run.result.exit_code, 2) << script;
  }
}

TEST(FileStepsTest, TranscriptShowsNulsOfTexts) {
  testing::ScriptRun run = RunText(
      "start\n"
      "expect frmFixture.lblStatus.Caption = \"a\\0b\"\n");
  EXPECT_EQ(run.result.exit_code, 1);
  EXPECT_EQ(run.result.failure,
            "line 2: Expected frmFixture.lblStatus.Caption = \"a\\0b\", but "
            "it is \"\"");
}

}  // namespace
}  // namespace qbpd
