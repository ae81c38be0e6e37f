#ifndef QBPD_SCREENSAVER_SCREENSAVER_FORMS_H_
#define QBPD_SCREENSAVER_SCREENSAVER_FORMS_H_

namespace qbpd {

class Application;

// Declares the screensavers' forms to the application.
void RegisterScreensaverForms(Application& app);

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_SCREENSAVER_FORMS_H_
