#include "editor/fixed_names.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

namespace qbpd {
namespace {
namespace fs = std::filesystem;

constexpr std::string_view kMark = "_FIXED";
// Far beyond any folder's count, and safe from overflow when one is added.
constexpr long long kLargestNumber = 1'000'000'000'000LL;

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return static_cast<char>(std::toupper(c));
  });
  return text;
}

std::string Trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// The number at the start of `text` as the program's numeric reading takes
// it: spaces skipped, a sign, digits up to the first other character; 0
// when there are none.
long long LeadingNumber(const std::string& text) {
  size_t i = 0;
  while (i < text.size() && text[i] == ' ') {
    ++i;
  }
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) {
    negative = text[i] == '-';
    ++i;
  }
  long long n = 0;
  while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) {
    n = std::min(n * 10 + (text[i] - '0'), kLargestNumber);
    ++i;
  }
  return negative ? -n : n;
}

// The upper-cased names of the files in `folder`.
std::set<std::string> UpperNamesIn(const std::string& folder) {
  std::set<std::string> names;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end;
       it.increment(error)) {
    names.insert(Upper(it->path().filename().string()));
  }
  return names;
}

std::string BaseNameOf(const std::string& path) {
  return fs::path(path).stem().string();
}

}  // namespace

std::string GetFixedFileName(const std::string& path,
                             const std::string& folder,
                             const std::string& also_extension) {
  const std::string base = BaseNameOf(path);
  const std::string upper = Upper(base);
  std::string stem = base;
  long long next = 1;
  if (const size_t last = upper.rfind(kMark); last != std::string::npos) {
    const std::string tail = upper.substr(last + kMark.size());
    long long n = 0;
    if (tail.size() >= 2 && tail.front() == '(' && tail.back() == ')') {
      n = LeadingNumber(tail.substr(1, tail.size() - 2));
    }
    stem = Trimmed(base.substr(0, base.size() - tail.size() - kMark.size()));
    next = n + 1;
  }
  const std::set<std::string> taken = UpperNamesIn(folder);
  const std::string extra =
      also_extension.empty() ? std::string() : "." + Upper(also_extension);
  while (true) {
    const std::string candidate = stem + "_Fixed(" + std::to_string(next) + ")";
    const std::string key = Upper(candidate);
    if (!taken.contains(key + ".JPG") &&
        (extra.empty() || !taken.contains(key + extra))) {
      return candidate;
    }
    ++next;
  }
}

std::string GetPrefixFixedName(const std::string& path,
                               const std::string& folder) {
  const std::string base = BaseNameOf(path);
  long long n = 1;
  std::string rest = base;
  if (Upper(base).starts_with("FIXED_")) {
    const size_t open = base.find('(');
    const size_t close = base.find(')');
    if (open != std::string::npos && close != std::string::npos &&
        close > open) {
      n = LeadingNumber(base.substr(open + 1, close - open - 1)) + 1;
      rest = Trimmed(base.substr(close + 1));
    } else {
      rest = Trimmed(base.substr(std::string("FIXED_").size()));
    }
  }
  const std::set<std::string> taken = UpperNamesIn(folder);
  while (true) {
    const std::string candidate = "Fixed_(" + std::to_string(n) + ") " + rest;
    if (!taken.contains(Upper(candidate) + ".JPG")) {
      return candidate;
    }
    ++n;
  }
}

}  // namespace qbpd
