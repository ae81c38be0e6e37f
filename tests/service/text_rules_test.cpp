// The rules for text that comes from a client's URL: well-formed UTF-8,
// and codes of printable ASCII.
#include "service/core_support.h"

#include <gtest/gtest.h>

namespace qbpd::service {
namespace {

TEST(TextRulesTest, EveryByteOutsideWellFormedUtf8BecomesAReplacement) {
  const std::string r = "\xEF\xBF\xBD";
  struct Case {
    std::string in;
    std::string out;
  };
  const Case cases[] = {
      {"plain", "plain"},
      {"Caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x93\xB7",
       "Caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x93\xB7"},
      {"Caf\xE9", "Caf" + r},                            // Latin-1
      {"\xC3", r},                                       // cut short
      {"\xE2\x82", r + r},                               // cut short, two bytes
      {"\xC0\xAF", r + r},                               // written too long
      {"\xE0\x80\xAF", r + r + r},                       // too long, three
      {"\xED\xA0\x80", r + r + r},                       // a surrogate
      {"\xF4\x90\x80\x80", r + r + r + r},               // beyond U+10FFFF
      {"\xF5\x80", r + r},                               // no such lead
      {"\x80x", r + "x"},                                // a lone continuation
      {std::string("a\0b", 3), std::string("a\0b", 3)},  // NUL is UTF-8
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ValidUtf8(c.in), c.out) << c.in;
  }
}

TEST(TextRulesTest, OnlyPrintableAsciiCanBeACode) {
  EXPECT_TRUE(IsPlainCode("0123abcdef"));
  EXPECT_TRUE(IsPlainCode("A-Z_~"));
  for (const std::string& bad :
       {std::string(), std::string("a b"), std::string("ab\0", 3),
        std::string("\xE9"), std::string("a\tb"), std::string("\x7F")}) {
    EXPECT_FALSE(IsPlainCode(bad)) << bad;
  }
}

}  // namespace
}  // namespace qbpd::service
