#include "core/session.h"

#include "platform/forms/runtime_error.h"

#include <cstdlib>

namespace qbpd {

Session::Session() {
  Declare("gsTempLoc", gsTempLoc);
  Declare("gsThumbnailFolder", gsThumbnailFolder);
  Declare("gsToJpgFolder", gsToJpgFolder);
  Declare("gsDesktopPath", gsDesktopPath);
  Declare("gsSystemFolder", gsSystemFolder);
  Declare("gsScrIniPath", gsScrIniPath);
  Declare("gsCommandLine", gsCommandLine);
  Declare("gbLoadInProgress", gbLoadInProgress);
  Declare("gbQuitRequested", gbQuitRequested);
  Declare("gbCacheEnable", gbCacheEnable);
  Declare("gsCobrandId", gsCobrandId);
  Declare("gsAppTitle", gsAppTitle);
  Declare("gsRegistryRoot", gsRegistryRoot);
  Declare("gsPrefKey", gsPrefKey);
  Declare("gbExplorerTimerOn", gbExplorerTimerOn);
  Declare("giCurrentOperation", giCurrentOperation);
  Declare("gsSlideShowMode", gsSlideShowMode);
  Declare("gsShareSubject", gsShareSubject);
  Declare("gsShareMessage", gsShareMessage);
  Declare("gsSelectedFolder", gsSelectedFolder);
  Declare("gsSelectedImage", gsSelectedImage);
  Declare("giCurrentPhotoIndex", giCurrentPhotoIndex);
  Declare("gsThumbnailPath", gsThumbnailPath);
  Declare("giNextPhotoIndex", giNextPhotoIndex);
  Declare("giPhotoCount", giPhotoCount);
  Declare("giNoOfRecentFolders", giNoOfRecentFolders);
  Declare("glRotationAngle", glRotationAngle);
  Declare("gbHasAccessChecks", gbHasAccessChecks);
  Declare("gsInfoHead", gsInfoHead);
  Declare("gsInfoMessage", gsInfoMessage);
  Declare("gbMultiRotation", gbMultiRotation);
  Declare("gsSelectedDevice", gsSelectedDevice);
  Declare("gbDeviceListCancelled", gbDeviceListCancelled);
  Declare("gbCopyAllowed", gbCopyAllowed);
  Declare("gsTransferFolder", gsTransferFolder);
  Declare("gbFilesCopied", gbFilesCopied);
  Declare("gbTransferDialogCancelled", gbTransferDialogCancelled);
  Declare("gbRotationPending", gbRotationPending);
  Declare("gsRotationScope", gsRotationScope);
  Declare("gbRotationBusy", gbRotationBusy);
  Declare("gsAuthCode", gsAuthCode);
  Declare("gsUserEmail", gsUserEmail);
  Declare("gsAlbumId", gsAlbumId);
  Declare("gsAccountStatus", gsAccountStatus);
  Declare("gsSiteUrl", gsSiteUrl);
  Declare("gsSiteAddress", gsSiteAddress);
  Declare("gsPrevUserEmail", gsPrevUserEmail);
  Declare("gsUserCode", gsUserCode);
  Declare("gsAlbumName", gsAlbumName);
  Declare("gsLoginOrigin", gsLoginOrigin);
  Declare("gsShareRecipients", gsShareRecipients);
  Declare("gsShareAccess", gsShareAccess);
  Declare("gsCouponCode", gsCouponCode);
  Declare("gsOrderId", gsOrderId);
  Declare("gbUserCancelled", gbUserCancelled);
  Declare("gbRememberLogin", gbRememberLogin);
  Declare("giUploadedCount", giUploadedCount);
  Declare("giUploadTotal", giUploadTotal);
  Declare("gbFileMissing", gbFileMissing);
  Declare("gbUploadCancelled", gbUploadCancelled);
  Declare("gbScrFromMenu", gbScrFromMenu);
  Declare("gbScrCreateNew", gbScrCreateNew);
  Declare("gsCurrentScrName", gsCurrentScrName);
  Declare("giSsaverCount", giSsaverCount);
  Declare("gbMakeCurrent", gbMakeCurrent);
  Declare("gbScrUpdated", gbScrUpdated);
  Declare("gsPreviewName", gsPreviewName);
  Declare("giPreviewInterval", giPreviewInterval);
  Declare("gsPreviewIniPath", gsPreviewIniPath);
  Declare("gsPreviewEffects", gsPreviewEffects);
  DeclareDictionary("gdicAlbumPhotos", gdicAlbumPhotos);
  DeclareDictionary("gdicPhotoList", gdicPhotoList);
  DeclareDictionary("gdicSelectedPhotos", gdicSelectedPhotos);
  DeclareDictionary("gdicLoadedControls", gdicLoadedControls);
  DeclareDictionary("gdicDeletedIndexes", gdicDeletedIndexes);
}

void Session::DeclareDictionary(std::string name, const PhotoDictionary& dic) {
  dictionaries_[std::move(name)] = &dic;
}

Value Session::Get(std::string_view name) const {
  if (scalars_.Has(name)) {
    return scalars_.Get(name);
  }
  // "gdic.Count" and "gdic(key)".
  size_t dot = name.find(".Count");
  size_t paren = name.find('(');
  std::string_view base = name.substr(0, std::min(dot, paren));
  if (auto it = dictionaries_.find(base); it != dictionaries_.end()) {
    const PhotoDictionary& dic = *it->second;
    if (dot != std::string_view::npos && dot + 6 == name.size()) {
      return dic.Count();
    }
    if (paren != std::string_view::npos && name.back() == ')') {
      std::string key(name.substr(paren + 1, name.size() - paren - 2));
      return dic.Item(std::atoi(key.c_str()));
    }
  }
  throw RuntimeError(kErrNoSuchProperty,
                     "The session has no value " + std::string(name));
}

void Session::Set(std::string_view name, const Value& v) {
  scalars_.Set(name, v);
}

std::vector<std::string> Session::Names() const {
  std::vector<std::string> out = scalars_.Names();
  for (const auto& [name, d] : dictionaries_) {
    out.push_back(name);
  }
  return out;
}

}  // namespace qbpd
