#include "core/resources.h"

#include <cctype>

namespace qbpd {
namespace {

constexpr std::string_view kDefaultTitle = "Quillbay Picture Desk";

}  // namespace

std::string Resources::Picture(std::string_view name,
                               std::string_view category) const {
  std::string lower(category);
  for (char& c : lower) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return folder_ + "/pictures/" + lower + "/" + std::string(name) + ".png";
}

std::string Resources::AppTitle(std::string_view) const {
  return std::string(kDefaultTitle);
}

std::string Resources::RegistryRoot(std::string_view) const {
  return std::string(kDefaultTitle);
}

}  // namespace qbpd
