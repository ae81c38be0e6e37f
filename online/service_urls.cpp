#include "online/service_client.h"
#include "platform/http_transport.h"

#include <array>
#include <string_view>

namespace qbpd {

std::string OperationUrl(const std::string& site,
                         const std::string& operation) {
  if (!site.empty() && site.back() == '/') {
    return site + operation;
  }
  return site + "/" + operation;
}

std::string EncodeUploadUrl(const std::string& url) {
  static constexpr std::array<std::string_view, 6> kKeys = {
      "authcode", "numimages", "albumid", "albumname", "sourcecode", "file"};
  size_t question = url.find('?');
  if (question == std::string::npos) {
    return url;
  }
  std::string query = url.substr(question + 1);
  // Where the next of the program's keys begins after `from`, at an "&".
  auto next_key = [&](size_t from) {
    size_t best = std::string::npos;
    for (std::string_view key : kKeys) {
      std::string marker = "&" + std::string(key) + "=";
      size_t at = query.find(marker, from);
      if (at < best) {
        best = at;
      }
    }
    return best;
  };
  std::string out = url.substr(0, question + 1);
  size_t pos = 0;
  bool first = true;
  while (pos < query.size()) {
    size_t equals = query.find('=', pos);
    size_t stop = next_key(pos);
    if (equals == std::string::npos || equals > stop) {
      // A part that is no key=value pair goes as it is.
      size_t end = stop == std::string::npos ? query.size() : stop;
      out += (first ? "" : "&") + query.substr(pos, end - pos);
      pos = end == query.size() ? end : end + 1;
      first = false;
      continue;
    }
    std::string key = query.substr(pos, equals - pos);
    size_t end = key == "file" ? std::string::npos : next_key(equals);
    if (end == std::string::npos) {
      end = query.size();
    }
    out += (first ? "" : "&") + key + "=" +
           EscapeQueryValue(query.substr(equals + 1, end - equals - 1));
    pos = end == query.size() ? end : end + 1;
    first = false;
  }
  return out;
}

}  // namespace qbpd
