#include "ui/qt/local_service.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace qbpd {
namespace {

TEST(LocalServiceTest, AddressesOfThisMachineGiveTheirPort) {
  EXPECT_EQ(LocalServicePort("http://127.0.0.1:8931"), 8931);
  EXPECT_EQ(LocalServicePort("http://127.0.0.1:8931/api"), 8931);
  EXPECT_EQ(LocalServicePort("http://localhost:9000"), 9000);
  EXPECT_EQ(LocalServicePort("http://LOCALHOST"), 80);
  EXPECT_EQ(LocalServicePort("https://[::1]:8443/path"), 8443);
  EXPECT_EQ(LocalServicePort(kDefaultServiceAddress), 8931);
  char name[256] = {};
  ASSERT_EQ(gethostname(name, sizeof name - 1), 0);
  EXPECT_EQ(LocalServicePort(std::string("http://") + name + ":7000"), 7000);
}

TEST(LocalServiceTest, OtherMachinesAndBadAddressesGiveNothing) {
  EXPECT_EQ(LocalServicePort("http://example.com:8931"), std::nullopt);
  EXPECT_EQ(LocalServicePort("http://192.0.2.1"), std::nullopt);
  // A name that merely starts like a loopback one is another machine.
  EXPECT_EQ(LocalServicePort("http://localhost.example.com"), std::nullopt);
  EXPECT_EQ(LocalServicePort(""), std::nullopt);
  EXPECT_EQ(LocalServicePort("http://127.0.0.1:notaport"), std::nullopt);
}

}  // namespace
}  // namespace qbpd
