// The hand-over of a second start's activation token to the running
// instance, over its local socket.
#include "platform/single_instance.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <tuple>
#include <unistd.h>

namespace qbpd {
namespace {

class SingleInstanceTokenTest : public ::testing::Test {
 protected:
  std::string folder() const { return (dir_ / "run").string(); }

  // Writes `bytes` to the running instance's socket as another program
  // could, and closes.
  bool SendRaw(const std::string& bytes) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder() + "/instance.sock";
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    bool sent = fd >= 0 &&
                connect(fd, reinterpret_cast<sockaddr*>(&address),
                        sizeof(address)) == 0 &&
                write(fd, bytes.data(), bytes.size()) ==
                    static_cast<ssize_t>(bytes.size());
    if (fd >= 0) {
      close(fd);
    }
    return sent;
  }

  testing::TempDir dir_;
};

TEST_F(SingleInstanceTokenTest, TheSecondStartsTokenReachesTheFirst) {
  auto first = MakeSingleInstance(folder());
  const ActivationToken given{"laptop-4711-0_TIME123456", "7f3a9c-token"};
  auto second = MakeSingleInstance(folder(), given);
  ASSERT_TRUE(first->Claim());
  ASSERT_FALSE(second->Claim());
  EXPECT_FALSE(first->TakeComeForwardRequest().has_value());
  ASSERT_TRUE(second->AskFirstToComeForward());
  std::optional<ActivationToken> got = first->TakeComeForwardRequest();
  ASSERT_TRUE(got.has_value());
  EXPECT_EQ(*got, given);
  EXPECT_FALSE(first->TakeComeForwardRequest().has_value());  // taken once
}

TEST_F(SingleInstanceTokenTest, AStartWithoutATokenStillAsks) {
  auto first = MakeSingleInstance(folder(), {"mine_TIME1", "mine"});
  auto second = MakeSingleInstance(folder());
  ASSERT_TRUE(first->Claim());
  ASSERT_TRUE(second->AskFirstToComeForward());
  std::optional<ActivationToken> got = first->TakeComeForwardRequest();
  ASSERT_TRUE(got.has_value());
  // The first instance's own token is not mixed in.
  EXPECT_EQ(*got, ActivationToken{});
}

TEST_F(SingleInstanceTokenTest, TheLatestOfSeveralRequestsWins) {
  auto first = MakeSingleInstance(folder());
  ASSERT_TRUE(first->Claim());
  auto one = MakeSingleInstance(folder(), {"one_TIME1", ""});
  auto two = MakeSingleInstance(folder(), {"", "two"});
  ASSERT_TRUE(one->AskFirstToComeForward());
  ASSERT_TRUE(two->AskFirstToComeForward());
  std::optional<ActivationToken> got = first->TakeComeForwardRequest();
  ASSERT_TRUE(got.has_value());
  EXPECT_EQ(*got, (ActivationToken{"", "two"}));
}

TEST_F(SingleInstanceTokenTest, WhatIsNotARequestOrNotATokenIsDropped) {
  auto first = MakeSingleInstance(folder());
  ASSERT_TRUE(first->Claim());
  // Not a request at all.
  ASSERT_TRUE(SendRaw("hello\n"));
  EXPECT_FALSE(first->TakeComeForwardRequest().has_value());
  // A request cut short in its token line.
  ASSERT_TRUE(SendRaw("come-forward\nstartup-id=abc"));
  EXPECT_FALSE(first->TakeComeForwardRequest().has_value());
  // A request whose token has a blank or a control character: the request
  // counts, the token doesn't.
  ASSERT_TRUE(
      SendRaw("come-forward\nstartup-id=two words\nxdg-activation=bell\a\n"));
  std::optional<ActivationToken> got = first->TakeComeForwardRequest();
  ASSERT_TRUE(got.has_value());
  EXPECT_EQ(*got, ActivationToken{});
  // An unknown line from a newer program is passed over.
  ASSERT_TRUE(SendRaw("come-forward\nscreen=2\nxdg-activation=ok\n"));
  got = first->TakeComeForwardRequest();
  ASSERT_TRUE(got.has_value());
  EXPECT_EQ(got->xdg_activation, "ok");
  // A flood is not read without end.
  ASSERT_TRUE(
      SendRaw("come-forward\nstartup-id=" + std::string(5000, 'x') + "\n"));
  EXPECT_FALSE(first->TakeComeForwardRequest().has_value());
}

TEST_F(SingleInstanceTokenTest, TheEnvironmentGivesTheTokens) {
  const char* old_id = std::getenv("DESKTOP_STARTUP_ID");
  const char* old_token = std::getenv("XDG_ACTIVATION_TOKEN");
  const std::string saved_id = old_id != nullptr ? old_id : "";
  const std::string saved_token = old_token != nullptr ? old_token : "";

  setenv("DESKTOP_STARTUP_ID", "files-123-host-qbpd-0_TIME98765", 1);
  setenv("XDG_ACTIVATION_TOKEN", "abc_def", 1);
  EXPECT_EQ(ActivationTokenFromEnvironment(),
            (ActivationToken{"files-123-host-qbpd-0_TIME98765", "abc_def"}));
  // Left in place for the toolkit.
  EXPECT_NE(std::getenv("DESKTOP_STARTUP_ID"), nullptr);
  setenv("DESKTOP_STARTUP_ID", "with blank", 1);
  unsetenv("XDG_ACTIVATION_TOKEN");
  EXPECT_EQ(ActivationTokenFromEnvironment(), ActivationToken{});

  for (auto [name, value, had] :
       {std::tuple{"DESKTOP_STARTUP_ID", saved_id, old_id != nullptr},
        std::tuple{"XDG_ACTIVATION_TOKEN", saved_token,
                   old_token != nullptr}}) {
    if (had) {
      setenv(name, value.c_str(), 1);
    } else {
      unsetenv(name);
    }
  }
}

TEST(TokenTextTest, OnlyPrintableTextWithoutBlanksUpTo512) {
  EXPECT_TRUE(IsTokenText("a"));
  EXPECT_TRUE(IsTokenText(std::string(512, 'z')));
  EXPECT_FALSE(IsTokenText(std::string(513, 'z')));
  EXPECT_FALSE(IsTokenText(""));
  EXPECT_FALSE(IsTokenText("a b"));
  EXPECT_FALSE(IsTokenText("a\nb"));
  EXPECT_FALSE(IsTokenText("caf\xc3\xa9"));
}

}  // namespace
}  // namespace qbpd
