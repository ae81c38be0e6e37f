#ifndef QBPD_ONLINE_ONLINE_FORMS_H_
#define QBPD_ONLINE_ONLINE_FORMS_H_

namespace qbpd {

class Application;

// Declares the online forms (login, connection, album choice, transfer,
// result page, local web pages) in the run's form set.
void RegisterOnlineForms(Application& app);

}  // namespace qbpd

#endif  // QBPD_ONLINE_ONLINE_FORMS_H_
