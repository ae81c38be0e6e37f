#ifndef QBPD_EDITOR_FIXED_NAMES_H_
#define QBPD_EDITOR_FIXED_NAMES_H_

#include <string>

namespace qbpd {

// The one rule for the files the editor makes beside a photo: the next free
// name "<stem>_Fixed(<n>)", without folder and extension.
//
// The stem is the photo's base name up to a "_Fixed" mark in any case; a
// mark followed by a bracketed number ("IMG1_FIXED(7)") continues from that
// number, anything else behind the mark is dropped ("a_Fixed(2)b" gives
// "a_Fixed(1)"). The number counts up from there while `folder` holds a file
// of the candidate's name with the extension ".Jpg". Numbers below the start
// are never reused.
//
// Names differ by case on this system where they don't on the one the rule
// was made for: a candidate counts as taken when the folder holds it with
// ".jpg" in any letter case, or with `also_extension` (the extension the
// caller will write, such as "PNG" or "JPEG") in any case, so that a made
// file never replaces one of the user's. An unreadable folder counts as
// holding nothing.
std::string GetFixedFileName(const std::string& path,
                             const std::string& folder,
                             const std::string& also_extension = "");

// The same kind of name in prefix form, "Fixed_(<n>) <name>": for a base
// name beginning "FIXED_" in any case, n is one more than the number between
// its first "(" and ")", and the rest behind the ")" is kept, trimmed; for
// any other name n is 1 and the whole base name follows. Counts up while the
// folder holds the candidate with ".Jpg". Nothing in the program calls it.
std::string GetPrefixFixedName(const std::string& path,
                               const std::string& folder);

}  // namespace qbpd

#endif  // QBPD_EDITOR_FIXED_NAMES_H_
