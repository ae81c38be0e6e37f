// qbpd-sign: makes the key pair that upgrades are signed with, and signs or
// checks an upgrade file (its detached signature is FILE.sig).

#include "platform/signature.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kUsageError = 2;
constexpr mode_t kSecretMode = 0600;
constexpr mode_t kPublicMode = 0644;

void PrintUsage() {
  std::fprintf(stderr,
               "usage: qbpd-sign --make-key SECRET_FILE PUBLIC_FILE\n"
               "       qbpd-sign --sign SECRET_FILE FILE   (writes FILE.sig)\n"
               "       qbpd-sign --verify PUBLIC_FILE FILE (reads FILE.sig)\n");
}

// Writes `text` and a line end to a new file of `mode`; an existing file is
// never replaced, so that a key is never lost to a slip of the hand.
bool WriteNewFile(const std::string& path,
                  const std::string& text,
                  mode_t mode) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode);
  if (fd < 0) {
    std::fprintf(stderr, "qbpd-sign: cannot make %s: %s\n", path.c_str(),
                 std::strerror(errno));
    return false;
  }
  const std::string line = text + "\n";
  const bool ok = write(fd, line.data(), line.size()) ==
                      static_cast<ssize_t>(line.size()) &&
                  fsync(fd) == 0;
  if (close(fd) != 0 || !ok) {
    std::fprintf(stderr, "qbpd-sign: cannot write %s\n", path.c_str());
    unlink(path.c_str());
    return false;
  }
  return true;
}

bool ReadWhole(const std::string& path, std::string& data) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    return false;
  }
  char buffer[65536];
  size_t n = 0;
  while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
    data.append(buffer, n);
  }
  const bool ok = std::ferror(file) == 0;
  std::fclose(file);
  return ok;
}

int MakeKey(const std::string& secret_file, const std::string& public_file) {
  const qbpd::SigningKeyPair pair = qbpd::MakeSigningKeyPair();
  if (pair.secret_key.empty()) {
    std::fprintf(stderr, "qbpd-sign: no key could be made\n");
    return 1;
  }
  if (!WriteNewFile(secret_file, pair.secret_key, kSecretMode)) {
    return 1;
  }
  if (!WriteNewFile(public_file, pair.public_key, kPublicMode)) {
    unlink(secret_file.c_str());
    return 1;
  }
  std::printf("public key %s\n", pair.public_key.c_str());
  return 0;
}

int Sign(const std::string& secret_file, const std::string& file) {
  std::string secret;
  std::string data;
  if (!qbpd::ReadKeyFile(secret_file, secret)) {
    std::fprintf(stderr, "qbpd-sign: cannot read %s\n", secret_file.c_str());
    return 1;
  }
  if (!ReadWhole(file, data)) {
    std::fprintf(stderr, "qbpd-sign: cannot read %s\n", file.c_str());
    return 1;
  }
  const std::string signature = qbpd::SignBytes(data, secret);
  if (signature.empty()) {
    std::fprintf(stderr, "qbpd-sign: %s holds no secret key\n",
                 secret_file.c_str());
    return 1;
  }
  const std::string target = file + ".sig";
  // A signature of an earlier build of the file is replaced.
  unlink(target.c_str());
  return WriteNewFile(target, signature, kPublicMode) ? 0 : 1;
}

int Verify(const std::string& public_file, const std::string& file) {
  std::string key;
  std::string signature;
  if (!qbpd::ReadKeyFile(public_file, key)) {
    std::fprintf(stderr, "qbpd-sign: cannot read %s\n", public_file.c_str());
    return 1;
  }
  if (!qbpd::ReadKeyFile(file + ".sig", signature)) {
    std::fprintf(stderr, "qbpd-sign: cannot read %s.sig\n", file.c_str());
    return 1;
  }
  const std::string refusal = qbpd::VerifyFileSignature(file, signature, key);
  if (!refusal.empty()) {
    std::fprintf(stderr, "qbpd-sign: %s: %s\n", file.c_str(), refusal.c_str());
    return 1;
  }
  std::printf("%s: good signature\n", file.c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    PrintUsage();
    return kUsageError;
  }
  const std::string_view command = argv[1];
  if (command == "--make-key") {
    return MakeKey(argv[2], argv[3]);
  }
  if (command == "--sign") {
    return Sign(argv[2], argv[3]);
  }
  if (command == "--verify") {
    return Verify(argv[2], argv[3]);
  }
  PrintUsage();
  return kUsageError;
}
