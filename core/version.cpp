// The build's version, given by the build (the project's version).
#include "core/settings.h"

#ifndef QBPD_VERSION
#error "the build passes QBPD_VERSION"
#endif

namespace qbpd {

std::string_view ProgramVersion() {
  return QBPD_VERSION;
}

}  // namespace qbpd
