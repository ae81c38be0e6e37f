#include "online/online_common.h"

#include "core/application.h"
#include "online/service_client.h"

#include <filesystem>

namespace qbpd {

std::string LoginFailureText(const std::string& errCode,
                             const std::string& errText) {
  if (errCode == kErrServiceFailed) {
    return std::string(kServerProblemLogin);
  }
  if (errCode == kErrNoConnection) {
    return std::string(kCheckConnectionLabel);
  }
  if (errCode == kErrNoSuchAccount) {
    return std::string(kNoSuchAccount);
  }
  return errText;
}

bool FileExists(const std::string& path) {
  std::error_code error;
  return !path.empty() && std::filesystem::is_regular_file(path, error);
}

void ResetShareTexts(Application& app) {
  Session& s = app.session();
  s.gsShareSubject = "You're invited to view my online photos";
  s.gsShareMessage =
      "You're invited to see my photos on Quillbay! You can order prints of "
      "any photo in my online album(s).";
}

}  // namespace qbpd
