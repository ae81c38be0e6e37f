#ifndef QBPD_PRESENTATION_NAME_TEXT_H_
#define QBPD_PRESENTATION_NAME_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace qbpd {

// A photo's base name as a label shows it: "&" doubled (a label would take
// a single one for an access key). When that text is longer than `limit`
// characters, the first `limit` characters of the name, "&" doubled, and
// "...". Characters are counted whole (UTF-8), never cut in the middle.
std::string ShortenedName(std::string_view base_name, std::size_t limit);

// A date and time of the user's time zone as the presentation dialogs show
// it: "mmmm dd, yyyy" and the time, "November 05, 2026 9:07:03 PM".
std::string LongDateTime(long long seconds_since_epoch);
// The same for a date and time that EXIF writes, "YYYY:MM:DD HH:MM:SS"
// (no zone: the camera's clock); "" when it isn't one.
std::string LongDateTimeOfExif(std::string_view exif_date);

}  // namespace qbpd

#endif  // QBPD_PRESENTATION_NAME_TEXT_H_
