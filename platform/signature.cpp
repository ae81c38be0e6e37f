#include "platform/signature.h"

#include <sodium.h>

#include <fstream>
#include <iterator>
#include <optional>
#include <vector>

namespace qbpd {
namespace {

// A key or signature file holds one line of base64; anything much longer is
// not one.
constexpr std::streamsize kMaxKeyFileBytes = 4096;

bool SodiumReady() {
  // sodium_init is safe to call again; it answers 1 when already done.
  return sodium_init() >= 0;
}

std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) {
    return std::string();
  }
  const auto last = text.find_last_not_of(" \t\r\n");
  return text.substr(first, last - first + 1);
}

std::string ToBase64(const unsigned char* bytes, size_t size) {
  std::string out(
      sodium_base64_encoded_len(size, sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(out.data(), out.size(), bytes, size,
                    sodium_base64_VARIANT_ORIGINAL);
  out.resize(out.size() - 1);  // the encoder's closing NUL
  return out;
}

// The bytes of base64 `text` when it decodes to exactly `size` bytes.
std::optional<std::vector<unsigned char>> FromBase64(const std::string& text,
                                                     size_t size) {
  const std::string trimmed = Trimmed(text);
  std::vector<unsigned char> bytes(size + 1);
  size_t length = 0;
  const char* end = nullptr;
  if (sodium_base642bin(bytes.data(), bytes.size(), trimmed.data(),
                        trimmed.size(), nullptr, &length, &end,
                        sodium_base64_VARIANT_ORIGINAL) != 0 ||
      end != trimmed.data() + trimmed.size() || length != size) {
    return std::nullopt;
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace

SigningKeyPair MakeSigningKeyPair() {
  SigningKeyPair pair;
  if (!SodiumReady()) {
    return pair;
  }
  unsigned char pk[crypto_sign_PUBLICKEYBYTES];
  unsigned char sk[crypto_sign_SECRETKEYBYTES];
  crypto_sign_keypair(pk, sk);
  pair.public_key = ToBase64(pk, sizeof pk);
  pair.secret_key = ToBase64(sk, sizeof sk);
  sodium_memzero(sk, sizeof sk);
  return pair;
}

std::string SignBytes(const std::string& data, const std::string& secret_key) {
  auto sk = FromBase64(secret_key, crypto_sign_SECRETKEYBYTES);
  if (!sk || !SodiumReady()) {
    return std::string();
  }
  unsigned char signature[crypto_sign_BYTES];
  crypto_sign_detached(signature, nullptr,
                       reinterpret_cast<const unsigned char*>(data.data()),
                       data.size(), sk->data());
  sodium_memzero(sk->data(), sk->size());
  return ToBase64(signature, sizeof signature);
}

std::string PublicKeyOf(const std::string& secret_key) {
  auto sk = FromBase64(secret_key, crypto_sign_SECRETKEYBYTES);
  if (!sk || !SodiumReady()) {
    return std::string();
  }
  unsigned char pk[crypto_sign_PUBLICKEYBYTES];
  crypto_sign_ed25519_sk_to_pk(pk, sk->data());
  sodium_memzero(sk->data(), sk->size());
  return ToBase64(pk, sizeof pk);
}

std::string VerifyFileSignature(const std::string& path,
                                const std::string& signature,
                                const std::string& public_key) {
  if (Trimmed(public_key).empty()) {
    return "No key to check the download with is installed.";
  }
  auto pk = FromBase64(public_key, crypto_sign_PUBLICKEYBYTES);
  if (!pk) {
    return "The key to check the download with can't be read.";
  }
  auto sig = FromBase64(signature, crypto_sign_BYTES);
  if (!sig) {
    return "The download's signature is missing or can't be read.";
  }
  if (!SodiumReady()) {
    return "The signature check could not start.";
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    return "The download can't be read.";
  }
  // The whole file is one message to the signature; upgrades are small.
  const std::string data(std::istreambuf_iterator<char>(in), {});
  if (in.bad()) {
    return "The download can't be read.";
  }
  if (crypto_sign_verify_detached(
          sig->data(), reinterpret_cast<const unsigned char*>(data.data()),
          data.size(), pk->data()) != 0) {
    return "The download doesn't match its signature.";
  }
  return std::string();
}

bool ReadKeyFile(const std::string& path, std::string& text) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    return false;
  }
  std::string data(kMaxKeyFileBytes + 1, '\0');
  in.read(data.data(), kMaxKeyFileBytes + 1);
  if (in.bad() || in.gcount() > kMaxKeyFileBytes) {
    return false;
  }
  data.resize(static_cast<size_t>(in.gcount()));
  text = std::move(data);
  return true;
}

}  // namespace qbpd
