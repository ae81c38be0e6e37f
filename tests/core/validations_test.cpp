#include "core/validations.h"

#include <gtest/gtest.h>

#include <string>

namespace qbpd {
namespace {

// What the e-mail rule answers for an address typed with an ordinary key.
struct EmailAnswer {
  bool valid;
  int key;
  std::string message;
};

EmailAnswer CheckEmail(const std::string& address) {
  int key = 'x';
  std::string message = "untouched";
  bool valid = IsValidEmail(key, address, message);
  return {valid, key, message};
}

TEST(EmailTest, AddressesAndTheMessageEachFailureShows) {
  struct Case {
    std::string address;
    std::string message;  // "" for a valid address
  };
  const Case cases[] = {
      {"a@b.c", ""},
      {"first.last_1@mail-host.example.org", ""},
      // An address must begin with something other than "@".
      {"@b.c", "Enter a valid email address starting aplhabet"},
      {"a b@c.d", "Email address cannot have spaces"},
      // A character outside letters, digits, "-", "_", "@" and ".".
      {"a+b@c.d", "Enter a valid email address "},
      {"a@b@c.d", "Enter a valid email address"},
      {"ab.c", "Enter a valid email address"},
      {"a@bc", "Enter a valid email address"},
      // The last "." needs a character between it and the "@".
      {"a@.c", "Enter a valid email address"},
      {"a.b@c", "Enter a valid email address"},
      {"a@b.", "Enter a valid email address"},
      // Hyphens next to "@" or "." get the other spelling.
      {"a-@b.c", "Enter a valid Email address"},
      {"a@-b.c", "Enter a valid Email address"},
      {"a@b-.c", "Enter a valid Email address"},
      {"a.-b@c.d", "Enter a valid Email address"},
  };
  for (const Case& c : cases) {
    EmailAnswer answer = CheckEmail(c.address);
    if (c.message.empty()) {
      EXPECT_TRUE(answer.valid) << c.address;
      EXPECT_EQ(answer.key, 'x') << c.address;
      EXPECT_EQ(answer.message, "untouched") << c.address;
    } else {
      EXPECT_FALSE(answer.valid) << c.address;
      EXPECT_EQ(answer.key, 0) << c.address;
      EXPECT_EQ(answer.message, c.message) << c.address;
    }
  }
}

TEST(EmailTest, EditKeysPassWhateverTheAddress) {
  for (int edit_key : {8, 46, 13, 3, 22, 24, 48, 26, 45}) {
    int key = edit_key;
    std::string message;
    EXPECT_TRUE(IsValidEmail(key, "@ not an address", message)) << edit_key;
    EXPECT_EQ(key, edit_key);
    EXPECT_TRUE(message.empty());
  }
  // Any other key is judged with the address.
  int key = 'a';
  std::string message;
  EXPECT_FALSE(IsValidEmail(key, "@", message));
  EXPECT_EQ(key, 0);
}

TEST(CardNumberTest, Shapes) {
  struct Case {
    const char* text;
    bool valid;
  };
  const Case cases[] = {
      {"1234567890123456", true},
      {"123456789012345", true},
      {"12345678901234", false},
      {"12345678901234567", false},
      {"12345678901234a6", false},
      {"", false},
      {"1234 5678 9012 3456", true},
      {"1234-5678-9012-3456", true},
      {"1234-567890-12345", true},
      {"1234 567890 12345", true},
      // Two groups of four digits are too few.
      {"1234 5678", false},
      {"1234 5678 9012 345", false},
      {"1234 5678 9012 34567", false},
      // The three groups must come as 4, 6, 5.
      {"123456-1234-12345", false},
      {"1234-56789a-12345", false},
      // Blanks win: the hyphen stays inside a group.
      {"1234-5678 9012 3456", false},
      {"1234  5678 9012 3456", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IsValidCardNumber(c.text), c.valid) << '"' << c.text << '"';
  }
}

TEST(UserIdTest, Shapes) {
  EXPECT_TRUE(IsValidUserId("jo@example.com"));
  EXPECT_FALSE(IsValidUserId("jo@examplecom"));
  EXPECT_FALSE(IsValidUserId("@example.com"));
  EXPECT_FALSE(IsValidUserId("jo@"));
  EXPECT_FALSE(IsValidUserId("jo@a@b.com"));
  EXPECT_FALSE(IsValidUserId("jo.example.com"));
}

// Keys a flag may refuse, by group.
struct KeyGroup {
  const char* name;
  std::string keys;
  int flag;  // which of the four flags refuses them
};

const KeyGroup kGroups[] = {
    {"quotes", "'\"", 0},
    {"punctuation", "!,-.:;?", 1},
    {"symbols", "#$%&()*+/<=>@[\\]^_", 2},
    {"blanks", " \t", 3},
};

TEST(KeyFilterTest, EachFlagRefusesItsGroupAndNoOther) {
  for (int flag = 0; flag < 4; ++flag) {
    std::string flags[4];
    flags[flag] = "Y";
    for (const KeyGroup& group : kGroups) {
      for (char c : group.keys) {
        const int key = static_cast<unsigned char>(c);
        const int expected = group.flag == flag ? 0 : key;
        EXPECT_EQ(IsValidKey(key, flags[0], flags[1], flags[2], flags[3]),
                  expected)
            << "flag " << flag << ", " << group.name << " key " << key;
      }
    }
  }
}

TEST(KeyFilterTest, LettersDigitsAndBackspacePassWithEveryFlagSet) {
  std::string passing = "azAZ09";
  passing += static_cast<char>(8);
  for (char c : passing) {
    EXPECT_EQ(IsValidKey(c, "Y", "Y", "Y", "Y"), c);
  }
  for (int key : {192, 208, 215, 222, 223, 247, 255}) {
    EXPECT_EQ(IsValidKey(key, "Y", "Y", "Y", "Y"), key);
  }
  // A key of no group is never refused.
  EXPECT_EQ(IsValidKey('~', "Y", "Y", "Y", "Y"), '~');
  EXPECT_EQ(IsValidKey('`', "Y", "Y", "Y", "Y"), '`');
}

TEST(CharacterFilterTest, AKeyIsValidOnlyInAGroupAskedFor) {
  CharacterGroups letters;
  letters.letters = true;
  CharacterGroups symbols;
  symbols.symbols = true;
  CharacterGroups separators;
  separators.separators = true;
  struct Case {
    CharacterGroups groups;
    std::string valid;
    std::string invalid;
  };
  const Case cases[] = {
      {CharacterGroups{}, "\b", "a5 .@"},
      {letters, "qZ\xe9\b", "7 .@"},
      {symbols, "@#_", ".a "},
      {separators, ".,\t\n@", " &#-a"},
  };
  for (const Case& c : cases) {
    for (char key : c.valid) {
      EXPECT_TRUE(IsValidCharacter(static_cast<unsigned char>(key), c.groups))
          << static_cast<int>(static_cast<unsigned char>(key));
    }
    for (char key : c.invalid) {
      EXPECT_FALSE(IsValidCharacter(static_cast<unsigned char>(key), c.groups))
          << static_cast<int>(static_cast<unsigned char>(key));
    }
  }
}

TEST(FileNameRuleTest, TheNineCharactersAreRefusedAsKeysAndInText) {
  const std::string refused = "/\\|<>:\"?*";
  ASSERT_EQ(refused.size(), 9u);
  for (char c : refused) {
    EXPECT_FALSE(IsValidFileNameKey(c)) << c;
    EXPECT_FALSE(IsValidFileNameText(std::string("ab") + c + "cd")) << c;
    EXPECT_FALSE(IsValidFileNameText(std::string(1, c))) << c;
  }
  for (char c : std::string("aZ09 .-_'()&,;!~")) {
    EXPECT_TRUE(IsValidFileNameKey(c)) << c;
  }
  EXPECT_TRUE(IsValidFileNameKey(233));
  EXPECT_TRUE(IsValidFileNameText("Holiday 2024 (beach), day 1.v2"));
  EXPECT_TRUE(IsValidFileNameText("Été à Zürich"));
  EXPECT_TRUE(IsValidFileNameText(""));
  EXPECT_EQ(kFileNameRuleMessage,
            "Please enter valid characters for file name");
}

}  // namespace
}  // namespace qbpd
