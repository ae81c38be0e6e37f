// The login's password rule, one check per character as typed.
#include "online/password_characters.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

TEST(PasswordCharactersTest, LettersOfTheUpperHalfPassAsOneCharacterEach) {
  EXPECT_TRUE(IsValidPassword("secret"));
  EXPECT_TRUE(IsValidPassword("P\xC3\xA4sSw\xC3\xB6rd!"));  // Pässwörd!
  EXPECT_TRUE(IsValidPassword("\xC3\x80\xC3\xBF"));  // À (192), ÿ (255)
  EXPECT_TRUE(IsValidPassword("a'\"!,-.:;?#$%&()*+/<=>@[\\]^_"));
}

TEST(PasswordCharactersTest, BlanksTabsAndCodesOfNoGroupAreRefused) {
  EXPECT_FALSE(IsValidPassword("pass word"));
  EXPECT_FALSE(IsValidPassword("pass\tword"));
  EXPECT_FALSE(IsValidPassword("pass\xC2\xA0word"));  // no-break space, 160
  EXPECT_FALSE(
      IsValidPassword("\xC2\xA3"
                      "5"));             // £, 163
  EXPECT_FALSE(IsValidPassword("a~b"));  // in no group
  EXPECT_FALSE(IsValidPassword("a\x01"));
  // Characters of the code page's codes 128 to 159 keep those codes.
  EXPECT_FALSE(
      IsValidPassword("\xE2\x82\xAC"
                      "100"));                // €, 128
  EXPECT_FALSE(IsValidPassword("\xC5\xA0"));  // Š, 138
}

TEST(PasswordCharactersTest, OtherScriptsPassButNotTheirBlanks) {
  EXPECT_TRUE(
      IsValidPassword("\xD0\xBF\xD0\xB0\xD1\x80\xD0\xBE\xD0\xBB\xD1\x8C"));
  EXPECT_TRUE(IsValidPassword("\xE5\xAF\x86\xE7\xA0\x81"));  // 密码
  EXPECT_TRUE(IsValidPassword("\xF0\x9F\x94\x91key"));       // a key sign
  EXPECT_FALSE(
      IsValidPassword("a\xE3\x80\x80"
                      "b"));  // ideographic
  EXPECT_FALSE(
      IsValidPassword("a\xE2\x80\x83"
                      "b"));  // em space
}

TEST(PasswordCharactersTest, BytesThatAreNoCharacterAreRefused) {
  EXPECT_FALSE(IsValidPassword("\xE9t\xE9"));         // Latin-1 bytes
  EXPECT_FALSE(IsValidPassword("ab\xC3"));            // cut short
  EXPECT_FALSE(IsValidPassword("\xC0\xA1"));          // overlong "!"
  EXPECT_FALSE(IsValidPassword("\xED\xA0\x80"));      // a surrogate
  EXPECT_FALSE(IsValidPassword("\xF4\x90\x80\x80"));  // beyond U+10FFFF
}

}  // namespace
}  // namespace qbpd
