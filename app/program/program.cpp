#include "app/program/program.h"

#include "core/application.h"

namespace qbpd {

void RegisterProgram(Application& app) {
  // The subsystems add their forms here as they arrive.
  app.SetEntryForm("frmSplash");
}

}  // namespace qbpd
