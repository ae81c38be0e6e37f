// Detached signatures of upgrade files: what is accepted and every way a
// download or its signature can be wrong.
#include "platform/signature.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <string>

namespace qbpd {
namespace {

using testing::TempDir;

constexpr char kScript[] = "#!/bin/sh\necho 'Quillbay Picture Desk 9.0'\n";

TEST(SignatureTest, AFileSignedWithTheSecretHalfIsGood) {
  TempDir dir;
  const SigningKeyPair keys = MakeSigningKeyPair();
  ASSERT_FALSE(keys.public_key.empty());
  EXPECT_EQ(PublicKeyOf(keys.secret_key), keys.public_key);
  const auto file = dir.WriteFile("upgrade1.exe", kScript);
  const std::string signature = SignBytes(kScript, keys.secret_key);
  EXPECT_EQ(VerifyFileSignature(file.string(), signature, keys.public_key), "");
  // Key and signature files end in a line end, which is no part of them.
  EXPECT_EQ(VerifyFileSignature(file.string(), signature + "\n",
                                "  " + keys.public_key + "\r\n"),
            "");
  // Two key pairs are never the same.
  EXPECT_NE(MakeSigningKeyPair().public_key, keys.public_key);
}

TEST(SignatureTest, EveryWrongDownloadOrSignatureIsRefused) {
  TempDir dir;
  const SigningKeyPair keys = MakeSigningKeyPair();
  const SigningKeyPair other = MakeSigningKeyPair();
  const std::string script = kScript;
  const std::string good = SignBytes(script, keys.secret_key);
  std::string flipped = good;
  flipped[4] = flipped[4] == 'A' ? 'B' : 'A';
  struct Case {
    const char* what;
    std::string file;
    std::string signature;
    std::string key;
    const char* refusal;
  };
  const Case cases[] = {
      {"one byte changed", "#!/bin/sh\necho 'Quillbay Picture Desk 9.1'\n",
       good, keys.public_key, "The download doesn't match its signature."},
      {"cut short", script.substr(0, script.size() - 1), good, keys.public_key,
       "The download doesn't match its signature."},
      {"longer", script + "rm -rf ~\n", good, keys.public_key,
       "The download doesn't match its signature."},
      {"empty file", "", good, keys.public_key,
       "The download doesn't match its signature."},
      {"signed with another key", script, SignBytes(script, other.secret_key),
       keys.public_key, "The download doesn't match its signature."},
      {"signature changed", script, flipped, keys.public_key,
       "The download doesn't match its signature."},
      {"no signature", script, "", keys.public_key,
       "The download's signature is missing or can't be read."},
      {"signature cut", script, good.substr(0, 40), keys.public_key,
       "The download's signature is missing or can't be read."},
      {"signature not base64", script, "<html>404</html>", keys.public_key,
       "The download's signature is missing or can't be read."},
      {"no key installed", script, good, "",
       "No key to check the download with is installed."},
      {"the secret half as key", script, good, keys.secret_key,
       "The key to check the download with can't be read."},
  };
  for (const Case& c : cases) {
    const auto file = dir.WriteFile("upgrade1.exe", c.file);
    EXPECT_EQ(VerifyFileSignature(file.string(), c.signature, c.key), c.refusal)
        << c.what;
  }
  EXPECT_EQ(
      VerifyFileSignature((dir / "missing").string(), good, keys.public_key),
      "The download can't be read.");
}

TEST(SignatureTest, KeysThatCantBeReadSignNothing) {
  EXPECT_EQ(SignBytes("data", ""), "");
  EXPECT_EQ(SignBytes("data", MakeSigningKeyPair().public_key), "");
  EXPECT_EQ(PublicKeyOf("not a key"), "");
}

TEST(SignatureTest, KeyFilesAreSmall) {
  TempDir dir;
  std::string text;
  const auto key = dir.WriteFile("key.pub", "abc\n");
  ASSERT_TRUE(ReadKeyFile(key.string(), text));
  EXPECT_EQ(text, "abc\n");
  const auto big = dir.WriteFile("big", std::string(5000, 'A'));
  EXPECT_FALSE(ReadKeyFile(big.string(), text));
  EXPECT_FALSE(ReadKeyFile((dir / "missing").string(), text));
}

}  // namespace
}  // namespace qbpd
