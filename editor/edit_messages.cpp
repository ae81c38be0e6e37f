#include "editor/edit_messages.h"

namespace qbpd {

std::string AccessDeniedMessage(const std::string& verb,
                                const std::string& name) {
  return verb + name +
         ": Access is denied. \r\n\r\nMake sure the disk is not full or "
         "write-protected \r\nand that the file is not currently in use.";
}

}  // namespace qbpd
