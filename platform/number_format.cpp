#include "platform/number_format.h"

#include <climits>
#include <langinfo.h>
#include <locale.h>

namespace qbpd {

NumberFormat SystemNumberFormat() {
  NumberFormat format;
  format.decimal_sign = ".";
  format.thousands_sign.clear();
  format.grouping.clear();
  locale_t locale = newlocale(LC_NUMERIC_MASK, "", static_cast<locale_t>(0));
  if (locale == static_cast<locale_t>(0)) {
    return format;
  }
  const std::string decimal = nl_langinfo_l(RADIXCHAR, locale);
  if (!decimal.empty()) {
    format.decimal_sign = decimal;
  }
  format.thousands_sign = nl_langinfo_l(THOUSEP, locale);
  // The C library's sizes end at a 0 (the last one repeats); a CHAR_MAX
  // among them (no further grouping) is kept as it stands.
  for (const char* size = nl_langinfo_l(GROUPING, locale); *size > 0; ++size) {
    format.grouping.push_back(*size);
    if (*size == CHAR_MAX) {
      break;
    }
  }
  if (format.thousands_sign.empty() || format.thousands_sign == decimal) {
    format.grouping.clear();
  }
  if (format.grouping.empty()) {
    format.thousands_sign.clear();
  }
  freelocale(locale);
  return format;
}

}  // namespace qbpd
