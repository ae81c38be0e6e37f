// The sign-up form's card rules that need no window.
#include "online/registration_rules.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

TEST(RegistrationRulesTest, ACardExpiresAfterItsMonth) {
  EXPECT_FALSE(CardExpired(1, 2026, 1, 2026));
  EXPECT_TRUE(CardExpired(12, 2025, 1, 2026));
  EXPECT_TRUE(CardExpired(2, 2026, 3, 2026));
  EXPECT_FALSE(CardExpired(1, 2027, 12, 2026));
}

TEST(RegistrationRulesTest, TheCardNumberTakesDigitsDashesAndBlanks) {
  for (int key : std::initializer_list<int>{'0', '9', '-', ' ', 8}) {
    EXPECT_EQ(RegistrationCardKey(key), key) << key;
  }
  for (int key : std::initializer_list<int>{'a', '.', '/', 13, 233}) {
    EXPECT_EQ(RegistrationCardKey(key), 0) << key;
  }
}

}  // namespace
}  // namespace qbpd
