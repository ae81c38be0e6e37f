#include "editor/crop_sizes.h"

#include <algorithm>
#include <cctype>

namespace qbpd {

int CropPresetFromExpressPrints(std::string value) {
  if (!value.empty() && value.back() == '\0') {
    value.pop_back();
  }
  if (value.find("5x7") != std::string::npos) {
    return 1;
  }
  if (value.find("8x10") != std::string::npos) {
    return 2;
  }
  std::transform(
      value.begin(), value.end(), value.begin(),
      [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (value.find("wallet") != std::string::npos) {
    return 3;
  }
  return 0;
}

}  // namespace qbpd
