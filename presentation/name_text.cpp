#include "presentation/name_text.h"

#include "core/quil_mod.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace qbpd {
namespace {

constexpr std::array<const char*, 12> kMonths = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};

std::string Format(int year,
                   int month,
                   int day,
                   int hour,
                   int minute,
                   int second) {
  const int hour12 = hour % 12 == 0 ? 12 : hour % 12;
  char text[96];
  std::snprintf(text, sizeof text, "%s %02d, %04d %d:%02d:%02d %s",
                kMonths[static_cast<std::size_t>(month)], day, year, hour12,
                minute, second, hour < 12 ? "AM" : "PM");
  return text;
}

}  // namespace

std::string ShortenedName(std::string_view base_name, std::size_t limit) {
  const std::string doubled = DoubleAmpersands(base_name);
  if (CharacterCount(doubled) <= limit) {
    return doubled;
  }
  return DoubleAmpersands(FirstCharacters(base_name, limit)) + "...";
}

std::string LongDateTime(long long seconds_since_epoch) {
  const std::time_t when = static_cast<std::time_t>(seconds_since_epoch);
  std::tm local{};
  if (::localtime_r(&when, &local) == nullptr) {
    return {};
  }
  return Format(local.tm_year + 1900, local.tm_mon, local.tm_mday,
                local.tm_hour, local.tm_min, local.tm_sec);
}

std::string LongDateTimeOfExif(std::string_view exif_date) {
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  const std::string text(exif_date);
  if (text.size() < 19 ||
      std::sscanf(text.c_str(), "%4d:%2d:%2d %2d:%2d:%2d", &year, &month, &day,
                  &hour, &minute, &second) != 6 ||
      month < 1 || month > 12 || day < 1 || day > 31 || hour < 0 || hour > 23 ||
      minute < 0 || second < 0 || minute > 59 || second > 60 || year < 1) {
    return {};
  }
  return Format(year, month - 1, day, hour, minute, second);
}

}  // namespace qbpd
