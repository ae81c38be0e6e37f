#ifndef QBPD_CORE_SESSION_H_
#define QBPD_CORE_SESSION_H_

#include "core/keyed_collection.h"
#include "core/ordered_dictionary.h"
#include "core/resources.h"
#include "platform/forms/named_values.h"
#include "platform/forms/value.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// Photo index to full path: the photo list and the selection.
using PhotoDictionary = OrderedDictionary<int, std::string>;

// The program-wide values of one run, by the names the program gives them.
// They live as long as the application object that owns them; nothing else
// is program-wide. Every value can also be read and written by name, for the
// headless driver and the tests.
class Session {
 public:
  Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // --- start-up and the work folders ---------------------------------------
  std::string gsTempLoc;
  std::string gsThumbnailFolder;
  std::string gsToJpgFolder;
  std::string gsDesktopPath;
  std::string gsSystemFolder;
  std::string gsScrIniPath;
  std::string gsCommandLine;
  bool gbLoadInProgress = false;
  bool gbQuitRequested = false;
  bool gbCacheEnable = false;
  std::string gsCobrandId;
  std::string gsAppTitle;
  std::string gsRegistryRoot;
  std::string gsPrefKey;
  bool gbExplorerTimerOn = false;
  int giCurrentOperation = 0;
  // "S" for a slide show, "F" for Full Screen.
  std::string gsSlideShowMode;
  std::string gsShareSubject;
  std::string gsShareMessage;
  // The branded pictures and texts; made by the splash, released at exit.
  std::unique_ptr<Resources> goResources;

  // --- the current folder and photo ----------------------------------------
  std::string gsSelectedFolder;
  std::string gsSelectedImage;
  int giCurrentPhotoIndex = 0;
  PhotoDictionary gdicPhotoList;
  // Photo indexes with a thumbnail control loaded in the grid (values "").
  PhotoDictionary gdicLoadedControls;
  // Photo indexes deleted since the folder was opened (values "").
  PhotoDictionary gdicDeletedIndexes;
  PhotoDictionary gdicSelectedPhotos;
  int giNextPhotoIndex = 0;
  int giPhotoCount = 0;
  std::string gsThumbnailPath;
  int giNoOfRecentFolders = 0;

  // --- the editor ----------------------------------------------------------
  long glRotationAngle = 0;
  // Whether the write checks can answer (always so on this system).
  bool gbHasAccessChecks = true;
  // The head and body of the notice at the end of a long online job.
  std::string gsInfoHead;
  std::string gsInfoMessage;
  bool gbRotationPending = false;
  // The rotation applies to every selected photo.
  bool gbMultiRotation = false;
  // "S" after the user chose to turn the photo on display, "M" while the
  // checked photos are turned on disk (no other command may start then).
  std::string gsRotationScope;
  // True while the checked photos are being turned.
  bool gbRotationBusy = false;

  // --- the online service --------------------------------------------------
  std::string gsAuthCode;
  std::string gsUserEmail;
  std::string gsAlbumId;
  std::string gsAccountStatus;
  // The connection, the login and the upload road (online/).
  std::string gsSiteUrl;
  std::string gsSiteAddress;
  // The password in plain text for this run only; never written anywhere
  // but scrambled into the settings when the user asks to be remembered.
  std::string gsUserPassword;
  std::string gsPrevUserEmail;
  std::string gsPrevPassword;
  std::string gsUserCode;
  std::string gsAlbumName;
  std::string gsLoginOrigin;
  std::string gsShareRecipients;
  std::string gsShareAccess;
  std::string gsCouponCode;
  std::string gsOrderId;
  bool gbUserCancelled = false;
  bool gbRememberLogin = false;
  // The album list: row 0 the ids, row 1 the names; ("", "") for none.
  std::vector<std::vector<std::string>> gasAlbums;
  // The upload's photos: photo index to path (upload), and the paths of
  // every action's run.
  PhotoDictionary gdicAlbumPhotos;
  KeyedCollection<std::string> gcolOrderPhotos;
  // Share recipients; after a share the accepted ones.
  std::vector<std::string> gasShareEmails;
  // The account's profile from GetUserInfo: (0) e-mail address, (1) first
  // name, (2) last name.
  std::vector<std::string> gsaUserName;
  // The upload engine.
  int giUploadedCount = 0;
  int giUploadTotal = 0;
  bool gbFileMissing = false;
  bool gbUploadCancelled = false;

  // --- camera import (camera/) ----------------------------------------------
  // The entry picked in frmDeviceList.
  std::string gsSelectedDevice;
  // frmDeviceList ended any other way than with OK.
  bool gbDeviceListCancelled = false;
  // The transfer may go ahead (frmCameraCopy's answer or the setting).
  bool gbCopyAllowed = false;
  // The files found on a drive (ListCardFiles), breadth first.
  std::vector<std::string> gsaCardFiles;
  // The destination folder of a drive transfer.
  std::string gsTransferFolder;
  // CopyCardFiles is done.
  bool gbFilesCopied = false;
  bool gbTransferDialogCancelled = false;
  // --- the screensavers (screensaver/) -------------------------------------
  // The dialog came from the Screensaver menu, not from the button.
  bool gbScrFromMenu = false;
  // The menu command was Create new.
  bool gbScrCreateNew = false;
  std::string gsCurrentScrName;
  // The screensavers' names, as scr.ini lists them, and their count.
  std::vector<std::string> gsaScrNames;
  int giSsaverCount = 0;
  bool gbMakeCurrent = false;
  // An existing screensaver was changed, not created.
  bool gbScrUpdated = false;
  // What the preview plays: section, seconds a photo, file and effect codes.
  std::string gsPreviewName;
  int giPreviewInterval = 0;
  std::string gsPreviewIniPath;
  std::string gsPreviewEffects;

  // Reads a value by name. "gdicPhotoList.Count" gives a dictionary's size and
  // "gdicPhotoList(3)" its item of key 3. An unknown name is a RuntimeError.
  Value Get(std::string_view name) const;
  // Writes a scalar value by name.
  void Set(std::string_view name, const Value& v);
  // Every name that Get accepts (dictionaries by their plain name).
  std::vector<std::string> Names() const;

 protected:
  // Declares one value for reflection; later parts of the program declare
  // theirs the same way.
  template <class T>
  void Declare(std::string name, T& field);
  void DeclareDictionary(std::string name, const PhotoDictionary& dic);

 private:
  NamedValues scalars_{"The session"};
  std::map<std::string, const PhotoDictionary*, std::less<>> dictionaries_;
};

template <class T>
void Session::Declare(std::string name, T& field) {
  scalars_.Declare(std::move(name), field);
}

}  // namespace qbpd

#endif  // QBPD_CORE_SESSION_H_
