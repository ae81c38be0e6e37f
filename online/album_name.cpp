#include "online/album_name.h"

#include "core/validations.h"

#include <cmath>

namespace qbpd {

bool IsAlbumNameCharacter(int code) {
  switch (code) {
    case 208:
    case 215:
    case 222:
    case 223:
    case 247:
      return false;
    default:
      break;
  }
  CharacterGroups all;
  all.letters = true;
  all.digits = true;
  all.quotes = true;
  all.punctuation = true;
  all.symbols = true;
  all.blanks = true;
  return code != 8 && IsValidCharacter(code, all);
}

bool IsValidAlbumName(std::string_view name) {
  for (size_t i = 0; i < name.size();) {
    const unsigned char lead = static_cast<unsigned char>(name[i]);
    int code = lead;
    size_t length = 1;
    if (lead >= 0xC0 && lead < 0xE0 && i + 1 < name.size()) {
      code = ((lead & 0x1F) << 6) | (name[i + 1] & 0x3F);
      length = 2;
    } else if (lead >= 0x80) {
      return false;  // a code point above 255, or no UTF-8 at all
    }
    if (!IsAlbumNameCharacter(code)) {
      return false;
    }
    i += length;
  }
  return true;
}

std::string ShortenToWidth(const std::string& name, int width, int list) {
  if (width + 400 < list) {
    return name;
  }
  const double keep = static_cast<double>(name.size()) * list / (width + 400);
  const auto count = static_cast<size_t>(std::lround(keep));
  return name.substr(0, std::min(count, name.size())) + "...";
}

}  // namespace qbpd
