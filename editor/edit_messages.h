#ifndef QBPD_EDITOR_EDIT_MESSAGES_H_
#define QBPD_EDITOR_EDIT_MESSAGES_H_

#include <string>

namespace qbpd {

// The editor's refusal of a write into a folder it may not write:
// `verb` ("Cannot save ", "Cannot rename ") + `name` + ": Access is denied. "
// and the advice about the disk and the file, over three lines.
std::string AccessDeniedMessage(const std::string& verb,
                                const std::string& name);

}  // namespace qbpd

#endif  // QBPD_EDITOR_EDIT_MESSAGES_H_
