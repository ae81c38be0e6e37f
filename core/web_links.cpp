#include "core/web_links.h"

#include "core/application.h"
#include "core/settings.h"

namespace qbpd {

void OpenInBrowser(Application& app, const std::string& url) {
  // The program never reports a link that could not be opened.
  (void)app.launcher().OpenDocument(url);
}

void OpenServiceHome(Application& app) {
  std::string address = ReadSetting(app.settings(), kRootKey, "IP");
  while (!address.empty() && address.back() == ' ') {
    address.pop_back();
  }
  if (!address.empty()) {
    OpenInBrowser(app, address);
  }
}

}  // namespace qbpd
