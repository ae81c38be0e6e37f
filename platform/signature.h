#ifndef QBPD_PLATFORM_SIGNATURE_H_
#define QBPD_PLATFORM_SIGNATURE_H_

#include <string>

namespace qbpd {

// Detached Ed25519 signatures of files, as the upgrade check uses them. Keys
// and signatures travel as one line of standard base64 text (a public key
// of 32 bytes, a secret key of 64, a signature of 64); blanks and line ends
// around the text are ignored, anything else that isn't base64 is refused.

// A new key pair, each half as base64 text.
struct SigningKeyPair {
  std::string public_key;
  std::string secret_key;
};
SigningKeyPair MakeSigningKeyPair();

// Signs `data` with `secret_key`; "" when the key can't be read.
std::string SignBytes(const std::string& data, const std::string& secret_key);

// The public half of a secret key; "" when the key can't be read.
std::string PublicKeyOf(const std::string& secret_key);

// Checks that `signature` is a signature of the whole file at `path` made
// with the secret half of `public_key`. Returns "" when it is, otherwise a
// sentence saying why not (no key, a key or signature that can't be read, a
// file that can't be read, or a signature that doesn't match: a changed or
// cut file). Never throws.
std::string VerifyFileSignature(const std::string& path,
                                const std::string& signature,
                                const std::string& public_key);

// Reads a small text file (a key or a signature) whole; false when it can't
// be read or is larger than a key file can be.
bool ReadKeyFile(const std::string& path, std::string& text);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_SIGNATURE_H_
