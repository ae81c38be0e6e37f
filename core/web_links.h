#ifndef QBPD_CORE_WEB_LINKS_H_
#define QBPD_CORE_WEB_LINKS_H_

#include <string>

namespace qbpd {

class Application;

// Opens `url` in the user's browser through the run's launcher (xdg-open,
// no shell) and does not follow what the browser does. A launcher that
// fails ends the click quietly, as every link does.
void OpenInBrowser(Application& app, const std::string& url);

// The service's home page: the site address setting (`IP`) without its
// trailing NUL and blanks; nothing happens when nothing remains.
void OpenServiceHome(Application& app);

}  // namespace qbpd

#endif  // QBPD_CORE_WEB_LINKS_H_
