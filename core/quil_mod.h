#ifndef QBPD_CORE_QUIL_MOD_H_
#define QBPD_CORE_QUIL_MOD_H_

#include "core/settings.h"

#include <string>
#include <string_view>

namespace qbpd {

class Application;

// The shared start-up routines of the program: its work folders, the photo
// hand-over between two starts, and the path helpers. Paths use "/"; a
// folder path that the program keeps "with its trailing separator" ends in
// "/".

// Sets gsTempLoc (the user's private temp folder, with its separator; "" when
// none can be made), gsThumbnailFolder and gsToJpgFolder below it (made when
// missing), gsDesktopPath, gsSystemFolder and gsScrIniPath (AppPath from the
// settings, else the program's folder, + "/scr.ini"). Never fails: a folder
// that can't be made is left out.
void InitWorkingFolders(Application& app);

// The program's folder for exchange files (App.Path), without a separator.
std::string AppPath(const Application& app);
// The folder of the browsers' caches, with its separator.
std::string GetInternetCachePath(const Application& app);

// The hand-over file of a second start. A non-empty `path` is written into
// it (replacing it, no line end); an empty one deletes it.
void WriteCommandImage(const Application& app, const std::string& path);
// If the hand-over file exists, `path` takes its content, trimmed, less one
// trailing NUL; otherwise `path` is left as it is.
void ReadCommandImage(const Application& app, std::string& path);

// The long form of `path`: a path beginning with "//" comes back as it
// stands; otherwise it is rebuilt part by part from the file system and cut
// at the first part that doesn't exist. A path of fewer than two parts gives
// "".
std::string GetLongPathName(const std::string& path);
// Creates each missing folder of `path`.
void EnsureFolderPath(const std::string& path);

// Trims spaces at both ends.
std::string Trim(std::string_view text);
std::string UpperCase(std::string_view text);
// The upper-cased extension of a path, without its dot ("" when none).
std::string UpperExtension(std::string_view path);
// Whether the upper-cased extension is one of the program's photo types.
bool IsPhotoExtension(std::string_view upper_extension);
// Whether a path's extension, in any case, is one of the program's photo
// types: IsPhotoExtension(UpperExtension(path)) without making a string.
bool HasPhotoExtension(std::string_view path);
// The file name part of a path (after the last "/").
std::string FileNamePart(std::string_view path);
// The thumbnail file in `folder` of a photo shown among photos of several
// folders: named by the photo's name and a key of its whole path, size and
// change time, so that two photos of one name never share a thumbnail and
// a changed photo gets a new one.
std::string PhotoThumbnailFile(std::string_view folder,
                               const std::string& photo);
// The text as a caption shows it literally: each "&" doubled, so that none
// is taken for an access key.
std::string DoubleAmpersands(std::string_view text);
// The number of characters of UTF-8 text (a character of several bytes
// counts once).
size_t CharacterCount(std::string_view text);
// The first `count` whole characters of UTF-8 text.
std::string FirstCharacters(std::string_view text, size_t count);
// The file name without its extension (the text before the last ".").
std::string BaseName(std::string_view path);
// The parent folder of a path, with its separator.
std::string ParentFolder(std::string_view path);

}  // namespace qbpd

#endif  // QBPD_CORE_QUIL_MOD_H_
