// The program's own component controls: the thumbnail, the folder tree, the
// screensaver player and the web view.
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/property_tables.h"

#include <algorithm>

namespace qbpd {

// --- Thumbnail -----------------------------------------------------------

Thumbnail::Thumbnail(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kThumbnail, std::move(name), index) {}

void Thumbnail::CopyStateFrom(const Control& other) {
  StatefulControl::CopyStateFrom(other);
  state_ = ThumbnailState{};
  Changed();
}

void Thumbnail::SetPhotoIndex(int v) {
  state_.photo_index = v;
  Changed();
}
void Thumbnail::SetPhotoPath(const std::string& v) {
  state_.photo_path = v;
  Changed();
}
void Thumbnail::LoadThumbnail(const std::string& file) {
  state_.thumbnail_file = file;
  Changed();
}

void Thumbnail::SelectThumbnail() {
  EventArgs e;
  Raise("Click", e);
  MarkCurrent();
}

void Thumbnail::MarkCurrent() {
  state_.current = true;
  Changed();
}

void Thumbnail::ReleaseThumbnail(bool unchecked) {
  (void)unchecked;  // the check box is drawn from Checked either way
  state_.current = false;
  Changed();
}

void Thumbnail::SetCheck(bool value, bool raise_event) {
  state_.checked = value;
  Changed();
  if (raise_event) {
    Raise("CheckClick");
  }
}

void Thumbnail::SetToolText(const std::string& v) {
  state_.tool_text = v;
  Changed();
}

const PropertyTable& Thumbnail::Properties() const {
  static const PropertyTable table = WithCommon(
      {RwProperty("PhotoIndex", &Thumbnail::PhotoIndex,
                  &Thumbnail::SetPhotoIndex),
       RwProperty("PhotoPath", &Thumbnail::PhotoPath, &Thumbnail::SetPhotoPath),
       RoProperty("ThumbnailFile", &Thumbnail::ThumbnailFile),
       RoProperty("Checked", &Thumbnail::Checked),
       RoProperty("Current", &Thumbnail::Current),
       RoProperty("ToolText", &Thumbnail::ToolText)},
      CommonProperties());
  return table;
}

// --- FolderTree ----------------------------------------------------------

FolderTree::FolderTree(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kFolderTree, std::move(name), index) {}

void FolderTree::SetSelectedFolder(const std::string& v) {
  state_.selected_folder = v;
  Changed();
  EventArgs e;
  e.Text = v;
  Raise("FolderClick", e);
}

void FolderTree::Refresh() {
  ++state_.refreshes;
  Changed();
}

const PropertyTable& FolderTree::Properties() const {
  static const PropertyTable table =
      WithCommon({RwProperty("SelectedFolder", &FolderTree::SelectedFolder,
                             &FolderTree::SetSelectedFolder)},
                 CommonProperties());
  return table;
}

// --- ScreensaverPlayer ---------------------------------------------------

ScreensaverPlayer::ScreensaverPlayer(Form& form, std::string name, int index)
    : StatefulControl(form,
                      ControlKind::kScreensaverPlayer,
                      std::move(name),
                      index) {}

void ScreensaverPlayer::SetFiles(std::vector<std::string> files) {
  state_.files = std::move(files);
  Changed();
}

std::string ScreensaverPlayer::File(int i) const {
  CheckRange(i, FileCount(), *this);
  return state_.files[i];
}

void ScreensaverPlayer::SetIntervalSeconds(int v) {
  state_.interval_seconds = v;
  Changed();
}

void ScreensaverPlayer::Play() {
  state_.playing = true;
  Changed();
}

void ScreensaverPlayer::Play(const std::string& ini_path,
                             int interval_seconds,
                             const std::string& section,
                             const std::string& effects) {
  state_.ini_path = ini_path;
  state_.interval_seconds = interval_seconds;
  state_.section = section;
  state_.effects = effects;
  Play();
}

void ScreensaverPlayer::Stop() {
  state_.playing = false;
  Changed();
}

const PropertyTable& ScreensaverPlayer::Properties() const {
  static const PropertyTable table = WithCommon(
      {RoProperty("FileCount", &ScreensaverPlayer::FileCount),
       IndexedRoProperty("File", &ScreensaverPlayer::File),
       RwProperty("IntervalSeconds", &ScreensaverPlayer::IntervalSeconds,
                  &ScreensaverPlayer::SetIntervalSeconds),
       RoProperty("Playing", &ScreensaverPlayer::Playing),
       RoProperty("IniPath", &ScreensaverPlayer::IniPath),
       RoProperty("Section", &ScreensaverPlayer::Section),
       RoProperty("Effects", &ScreensaverPlayer::Effects)},
      CommonProperties());
  return table;
}

// --- WebView -------------------------------------------------------------

WebView::WebView(Form& form, std::string name, int index)
    : StatefulControl(form, ControlKind::kWebView, std::move(name), index) {}

void WebView::Navigate(const std::string& url) {
  state_.location_url = url;
  Changed();
  EventArgs e;
  e.Text = url;
  Raise("NavigateComplete", e);
}

const PropertyTable& WebView::Properties() const {
  static const PropertyTable table = WithCommon(
      {RoProperty("LocationURL", &WebView::LocationURL)}, CommonProperties());
  return table;
}

}  // namespace qbpd
