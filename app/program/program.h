#ifndef QBPD_APP_PROGRAM_PROGRAM_H_
#define QBPD_APP_PROGRAM_PROGRAM_H_

#include "core/application.h"

namespace qbpd {

// Declares every form of the program and its entry form, frmSplash.
void RegisterProgram(Application& app);

// The platform services of a run, found from the environment (see places.h).
// `settings` is the store to use; null means the user's settings database.
// `token` is this start's activation token, which a second start passes on
// to the running instance.
PlatformServices MakePlatformServices(std::unique_ptr<SettingsStore> settings,
                                      ActivationToken token = {});

}  // namespace qbpd

#endif  // QBPD_APP_PROGRAM_PROGRAM_H_
