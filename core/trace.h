#ifndef QBPD_CORE_TRACE_H_
#define QBPD_CORE_TRACE_H_

#include <string_view>

namespace qbpd {

// The program's diagnostic trace. Routines hand it the steps they pass
// ("Entered timer dbl click", "Exp FolderClick"); it keeps nothing and
// writes nothing, as the program writes no log.
inline void WriteTrace(std::string_view text) {
  (void)text;
}

}  // namespace qbpd

#endif  // QBPD_CORE_TRACE_H_
