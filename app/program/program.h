#ifndef QBPD_APP_PROGRAM_PROGRAM_H_
#define QBPD_APP_PROGRAM_PROGRAM_H_

namespace qbpd {

class Application;

// Declares every form of the program and its entry form, frmSplash.
void RegisterProgram(Application& app);

}  // namespace qbpd

#endif  // QBPD_APP_PROGRAM_PROGRAM_H_
