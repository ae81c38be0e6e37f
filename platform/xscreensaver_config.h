#ifndef QBPD_PLATFORM_XSCREENSAVER_CONFIG_H_
#define QBPD_PLATFORM_XSCREENSAVER_CONFIG_H_

#include <optional>
#include <string>
#include <vector>

namespace qbpd {

// Edits of the text of XScreenSaver's per-user settings file (~/.xscreensaver,
// X resource lines "name: value", a value going on over lines that end in
// "\"; "programs" holds one saver command per "\n"-separated entry). Every
// line the edit has no business with is kept byte for byte. A text that isn't
// of that form (a NUL byte, a line that is neither a comment, blank, a
// continuation nor "name: value") gives nothing: such a file is not touched.

// The text with `entry` (a programs entry: an optional quoted title and a
// command) as the selected saver in "mode: one". An entry whose command
// holds `marker` (the saver program's file name) is replaced where it stands;
// otherwise the entry is added last. A missing file's text is "".
std::optional<std::string> SelectSaverEntry(const std::string& text,
                                            const std::string& entry,
                                            const std::string& marker);

// The text with "timeout" set to `seconds` (written H:MM:SS).
std::optional<std::string> SetSaverTimeout(const std::string& text,
                                           int seconds);

// The programs entries of the text, trimmed, in order (for tests and for a
// check after writing); nothing for a malformed text.
std::optional<std::vector<std::string>> SaverEntries(const std::string& text);

// The value of a one-line resource ("" when missing); nothing when the text
// is malformed.
std::optional<std::string> SaverResource(const std::string& text,
                                         const std::string& name);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_XSCREENSAVER_CONFIG_H_
