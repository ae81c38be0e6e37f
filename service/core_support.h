// The small pieces that the service's operations share: the answer
// envelope, random codes, password hashes, ids, lenient numbers, the kind of
// an uploaded photo, and the whole-or-nothing file write.
#ifndef QBPD_SERVICE_CORE_SUPPORT_H_
#define QBPD_SERVICE_CORE_SUPPORT_H_

#include "service/service_core.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qbpd::service {

inline constexpr const char* kFailedCode = "9999";
inline constexpr const char* kSessionCode = "1001";
// Too many failed logins for the account or from the address.
inline constexpr const char* kThrottledCode = "2022";
inline constexpr std::size_t kFileNameBytes = 12;
inline constexpr int kMaxQuantity = 9999;

// The envelope of a success, holding `outputs`.
nlohmann::json Ok(nlohmann::json outputs = nlohmann::json::object());

// `bytes` random bytes as lower-case hex.
std::string RandomHex(std::size_t bytes);

std::string HashPassword(const std::string& password);
bool PasswordMatches(const std::string& hash, const std::string& password);

// A whole number of 0 or more, or nullopt.
std::optional<std::int64_t> ParseId(const std::string& text);
// A photo's id ("P" and its number), or nullopt.
std::optional<std::int64_t> ParseImageId(const std::string& text);
std::string ImageId(std::int64_t id);

// Lenient whole quantity: leading digits, 0 when none, capped.
int ParseQuantity(const std::string& text);
// A decimal amount; 0 when the text is none.
double ParseAmount(const std::string& text);

struct PhotoType {
  const char* extension;
  const char* mime;
};
// The kind of a photo whose header (the JPEG frame, the PNG image header,
// the TIFF directory, the bitmap's info header) reads whole and makes
// sense, or nullopt.
std::optional<PhotoType> DetectPhotoType(const std::string& content);

// Writes a file completely or not at all.
void WriteFileAtomically(const std::filesystem::path& path,
                         const std::string& content);

std::string Join(const std::vector<std::string>& items, const char* glue);

// `text` with every byte that is not part of well-formed UTF-8 replaced by
// U+FFFD, as a browser shows it: names from a client's URL may be in any
// encoding, and a JSON answer and the PostgreSQL store take UTF-8 only.
std::string ValidUtf8(const std::string& text);

// Whether `code` could be one the service gave out (a session code, a
// share's token): printable ASCII, nothing else. Any other is no one's.
bool IsPlainCode(const std::string& code);

// The page for a request without a live session.
PageResult Refused();

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_CORE_SUPPORT_H_
