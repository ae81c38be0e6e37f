#ifndef QBPD_ONLINE_ALBUM_NAME_H_
#define QBPD_ONLINE_ALBUM_NAME_H_

#include <string>
#include <string_view>

namespace qbpd {

// The characters an album name may hold: letters (A-Z, a-z and the codes
// 192 to 255 but 208, 215, 222, 223 and 247), digits, the quotes, ! , - .
// : ; ?, # $ % & ( ) * + / < = > @ [ \ ] ^ _, blank and tab.
bool IsAlbumNameCharacter(int code);

// Whether every character of `name` may stand in an album name. Text is
// UTF-8 on this system: a character of several bytes counts by its code
// point, so "é" (233) is a letter as its single code was, and anything
// above 255 is refused.
bool IsValidAlbumName(std::string_view name);

// The text a list shows for `name` when it is `width` wide in a list `list`
// wide (both in the same unit): the whole name when width + 400 is less
// than the list's width, otherwise the first Len(name) * list / (width +
// 400) characters (rounded) and "...".
std::string ShortenToWidth(const std::string& name, int width, int list);

}  // namespace qbpd

#endif  // QBPD_ONLINE_ALBUM_NAME_H_
