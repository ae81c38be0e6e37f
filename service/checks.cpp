#include "service/checks.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

namespace qbpd::service {

namespace {

constexpr size_t kMaxNameLength = 60;
constexpr size_t kMaxEmailLength = 120;
constexpr size_t kMaxPasswordLength = 128;
constexpr size_t kMinPasswordLength = 5;
constexpr size_t kMaxStreetLength = 100;
constexpr int kMaxExpiryYears = 20;

constexpr std::array<std::string_view, 64> kStates = {
    "AL", "AK", "AZ", "AR", "CA", "CO", "CT", "DE", "DC", "FL", "GA",
    "HI", "ID", "IL", "IN", "IA", "KS", "KA", "LA", "ME", "MD", "MA",
    "MI", "MN", "MS", "MO", "MT", "NE", "NV", "NH", "NJ", "NM", "NY",
    "NC", "ND", "OH", "OK", "OR", "PA", "RI", "SC", "SD", "TN", "TX",
    "UT", "VT", "VA", "WA", "WV", "WI", "WY", "AS", "FM", "GU", "MH",
    "PW", "PR", "VI", "AA", "AE", "AP", "MP", "UM", "--"};

// First digit of the zip codes of each state (the national zip regions).
struct ZipRegion {
  std::string_view state;
  char first_digit;
};
constexpr std::array<ZipRegion, 51> kZipRegions = {{
    {"CT", '0'}, {"MA", '0'}, {"ME", '0'}, {"NH", '0'}, {"NJ", '0'},
    {"RI", '0'}, {"VT", '0'}, {"DE", '1'}, {"NY", '1'}, {"PA", '1'},
    {"DC", '2'}, {"MD", '2'}, {"NC", '2'}, {"SC", '2'}, {"VA", '2'},
    {"WV", '2'}, {"AL", '3'}, {"FL", '3'}, {"GA", '3'}, {"MS", '3'},
    {"TN", '3'}, {"IN", '4'}, {"KY", '4'}, {"MI", '4'}, {"OH", '4'},
    {"IA", '5'}, {"MN", '5'}, {"MT", '5'}, {"ND", '5'}, {"SD", '5'},
    {"WI", '5'}, {"IL", '6'}, {"KS", '6'}, {"MO", '6'}, {"NE", '6'},
    {"AR", '7'}, {"LA", '7'}, {"OK", '7'}, {"TX", '7'}, {"AZ", '8'},
    {"CO", '8'}, {"ID", '8'}, {"NM", '8'}, {"NV", '8'}, {"UT", '8'},
    {"WY", '8'}, {"AK", '9'}, {"CA", '9'}, {"HI", '9'}, {"OR", '9'},
    {"WA", '9'},
}};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsAsciiAlnum(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

bool IsHighByte(char c) {
  return static_cast<unsigned char>(c) >= 0x80;
}

bool IsControl(char c) {
  const auto u = static_cast<unsigned char>(c);
  return u < 0x20 || u == 0x7F;
}

bool AllDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

}  // namespace

std::string Trim(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) {
    return {};
  }
  const auto last = text.find_last_not_of(" \t\r\n");
  return std::string(text.substr(first, last - first + 1));
}

bool IsValidEmail(std::string_view email) {
  if (email.size() > kMaxEmailLength) {
    return false;
  }
  const auto at = email.find('@');
  if (at == 0 || at == std::string_view::npos ||
      email.find('@', at + 1) != std::string_view::npos) {
    return false;
  }
  const auto local = email.substr(0, at);
  for (char c : local) {
    if (!IsAsciiAlnum(c) &&
        std::string_view("._%+-'").find(c) == std::string_view::npos) {
      return false;
    }
  }
  if (local.front() == '.' || local.back() == '.') {
    return false;
  }
  // The domain: labels of letters, digits and inner dashes, at least two, the
  // last of two letters or more.
  auto domain = email.substr(at + 1);
  int labels = 0;
  std::string_view last;
  while (true) {
    const auto dot = domain.find('.');
    const auto label = domain.substr(0, dot);
    if (label.empty() || label.front() == '-' || label.back() == '-') {
      return false;
    }
    for (char c : label) {
      if (!IsAsciiAlnum(c) && c != '-') {
        return false;
      }
    }
    ++labels;
    last = label;
    if (dot == std::string_view::npos) {
      break;
    }
    domain = domain.substr(dot + 1);
  }
  return labels >= 2 && last.size() >= 2 &&
         std::all_of(last.begin(), last.end(), [](char c) {
           return std::isalpha(static_cast<unsigned char>(c)) != 0;
         });
}

bool IsValidZip(std::string_view zip) {
  if (zip.size() == 5) {
    return AllDigits(zip);
  }
  return zip.size() == 10 && zip[5] == '-' && AllDigits(zip.substr(0, 5)) &&
         AllDigits(zip.substr(6));
}

bool IsKnownState(std::string_view state) {
  if (state == "--") {
    return false;
  }
  return std::find(kStates.begin(), kStates.end(), state) != kStates.end();
}

bool StateMatchesZip(std::string_view state, std::string_view zip) {
  if (zip.empty()) {
    return true;
  }
  for (const auto& region : kZipRegions) {
    if (region.state == state) {
      return region.first_digit == zip.front();
    }
  }
  return true;
}

bool PassesLuhn(std::string_view digits) {
  int sum = 0;
  bool twice = false;
  for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
    int d = *it - '0';
    if (twice) {
      d *= 2;
      if (d > 9) {
        d -= 9;
      }
    }
    sum += d;
    twice = !twice;
  }
  return !digits.empty() && sum % 10 == 0;
}

std::string CardDigits(std::string_view number) {
  std::string digits;
  std::vector<size_t> groups;
  size_t group = 0;
  char separator = 0;
  for (char c : number) {
    if (IsDigit(c)) {
      digits += c;
      ++group;
    } else if (c == ' ' || c == '-') {
      if (group == 0 || (separator != 0 && separator != c)) {
        return {};
      }
      separator = c;
      groups.push_back(group);
      group = 0;
    } else {
      return {};
    }
  }
  if (group == 0) {
    return {};
  }
  groups.push_back(group);
  if (digits.size() != 15 && digits.size() != 16) {
    return {};
  }
  if (groups.size() == 1) {
    return digits;
  }
  const std::vector<size_t> four_by_four = {4, 4, 4, 4};
  const std::vector<size_t> three_groups = {4, 6, 5};
  if (groups == four_by_four || groups == three_groups) {
    return digits;
  }
  return {};
}

std::string MaskCardNumber(std::string_view digits) {
  if (digits.size() <= 4) {
    return std::string(digits);
  }
  return std::string(digits.size() - 4, 'X') +
         std::string(digits.substr(digits.size() - 4));
}

std::string CheckName(std::string_view name, const char* code) {
  if (name.empty() || name.size() > kMaxNameLength ||
      std::any_of(name.begin(), name.end(), IsControl)) {
    return code;
  }
  return {};
}

std::string CheckEmail(std::string_view email) {
  return IsValidEmail(email) ? "" : "2003";
}

std::string CheckPassword(std::string_view password) {
  if (password.size() < kMinPasswordLength ||
      password.size() > kMaxPasswordLength) {
    return "2004";
  }
  for (char c : password) {
    if (IsControl(c) || c == ' ') {
      return "2004";
    }
  }
  return {};
}

std::string CheckPhone(std::string_view phone) {
  for (char c : phone) {
    if (!IsDigit(c) && c != ':' && c != '-') {
      return "2005";
    }
  }
  return {};
}

bool AddressIsEmpty(const AddressFields& address) {
  return address.street1.empty() && address.street2.empty() &&
         address.city.empty() && address.zip.empty() && address.phone.empty() &&
         (address.state.empty() ||
          address.state.find_first_not_of('-') == std::string::npos);
}

std::string CheckAddress(const AddressFields& address) {
  const auto bad_street = [](std::string_view street) {
    return street.size() > kMaxStreetLength ||
           std::any_of(street.begin(), street.end(), [](char c) {
             return c == ',' || c == '"' || IsControl(c);
           });
  };
  if (address.street1.empty() || bad_street(address.street1)) {
    return "2008";
  }
  if (bad_street(address.street2)) {
    return "2009";
  }
  if (address.city.empty() || address.city.size() > kMaxNameLength ||
      !std::all_of(address.city.begin(), address.city.end(), [](char c) {
        return IsAsciiAlnum(c) || IsHighByte(c) || c == ' ' || c == '\t';
      })) {
    return "2010";
  }
  if (!IsKnownState(address.state)) {
    return "2011";
  }
  if (!IsValidZip(address.zip)) {
    return "2012";
  }
  if (!StateMatchesZip(address.state, address.zip)) {
    return "2013";
  }
  return {};
}

std::string CheckCard(const CardFields& card,
                      std::string_view card_zip,
                      int year_now,
                      int month_now) {
  if (card.name.empty() || card.name.size() > kMaxNameLength ||
      !std::all_of(card.name.begin(), card.name.end(), [](char c) {
        return IsAsciiAlnum(c) || IsHighByte(c) ||
               std::string_view(" \t.-\"'").find(c) != std::string_view::npos;
      })) {
    return "2014";
  }
  const std::string digits = CardDigits(card.number);
  if (digits.empty()) {
    return "2016";
  }
  if (card.month < 1 || card.month > 12) {
    return "2017";
  }
  int year = 0;
  const auto [end, error] = std::from_chars(
      card.year.data(), card.year.data() + card.year.size(), year);
  if (error != std::errc() || end != card.year.data() + card.year.size() ||
      card.year.size() != 4 || year > year_now + kMaxExpiryYears ||
      year * 12 + card.month < year_now * 12 + month_now) {
    return "2018";
  }
  if (!PassesLuhn(digits)) {
    return "2019";
  }
  if (!IsValidZip(card_zip)) {
    return "2020";
  }
  return {};
}

std::string ErrorText(std::string_view code) {
  struct Entry {
    std::string_view code, text;
  };
  static constexpr std::array<Entry, 31> kTexts = {{
      {"1001", "Your session has ended. Please log in again."},
      {"1002", "Your address book is empty."},
      {"2001", "Please enter a valid first name."},
      {"2002", "Please enter a valid last name."},
      {"2003", "Email address contains invalid domain name."},
      {"2004", "Password should be atleast 5 characters, without blanks."},
      {"2005", "Please enter a valid phone number."},
      {"2006", "Oops! There is no Quillbay account with this email address."},
      {"2007", "The password you entered is not correct."},
      {"2008", "Please enter a valid street address."},
      {"2009", "Please enter a valid second street line."},
      {"2010", "Please enter a valid city."},
      {"2011", "Please choose a valid state."},
      {"2012", "Please enter a valid zip code."},
      {"2013", "State and Zip do not match."},
      {"2014", "Please enter a valid name on card."},
      {"2016", "Please enter a valid card number."},
      {"2017", "Please choose a valid expiry month."},
      {"2018", "The card has expired or its expiry year is not valid."},
      {"2019", "The card number is not valid."},
      {"2020", "Please enter a valid billing zip code."},
      {"2021", "A Quillbay account with your email address already exists."},
      {"2022",
       "Too many failed logins. Please wait a few minutes and try again."},
      {"3001", "The album was not found."},
      {"3002", "Only JPEG, PNG, BMP and TIFF photos can be uploaded."},
      {"3003", "The photo is larger than the upload limit."},
      {"3004", "Please give the new album a name."},
      {"4001", "The order was not found or is already confirmed."},
      {"4002", "The order has no prints."},
      {"4003", "The photos of the order are not uploaded."},
      {"4004", "The coupon does not match the quoted order."},
  }};
  for (const auto& entry : kTexts) {
    if (entry.code == code) {
      return std::string(entry.text);
    }
  }
  return "There is some problem with the server, please try after some time...";
}

}  // namespace qbpd::service
