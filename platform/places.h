#ifndef QBPD_PLATFORM_PLACES_H_
#define QBPD_PLATFORM_PLACES_H_

#include <string>

namespace qbpd {

// The Linux places that stand for the system's Windows folders. Every path is
// absolute and has no trailing "/". They follow the XDG base directory and
// user directory rules of the environment the process runs in, so a test or
// script that points HOME and the XDG variables elsewhere gets private places.
struct Places {
  // $XDG_CONFIG_HOME/quillbay-picture-desk: the settings database.
  std::string config;
  // $XDG_DATA_HOME/quillbay-picture-desk: the program's exchange files
  // (CommandImage.txt, DevMon.dat, ImgAcq.dat, TempScr.ini, scr.ini) and the
  // system folder (wallpaper bitmap, saver file).
  std::string data;
  // $XDG_CACHE_HOME/quillbay-picture-desk: the persistent thumbnail cache.
  std::string cache;
  // $XDG_RUNTIME_DIR (or the private temp folder when there is none): the
  // single-instance lock and socket.
  std::string runtime;
  // The user's desktop and pictures folders (XDG user dirs).
  std::string desktop;
  std::string pictures;
  // The folder of the running executable.
  std::string program;
};

// Reads the places from the environment; creates nothing.
Places FindPlaces();

// Makes (when missing) and returns the user's private temp folder: a folder
// of mode 0700 owned by this user under the cache place. A folder there that
// is not a real directory owned by this user with mode 0700 is never used;
// then a fresh private folder is made with a random name. "" when nothing can
// be made.
std::string MakePrivateTempFolder(const Places& places);

// Creates `path` and any missing parents with the given mode. True when the
// folder exists afterwards.
bool MakeFolders(const std::string& path, unsigned mode = 0755);

// The folder holding the program's read-only files (button pictures, help
// pages, default settings): the installed share folder beside the executable,
// else the source tree's resources/ folder. "" when neither exists.
std::string FindResourcesFolder(const Places& places);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_PLACES_H_
