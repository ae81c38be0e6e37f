#include "online/registration_rules.h"

namespace qbpd {
namespace {

constexpr int kBackspace = 8;

}  // namespace

bool CardExpired(int month, int year, int this_month, int this_year) {
  return year < this_year || (year == this_year && month < this_month);
}

int RegistrationCardKey(int key) {
  const bool digit = key >= '0' && key <= '9';
  return digit || key == kBackspace || key == '-' || key == ' ' ? key : 0;
}

}  // namespace qbpd
