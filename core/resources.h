#ifndef QBPD_CORE_RESOURCES_H_
#define QBPD_CORE_RESOURCES_H_

#include <string>
#include <string_view>

namespace qbpd {

// The branded resources of the program: its pictures by name, and the title
// and settings root of a brand. There is one brand; any brand id gives it.
class Resources {
 public:
  explicit Resources(std::string folder) : folder_(std::move(folder)) {}

  // The file of the picture `name` ("G10", "1N") of a category ("BUTTON").
  // The path is given whether or not the file exists, as the program only
  // hands it to the picture controls.
  std::string Picture(std::string_view name, std::string_view category) const;
  std::string AppTitle(std::string_view cobrand_id) const;
  std::string RegistryRoot(std::string_view cobrand_id) const;

 private:
  std::string folder_;
};

}  // namespace qbpd

#endif  // QBPD_CORE_RESOURCES_H_
