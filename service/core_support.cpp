#include "service/core_support.h"

#include "platform/image_header.h"
#include "service/checks.h"
#include "service/html.h"

#include <sodium.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd::service {

using nlohmann::json;

json Ok(json outputs) {
  outputs["ok"] = true;
  outputs["errCode"] = "";
  outputs["errText"] = "";
  return outputs;
}

std::string RandomHex(size_t bytes) {
  std::vector<unsigned char> raw(bytes);
  randombytes_buf(raw.data(), raw.size());
  std::string hex(bytes * 2 + 1, '\0');
  sodium_bin2hex(hex.data(), hex.size(), raw.data(), raw.size());
  hex.pop_back();
  return hex;
}

std::string HashPassword(const std::string& password) {
  char hash[crypto_pwhash_STRBYTES];
  if (crypto_pwhash_str(hash, password.c_str(), password.size(),
                        crypto_pwhash_OPSLIMIT_INTERACTIVE,
                        crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0) {
    throw std::runtime_error("password hashing ran out of memory");
  }
  return hash;
}

bool PasswordMatches(const std::string& hash, const std::string& password) {
  return crypto_pwhash_str_verify(hash.c_str(), password.c_str(),
                                  password.size()) == 0;
}

// A whole number of 0 or more, or nullopt.
std::optional<std::int64_t> ParseId(const std::string& text) {
  if (text.empty() || text.size() > 15) {
    return std::nullopt;
  }
  std::int64_t value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') {
      return std::nullopt;
    }
    value = value * 10 + (c - '0');
  }
  return value;
}

std::optional<std::int64_t> ParseImageId(const std::string& text) {
  if (text.size() < 2 || text.front() != 'P') {
    return std::nullopt;
  }
  return ParseId(text.substr(1));
}

std::string ImageId(std::int64_t id) {
  return "P" + std::to_string(id);
}

// Lenient whole quantity: leading digits, 0 when none, capped.
int ParseQuantity(const std::string& text) {
  const std::string trimmed = Trim(text);
  std::int64_t value = 0;
  for (char c : trimmed) {
    if (c < '0' || c > '9') {
      break;
    }
    value = std::min<std::int64_t>(value * 10 + (c - '0'), kMaxQuantity);
  }
  return static_cast<int>(value);
}

double ParseAmount(const std::string& text) {
  try {
    return std::stod(text);
  } catch (const std::exception&) {
    return 0;
  }
}

std::optional<PhotoType> DetectPhotoType(const std::string& content) {
  ImageHeader header;
  if (!ParseImageHeader(content, header)) {
    return std::nullopt;
  }
  switch (header.kind) {
    case PhotoKind::kJpeg:
      return PhotoType{"jpg", "image/jpeg"};
    case PhotoKind::kPng:
      return PhotoType{"png", "image/png"};
    case PhotoKind::kBmp:
      return PhotoType{"bmp", "image/bmp"};
    case PhotoKind::kTiff:
      return PhotoType{"tif", "image/tiff"};
    case PhotoKind::kOther:
      break;
  }
  return std::nullopt;
}

// Writes a file completely or not at all.
void WriteFileAtomically(const std::filesystem::path& path,
                         const std::string& content) {
  const auto temp = path.string() + ".part";
  // The photo reaches the disk before its name does, so that a crash or a
  // power cut leaves the old state or the whole photo, never half of it.
  const int fd =
      open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC,
           S_IRUSR | S_IWUSR);
  // A file left over from an earlier attempt keeps its own mode; narrow it.
  bool ok = fd >= 0 && fchmod(fd, S_IRUSR | S_IWUSR) == 0;
  size_t written = 0;
  while (ok && written < content.size()) {
    const ssize_t n =
        write(fd, content.data() + written, content.size() - written);
    if (n < 0 && errno == EINTR) {
      continue;
    }
    ok = n > 0;
    written += ok ? static_cast<size_t>(n) : 0;
  }
  ok = ok && fsync(fd) == 0;
  if (fd >= 0) {
    ok = close(fd) == 0 && ok;
  }
  if (!ok) {
    std::error_code ignored;
    std::filesystem::remove(temp, ignored);
    throw std::runtime_error("cannot write " + temp);
  }
  std::filesystem::rename(temp, path);
}

std::string ValidUtf8(const std::string& text) {
  constexpr char kReplacement[] = "\xEF\xBF\xBD";
  std::string out;
  out.reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    const auto lead = static_cast<unsigned char>(text[i]);
    // The length of the character that `lead` starts, and the range its
    // second byte must be in (narrower after some leads, so that no
    // character is written longer than it must be, and no surrogate or
    // code point beyond U+10FFFF is).
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead < 0x80) {
      length = 1;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      low = lead == 0xE0 ? 0xA0 : 0x80;
      high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      low = lead == 0xF0 ? 0x90 : 0x80;
      high = lead == 0xF4 ? 0x8F : 0xBF;
    }
    bool whole = length > 0 && i + length <= text.size();
    for (std::size_t k = 1; whole && k < length; ++k) {
      const auto next = static_cast<unsigned char>(text[i + k]);
      whole =
          k == 1 ? next >= low && next <= high : next >= 0x80 && next <= 0xBF;
    }
    if (whole) {
      out.append(text, i, length);
      i += length;
    } else {
      out += kReplacement;
      ++i;
    }
  }
  return out;
}

bool IsPlainCode(const std::string& code) {
  return !code.empty() && std::all_of(code.begin(), code.end(), [](char c) {
    return c > ' ' && c < 0x7F;
  });
}

std::string Join(const std::vector<std::string>& items, const char* glue) {
  std::string out;
  for (const auto& item : items) {
    if (!out.empty()) {
      out += glue;
    }
    out += item;
  }
  return out;
}

PageResult Refused() {
  return {403, HtmlPage("Please log in again.",
                        "<p>This page needs a valid session. Please log in "
                        "again from Quillbay Picture Desk.</p>")};
}

}  // namespace qbpd::service
