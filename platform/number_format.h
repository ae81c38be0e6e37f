#ifndef QBPD_PLATFORM_NUMBER_FORMAT_H_
#define QBPD_PLATFORM_NUMBER_FORMAT_H_

#include <string>

namespace qbpd {

// How the user's locale writes numbers: the decimal sign, the sign between
// groups of digits and the sizes of those groups. The default is the
// program's own reading ("1,234.50"), which scripts and tests rely on.
struct NumberFormat {
  std::string decimal_sign = ".";
  // Empty: digits are not grouped.
  std::string thousands_sign = ",";
  // The sizes of the groups from the decimal sign leftwards, one byte each,
  // as the C library gives them: the last size repeats, and a size of
  // CHAR_MAX groups no further. Empty: no grouping. "\3" is thousands,
  // "\3\2" the Indian lakh and crore.
  std::string grouping = "\3";
};

// The number format of the locale the environment names (LC_ALL, then
// LC_NUMERIC, then LANG), read without changing the process's own locale.
// A locale that isn't installed, or none named, gives the C locale's format:
// "." and no grouping.
NumberFormat SystemNumberFormat();

}  // namespace qbpd

#endif  // QBPD_PLATFORM_NUMBER_FORMAT_H_
