#include "online/upgrade_info.h"

#include <array>
#include <cctype>
#include <string_view>
#include <utility>

namespace qbpd {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
// A version has at most this many parts, each of at most nine digits.
constexpr size_t kMaxVersionParts = 4;
constexpr size_t kMaxPartDigits = 9;

std::string Trim(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return std::string();
  }
  const auto last = text.find_last_not_of(kBlanks);
  return std::string(text.substr(first, last - first + 1));
}

std::string Lower(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

// Decodes the five predefined entities; any other "&" makes the text
// malformed.
std::optional<std::string> DecodeEntities(std::string_view raw) {
  static constexpr std::array<std::pair<std::string_view, char>, 5> kEntities =
      {{
          {"&lt;", '<'},
          {"&gt;", '>'},
          {"&quot;", '"'},
          {"&apos;", '\''},
          {"&amp;", '&'},
      }};
  std::string text;
  for (size_t i = 0; i < raw.size();) {
    if (raw[i] == '<') {
      return std::nullopt;
    }
    if (raw[i] != '&') {
      text += raw[i++];
      continue;
    }
    bool matched = false;
    for (const auto& [entity, c] : kEntities) {
      if (raw.substr(i, entity.size()) == entity) {
        text += c;
        i += entity.size();
        matched = true;
        break;
      }
    }
    if (!matched) {
      return std::nullopt;
    }
  }
  return text;
}

// Skips blanks, the XML declaration and comments from `pos`; false when one
// of them isn't closed.
bool SkipProlog(std::string_view xml, size_t& pos) {
  while (true) {
    pos = xml.find_first_not_of(kBlanks, pos);
    if (pos == std::string_view::npos) {
      pos = xml.size();
      return true;
    }
    std::string_view close;
    if (xml.substr(pos, 2) == "<?") {
      close = "?>";
    } else if (xml.substr(pos, 4) == "<!--") {
      close = "-->";
    } else {
      return true;
    }
    const size_t end = xml.find(close, pos + 2);
    if (end == std::string_view::npos) {
      return false;
    }
    pos = end + close.size();
  }
}

// The children of <upgrade>: each a simple element holding text only. False
// when the body isn't made of such elements, or one of them comes twice.
bool ReadChildren(std::string_view body, UpgradeOffer& offer) {
  bool seen_version = false;
  bool seen_location = false;
  bool seen_size = false;
  bool seen_notes = false;
  size_t pos = 0;
  while (true) {
    if (!SkipProlog(body, pos)) {
      return false;
    }
    if (pos == body.size()) {
      return seen_version && seen_location;
    }
    if (body[pos] != '<') {
      return false;
    }
    const size_t name_end = body.find('>', pos);
    if (name_end == std::string_view::npos) {
      return false;
    }
    const std::string name(body.substr(pos + 1, name_end - pos - 1));
    if (name.empty() ||
        name.find_first_of(" \t\r\n/<\"'=") != std::string::npos) {
      return false;
    }
    const std::string closing = "</" + name + ">";
    const size_t text_end = body.find(closing, name_end + 1);
    if (text_end == std::string_view::npos) {
      return false;
    }
    auto text =
        DecodeEntities(body.substr(name_end + 1, text_end - name_end - 1));
    if (!text) {
      return false;
    }
    auto take = [&](bool& seen, std::string& field) {
      if (seen) {
        return false;
      }
      seen = true;
      field = Trim(*text);
      return true;
    };
    bool ok = true;
    if (name == "version") {
      ok = take(seen_version, offer.version);
    } else if (name == "location") {
      ok = take(seen_location, offer.location);
    } else if (name == "size") {
      ok = take(seen_size, offer.size);
    } else if (name == "notes") {
      ok = take(seen_notes, offer.notes);
    }
    // Other elements are for later versions of the file and are skipped.
    if (!ok) {
      return false;
    }
    pos = text_end + closing.size();
  }
}

bool IsVersion(const std::string& version) {
  size_t parts = 0;
  size_t digits = 0;
  for (char c : version) {
    if (c == '.') {
      if (digits == 0) {
        return false;
      }
      digits = 0;
      continue;
    }
    if (!std::isdigit(static_cast<unsigned char>(c))) {
      return false;
    }
    if (digits++ == 0) {
      ++parts;
    }
    if (digits > kMaxPartDigits) {
      return false;
    }
  }
  return digits > 0 && parts <= kMaxVersionParts;
}

}  // namespace

std::string UrlOrigin(const std::string& url) {
  const size_t scheme_end = url.find("://");
  if (scheme_end == std::string::npos) {
    return std::string();
  }
  const std::string scheme = Lower(url.substr(0, scheme_end));
  if (scheme != "http" && scheme != "https") {
    return std::string();
  }
  const size_t authority_start = scheme_end + 3;
  const size_t authority_end = url.find_first_of("/?#", authority_start);
  std::string authority =
      Lower(url.substr(authority_start, authority_end == std::string::npos
                                            ? std::string::npos
                                            : authority_end - authority_start));
  // Credentials, blanks and backslashes have no place in the service's
  // address; "a@b" would name host b.
  if (authority.empty() ||
      authority.find_first_of("@\\ \t\r\n%") != std::string::npos) {
    return std::string();
  }
  const size_t bracket = authority.rfind(']');
  const size_t colon = authority.rfind(':');
  const bool has_port = colon != std::string::npos &&
                        (bracket == std::string::npos || colon > bracket);
  std::string host = has_port ? authority.substr(0, colon) : authority;
  std::string port = has_port ? authority.substr(colon + 1) : std::string();
  if (host.empty()) {
    return std::string();
  }
  if (port.empty()) {
    port = scheme == "https" ? "443" : "80";
  }
  for (char c : port) {
    if (!std::isdigit(static_cast<unsigned char>(c))) {
      return std::string();
    }
  }
  return scheme + "://" + host + ":" + port;
}

std::optional<UpgradeOffer> ReadUpgradeXml(const std::string& xml,
                                           const std::string& url) {
  std::string_view text = xml;
  size_t pos = 0;
  if (!SkipProlog(text, pos)) {
    return std::nullopt;
  }
  constexpr std::string_view kOpen = "<upgrade>";
  constexpr std::string_view kClose = "</upgrade>";
  if (text.substr(pos, kOpen.size()) != kOpen) {
    return std::nullopt;
  }
  const size_t body_start = pos + kOpen.size();
  const size_t body_end = text.rfind(kClose);
  if (body_end == std::string_view::npos || body_end < body_start) {
    return std::nullopt;
  }
  size_t after = body_end + kClose.size();
  if (!SkipProlog(text, after) || after != text.size()) {
    return std::nullopt;
  }
  UpgradeOffer offer;
  if (!ReadChildren(text.substr(body_start, body_end - body_start), offer)) {
    return std::nullopt;
  }
  if (!IsVersion(offer.version)) {
    return std::nullopt;
  }
  const std::string origin = UrlOrigin(url);
  if (origin.empty() || UrlOrigin(offer.location) != origin ||
      offer.location.find_first_of(" \t\r\n\\") != std::string::npos) {
    return std::nullopt;
  }
  return offer;
}

std::string SignatureUrl(const std::string& download_url) {
  const size_t query = download_url.find_first_of("?#");
  if (query == std::string::npos) {
    return download_url + ".sig";
  }
  return download_url.substr(0, query) + ".sig" + download_url.substr(query);
}

}  // namespace qbpd
