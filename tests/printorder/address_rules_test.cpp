#include "printorder/address_rules.h"

#include <gtest/gtest.h>

#include <string>

namespace qbpd {
namespace {

TEST(StateList, KeepsTheServiceOrderWithItsOddities) {
  const auto states = StateList();
  ASSERT_EQ(states.size(), 65u);
  EXPECT_EQ(states[0], "---");
  EXPECT_EQ(states[17], "KS");
  EXPECT_EQ(states[18], "KA");  // behind KS
  EXPECT_EQ(states[52], "---");
  EXPECT_EQ(states[56], "MS");  // the second MS among the territories
  EXPECT_EQ(states[61], "---");
  EXPECT_EQ(states[64], "AP");
  EXPECT_EQ(FindState("MS"), 25);  // the first one
  EXPECT_EQ(FindState("CA"), 5);
  EXPECT_EQ(FindState("ZZ"), -1);
  EXPECT_EQ(FindState("---"), -1);  // a separator is no state
  EXPECT_EQ(FindState(""), -1);
}

TEST(Zip, BillingStepForms) {
  struct Case {
    const char* zip;
    bool valid;
  } cases[] = {
      {"12345", true},        // five digits
      {"12345-6789", true},   // five, "-", four
      {"1234-56789", true},   // four, "-", five
      {"1234567890", false},  // ten digits, no "-"
      {"123456", false},      // six digits
      {"1234", false},        //
      {"", false},            // empty fails
      {"12a45", false},       // not numeric
      {"12345-67a9", false},  //
      {"-123456789", false},  // nothing before the "-"
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IsValidZip(c.zip), c.valid) << c.zip;
  }
}

TEST(Zip, AddressDialogForms) {
  EXPECT_TRUE(IsValidDialogZip("12345"));
  EXPECT_TRUE(IsValidDialogZip("12345-6789"));
  EXPECT_FALSE(IsValidDialogZip("123456"));  // six digits fail
  EXPECT_FALSE(IsValidDialogZip("1234567890"));
  EXPECT_FALSE(IsValidDialogZip("+1234"));  // digits only here
  EXPECT_FALSE(IsValidDialogZip(""));
}

TEST(Street, BillingStepLetsTheCommaPassAndRefusesQuotes) {
  EXPECT_TRUE(IsValidStreetLine("12 Elm St., Apt #4"));
  EXPECT_TRUE(IsValidStreetLine(""));
  EXPECT_TRUE(
      IsValidStreetLine("Stra\xC3\x9F"
                        "e 9"));  // accented letter
  EXPECT_FALSE(IsValidStreetLine("12 \"Elm\" St"));
  EXPECT_FALSE(IsValidStreetLine("O'Hara Rd"));
  EXPECT_FALSE(IsValidStreetLine("\xFF\xFE"));  // no UTF-8
}

TEST(Street, AddressDialogRefusesTheComma) {
  EXPECT_TRUE(IsValidDialogStreetLine("12 Elm St. #4"));
  EXPECT_TRUE(IsValidDialogStreetLine(""));
  EXPECT_FALSE(IsValidDialogStreetLine("12 Elm St, Apt 4"));
  EXPECT_FALSE(IsValidDialogStreetLine("12 \"Elm\""));
}

TEST(City, LettersDigitsAndBlanksOnly) {
  EXPECT_TRUE(IsValidCity("San Jos\xC3\xA9"));
  EXPECT_TRUE(IsValidCity("Springfield 2"));
  EXPECT_FALSE(IsValidCity(""));
  EXPECT_FALSE(IsValidCity("St. Paul"));
  EXPECT_FALSE(IsValidCity("Winston-Salem"));
}

TEST(State, DialogRefusesSeparators) {
  EXPECT_TRUE(IsValidDialogState("CA"));
  EXPECT_FALSE(IsValidDialogState("---"));
  EXPECT_FALSE(IsValidDialogState("--"));
  EXPECT_FALSE(IsValidDialogState(""));
}

TEST(Names, CardAndPerson) {
  EXPECT_TRUE(IsValidCardName("Ann-Marie O'Neil Jr."));
  EXPECT_FALSE(IsValidCardName(""));
  EXPECT_FALSE(IsValidCardName("Ann, Bob"));
  EXPECT_FALSE(IsValidCardName("Ann@home"));
  EXPECT_TRUE(IsValidPersonName("O'Neil-Smith"));
  EXPECT_FALSE(IsValidPersonName(""));
  // "," passes as punctuation though it is also a separator.
  EXPECT_TRUE(IsValidPersonName("Ann, Bob"));
  EXPECT_FALSE(IsValidPersonName("Ann~Bob"));  // in no group
}

TEST(Phone, DigitsColonAndDash) {
  EXPECT_TRUE(IsValidPhone(""));
  EXPECT_TRUE(IsValidPhone("555-1234"));
  EXPECT_FALSE(IsValidPhone("(555) 1234"));
}

TEST(Numeric, TheProgramsIsNumeric) {
  EXPECT_TRUE(IsNumericText("12"));
  EXPECT_TRUE(IsNumericText(" -1.5 "));
  EXPECT_TRUE(IsNumericText("1e3"));
  EXPECT_FALSE(IsNumericText(""));
  EXPECT_FALSE(IsNumericText("."));
  EXPECT_FALSE(IsNumericText("1.2.3"));
  EXPECT_FALSE(IsNumericText("12a"));
}

TEST(KeyFilters, PassOrDrop) {
  EXPECT_EQ(ZipKey('7'), '7');
  EXPECT_EQ(ZipKey('-'), '-');
  EXPECT_EQ(ZipKey('a'), 0);
  EXPECT_EQ(ZipKey(8), 8);
  EXPECT_EQ(DigitKey('-'), 0);
  EXPECT_EQ(CardNumberKey(' '), ' ');
  EXPECT_EQ(CardNumberKey('.'), '.');
  EXPECT_EQ(CardNumberKey(22), 22);  // paste
  EXPECT_EQ(CardNumberKey('x'), 0);
}

}  // namespace
}  // namespace qbpd
