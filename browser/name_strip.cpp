// The name strip under the photo on display, and the rename it offers: a
// double click opens the name for editing, Enter renames the file in its
// own folder, Esc puts the shown name back.
#include "browser/frm_main_window.h"
#include "core/quil_mod.h"
#include "platform/access_check.h"
#include "platform/forms/keys.h"

#include <filesystem>
#include <string_view>
#include <sys/stat.h>

namespace qbpd {
namespace {

// The rename messages carry the program's name whatever the branding says.
constexpr char kRenameCaption[] = "Quillbay Picture Desk";
constexpr char kInvalidCharacters[] =
    "Please enter valid characters for file name";
constexpr char kNoFileName[] =
    "You have not entered file name. The original file name will be reset";
constexpr char kMustTypeName[] = "You must type a file name";
constexpr char kSelectPhotos[] = "Please select the photo(s)";

constexpr int kCtrlA = 1;
constexpr int kCtrlC = 3;
constexpr int kCtrlV = 22;
constexpr int kCtrlX = 24;

// The characters a file name may not hold: / \ | < > : " ? *
constexpr std::string_view kRefused = "/\\|<>:\"?*";

bool IsRefused(int key) {
  return key > 0 && key < 128 &&
         kRefused.find(static_cast<char>(key)) != std::string_view::npos;
}

std::string AccessDenied(const std::string& name) {
  return "Cannot rename " + name +
         ": Access is denied. \r\n\r\nMake sure the disk is not full or "
         "write-protected \r\nand that the file is not currently in use.";
}

// The last extension without its dot; "" when there is none.
std::string ExtensionOf(const std::string& path) {
  std::string ext = std::filesystem::path(path).extension().string();
  return ext.empty() ? ext : ext.substr(1);
}

bool NameTaken(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

}  // namespace

void frmMainWindow::mnuPRename_Click() {
  if (s_.gdicPhotoList.Count() == 0) {
    host().MsgBox(kSelectPhotos, kMbInformation, s_.gsAppTitle);
    return;
  }
  OpenPhotoName();
}

void frmMainWindow::OpenPhotoName() {
  if (mbEditImageText || s_.gsSelectedImage.empty() ||
      s_.gdicPhotoList.Count() == 0) {
    return;
  }
  const std::string base = BaseName(s_.gsSelectedImage);
  if (s_.gbHasAccessChecks &&
      CheckAccess(ParentFolder(s_.gsSelectedImage), kFileGenericWrite) !=
          kFileGenericWrite) {
    host().MsgBox(AccessDenied(base), kMbStop, kRenameCaption);
    return;
  }
  mbEditImageText = true;
  lblDisplayImageName.SetVisible(false);
  txtFileName.SetText(base);
  txtFileName.SetVisible(true);
  txtFileName.SetFocus();
}

void frmMainWindow::txtFileName_KeyPress(EventArgs& e) {
  const int key = e.KeyAscii;
  switch (key) {
    case kKeyEscape:
      e.KeyAscii = 0;
      ShowPhotoName(txtFileName.Tag());
      mbEditImageText = false;
      lblDisplayImageName.SetVisible(true);
      return;
    case kKeyReturn:
      e.KeyAscii = 0;
      CommitPhotoName();
      return;
    case kCtrlC:
    case kCtrlV:
    case kCtrlX:
    case kKeyBack:
      return;
    case kCtrlA:
      e.KeyAscii = 0;
      txtFileName.SetSelStart(0);
      txtFileName.SetSelLength(static_cast<int>(txtFileName.Text().size()));
      return;
    default:
      break;
  }
  if (IsRefused(key)) {
    e.KeyAscii = 0;
    host().MsgBox(kInvalidCharacters, kMbInformation, s_.gsAppTitle);
  }
}

void frmMainWindow::CommitPhotoName() {
  const std::string name = Trim(txtFileName.Text());
  if (name.empty()) {
    host().MsgBox(kNoFileName, kMbInformation, s_.gsAppTitle);
    ShowPhotoName(txtFileName.Tag());
    mbEditImageText = false;
    picImageListCont.SetFocus();
    return;
  }
  // A name pasted in may hold what typing refuses.
  if (name.find_first_of(kRefused) != std::string::npos) {
    host().MsgBox(kInvalidCharacters, kMbInformation, s_.gsAppTitle);
    return;
  }
  if (name.front() == '.') {
    host().MsgBox(kMustTypeName, kMbInformation, s_.gsAppTitle);
    return;
  }
  RenamePhoto(name);
}

void frmMainWindow::RenamePhoto(const std::string& new_base) {
  const std::string old_path = s_.gsSelectedImage;
  const std::string old_base = BaseName(old_path);
  // The photo's own folder: a rename never moves a photo elsewhere, even when
  // the photo came from the command line and the grid shows another folder.
  const std::string folder = ParentFolder(old_path);
  const std::string ext = ExtensionOf(old_path);
  const std::string new_path =
      folder + Trim(new_base) + (ext.empty() ? "" : "." + ext);

  auto put_old_name_back = [&] {
    ShowPhotoName(old_base);
    mbEditImageText = false;
  };
  if (UpperCase(new_path) == UpperCase(old_path)) {
    // A change of case alone is no rename.
    put_old_name_back();
    return;
  }
  const std::string exists_message =
      "Cannot rename " + old_base +
      ": A file with the name you specified already exists.";
  if (NameTaken(new_path)) {
    host().MsgBox(exists_message, kMbStop, kRenameCaption);
    put_old_name_back();
    return;
  }
  if (s_.gbHasAccessChecks &&
      CheckAccess(folder, kFileGenericWrite) != kFileGenericWrite) {
    host().MsgBox(AccessDenied(old_base), kMbStop, kRenameCaption);
    put_old_name_back();
    return;
  }
  FileResult moved = MoveFileNoReplace(old_path, new_path);
  if (!moved.ok()) {
    // Another program may have taken the name since the check above.
    host().MsgBox(NameTaken(new_path) ? exists_message : AccessDenied(old_base),
                  kMbStop, kRenameCaption);
    put_old_name_back();
    return;
  }
  if (s_.gbCacheEnable) {
    app_.images().DeleteThumbnailFile(old_path);
  }
  const int index = s_.giCurrentPhotoIndex;
  const std::string new_name = FileNamePart(new_path);
  if (ctrlQuilImage.Exists(index)) {
    Thumbnail& thumb = ctrlQuilImage[index];
    thumb.SetPhotoPath(new_path);
    thumb.SetToolTipText(new_name);
    thumb.SetToolText(new_name);
  }
  s_.gsSelectedImage = new_path;
  if (s_.gdicPhotoList.Exists(index)) {
    s_.gdicPhotoList.Set(index, new_path);
  }
  if (s_.gdicSelectedPhotos.Exists(index)) {
    s_.gdicSelectedPhotos.Set(index, new_path);
  }
  ShowPhotoName(BaseName(new_path));
  mbEditImageText = false;
}

}  // namespace qbpd
