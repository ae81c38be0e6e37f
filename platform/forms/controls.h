#ifndef QBPD_PLATFORM_FORMS_CONTROLS_H_
#define QBPD_PLATFORM_FORMS_CONTROLS_H_

#include "platform/forms/control.h"
#include "platform/forms/display_control.h"

#include <memory>
#include <string>
#include <vector>

namespace qbpd {

// A static text. Alignment: 0 left, 1 right, 2 centre.
struct LabelState {
  std::string caption;
  int alignment = 0;
  bool word_wrap = false;
  bool transparent = true;
};
class Label : public StatefulControl<LabelState> {
 public:
  Label(Form& form, std::string name, int index = -1);
  const std::string& Caption() const { return state_.caption; }
  void SetCaption(const std::string& v);
  int Alignment() const { return state_.alignment; }
  void SetAlignment(int v);
  bool WordWrap() const { return state_.word_wrap; }
  void SetWordWrap(bool v);
  const PropertyTable& Properties() const override;
};

struct TextBoxState {
  std::string text;
  int max_length = 0;  // 0: no limit
  int sel_start = 0;
  int sel_length = 0;
  bool locked = false;
  std::string password_char;  // "" or one character shown for every one typed
  bool multi_line = false;
};
// An editable text. Setting Text raises Change when it differs and puts the
// caret at the end; MaxLength limits what the user types, not what the
// program sets.
class TextBox : public StatefulControl<TextBoxState> {
 public:
  TextBox(Form& form, std::string name, int index = -1);
  const std::string& Text() const { return state_.text; }
  void SetText(const std::string& v);
  int MaxLength() const { return state_.max_length; }
  void SetMaxLength(int v);
  int SelStart() const { return state_.sel_start; }
  void SetSelStart(int v);
  int SelLength() const { return state_.sel_length; }
  void SetSelLength(int v);
  std::string SelText() const;
  // Replaces the selection by `v` (as typing or a paste would) and puts the
  // caret behind it.
  void SetSelText(const std::string& v);
  bool Locked() const { return state_.locked; }
  void SetLocked(bool v);
  const std::string& PasswordChar() const { return state_.password_char; }
  void SetPasswordChar(const std::string& v);
  bool MultiLine() const { return state_.multi_line; }
  void SetMultiLine(bool v);
  // What a person sees: the text, or the password character repeated.
  std::string ShownText() const;
  const PropertyTable& Properties() const override;
};

// Value: 0 clear, 1 ticked, 2 greyed. Setting a new value raises Click.
struct CheckBoxState {
  std::string caption;
  int value = 0;
};
class CheckBox : public StatefulControl<CheckBoxState> {
 public:
  CheckBox(Form& form, std::string name, int index = -1);
  const std::string& Caption() const { return state_.caption; }
  void SetCaption(const std::string& v);
  int Value() const { return state_.value; }
  void SetValue(int v);
  const PropertyTable& Properties() const override;
};

// Setting Value to True clears the other option buttons of the same
// container and raises Click.
struct OptionButtonState {
  std::string caption;
  bool value = false;
};
class OptionButton : public StatefulControl<OptionButtonState> {
 public:
  OptionButton(Form& form, std::string name, int index = -1);
  const std::string& Caption() const { return state_.caption; }
  void SetCaption(const std::string& v);
  bool Value() const { return state_.value; }
  void SetValue(bool v);
  const PropertyTable& Properties() const override;
};

struct ListState {
  struct Item {
    std::string text;
    long data = 0;
    bool selected = false;  // the check mark of a check-box list
  };
  std::vector<Item> items;
  int list_index = -1;
  int new_index = -1;
  int style = 0;  // combo: 0 editable, 2 list only; list: 1 check marks
  std::string text;
};
// The common part of combo and list boxes: items with item data, the chosen
// entry, and check marks. Setting ListIndex to a new entry raises Click.
class ListControl : public StatefulControl<ListState> {
 public:
  ListControl(Form& form, ControlKind kind, std::string name, int index);
  // Adds an item at `at` (at the end when -1) and sets NewIndex.
  void AddItem(const std::string& text, int at = -1);
  // Removes item `i`; an index out of range is error 5.
  void RemoveItem(int i);
  void Clear();
  int ListCount() const { return static_cast<int>(state_.items.size()); }
  std::string List(int i) const;
  void SetList(int i, const std::string& v);
  long ItemData(int i) const;
  void SetItemData(int i, long v);
  bool Selected(int i) const;
  // Sets the check mark of item `i`; raises ItemCheck when it changes.
  void SetSelected(int i, bool v);
  int ListIndex() const { return state_.list_index; }
  void SetListIndex(int v);
  int NewIndex() const { return state_.new_index; }
  int Style() const { return state_.style; }
  void SetStyle(int v);
  // The chosen item's text (or what was typed, in an editable combo).
  const std::string& Text() const { return state_.text; }
  void SetText(const std::string& v);
  // The index of the first item whose text equals `text`, or -1.
  int FindItem(const std::string& text) const;
  const PropertyTable& Properties() const override;

 private:
  void CheckItem(int i) const;
};

class ComboBox : public ListControl {
 public:
  ComboBox(Form& form, std::string name, int index = -1);
};

class ListBox : public ListControl {
 public:
  ListBox(Form& form, std::string name, int index = -1);
};

// A push button. Default answers Enter anywhere on the form, Cancel answers
// Escape.
struct CommandButtonState {
  std::string caption;
  bool is_default = false;
  bool is_cancel = false;
};
class CommandButton : public StatefulControl<CommandButtonState> {
 public:
  CommandButton(Form& form, std::string name, int index = -1);
  const std::string& Caption() const { return state_.caption; }
  void SetCaption(const std::string& v);
  bool Default() const { return state_.is_default; }
  void SetDefault(bool v);
  bool Cancel() const { return state_.is_cancel; }
  void SetCancel(bool v);
  const PropertyTable& Properties() const override;
};

// An image that acts as a button: it shows the picture of the given name
// ("17N", "17D", "17O", "G3") from the program's picture set.
struct PictureState {
  std::string picture;
  bool stretch = false;
};
class PictureButton : public StatefulControl<PictureState> {
 public:
  PictureButton(Form& form, std::string name, int index = -1);
  const std::string& Picture() const { return state_.picture; }
  void SetPicture(const std::string& v);
  bool Stretch() const { return state_.stretch; }
  void SetStretch(bool v);
  const PropertyTable& Properties() const override;
};

// A container that may show a picture.
class PictureBox : public StatefulControl<PictureState> {
 public:
  PictureBox(Form& form, std::string name, int index = -1);
  const std::string& Picture() const { return state_.picture; }
  void SetPicture(const std::string& v);
  const PropertyTable& Properties() const override;
};

// A container with a caption.
struct FrameState {
  std::string caption;
  bool border = true;
};
class Frame : public StatefulControl<FrameState> {
 public:
  Frame(Form& form, std::string name, int index = -1);
  const std::string& Caption() const { return state_.caption; }
  void SetCaption(const std::string& v);
  bool Border() const { return state_.border; }
  void SetBorder(bool v);
  const PropertyTable& Properties() const override;
};

// Shape: 0 rectangle, 1 square, 2 oval, 3 circle, 4 rounded rectangle.
struct ShapeState {
  int shape = 0;
  long border_color = 0x000000;
  int border_width = 1;
  long fill_color = 0xFFFFFF;
  bool filled = false;
};
class Shape : public StatefulControl<ShapeState> {
 public:
  Shape(Form& form, std::string name, int index = -1);
  int ShapeKind() const { return state_.shape; }
  void SetShapeKind(int v);
  long BorderColor() const { return state_.border_color; }
  void SetBorderColor(long v);
  int BorderWidth() const { return state_.border_width; }
  void SetBorderWidth(int v);
  long FillColor() const { return state_.fill_color; }
  void SetFillColor(long v);
  bool Filled() const { return state_.filled; }
  void SetFilled(bool v);
  const PropertyTable& Properties() const override;
};

// A straight line from (X1, Y1) to (X2, Y2) in its container's twips.
struct LineState {
  int x1 = 0;
  int y1 = 0;
  int x2 = 0;
  int y2 = 0;
  long border_color = 0x000000;
  int border_width = 1;
};
class Line : public StatefulControl<LineState> {
 public:
  Line(Form& form, std::string name, int index = -1);
  int X1() const { return state_.x1; }
  void SetX1(int v);
  int Y1() const { return state_.y1; }
  void SetY1(int v);
  int X2() const { return state_.x2; }
  void SetX2(int v);
  int Y2() const { return state_.y2; }
  void SetY2(int v);
  long BorderColor() const { return state_.border_color; }
  void SetBorderColor(long v);
  const PropertyTable& Properties() const override;
};

// Raises Timer every Interval milliseconds while Enabled and Interval > 0.
// Enabling it, or changing the interval, starts a new period. A timer starts
// disabled unless the form enables it; the host schedules it.
struct TimerState {
  int interval = 0;
};
class Timer : public StatefulControl<TimerState> {
 public:
  Timer(Form& form, std::string name, int index = -1);
  ~Timer() override;
  int Interval() const { return state_.interval; }
  void SetInterval(int v);
  void SetEnabled(bool v) override;
  // Whether the host should be counting for it: enabled with an interval.
  bool IsRunning() const;
  const PropertyTable& Properties() const override;
};

// A menu entry. Its Container names the menu it belongs to ("" for a title
// of the menu bar). Caption holds "&" before the access key; "-" is a
// separator. Shortcut is the key as a person reads it ("Ctrl+D", "Del").
struct MenuState {
  std::string caption;
  std::string shortcut;
  bool checked = false;
};
class Menu : public StatefulControl<MenuState> {
 public:
  Menu(Form& form, std::string name, int index = -1);
  const std::string& Caption() const { return state_.caption; }
  void SetCaption(const std::string& v);
  const std::string& Shortcut() const { return state_.shortcut; }
  void SetShortcut(const std::string& v);
  bool Checked() const { return state_.checked; }
  void SetChecked(bool v);
  // The menu that holds this entry, or nullptr for a title.
  Menu* ParentMenu() const;
  // The entries of this menu, in the form's order.
  std::vector<Menu*> Entries() const;
  // The access key: the letter after a single "&", upper-cased, or 0.
  char AccessKey() const;
  const PropertyTable& Properties() const override;
};

// Setting a value outside Min..Max is ignored. A new value raises Change.
struct RangeState {
  int min = 0;
  int max = 100;
  int value = 0;
  int small_change = 1;
  int large_change = 1;
  bool vertical = true;
};
class RangeControl : public StatefulControl<RangeState> {
 public:
  RangeControl(Form& form, ControlKind kind, std::string name, int index);
  int Min() const { return state_.min; }
  void SetMin(int v);
  int Max() const { return state_.max; }
  void SetMax(int v);
  int Value() const { return state_.value; }
  void SetValue(int v);
  int SmallChange() const { return state_.small_change; }
  void SetSmallChange(int v);
  int LargeChange() const { return state_.large_change; }
  void SetLargeChange(int v);
  const PropertyTable& Properties() const override;

 protected:
  // Whether setting Value raises Change.
  virtual bool RaisesChange() const { return true; }
};

class ScrollBar : public RangeControl {
 public:
  ScrollBar(Form& form, std::string name, int index = -1);
  bool Vertical() const { return state_.vertical; }
  void SetVertical(bool v);
  const PropertyTable& Properties() const override;
};

class ProgressBar : public RangeControl {
 public:
  ProgressBar(Form& form, std::string name, int index = -1);

 protected:
  bool RaisesChange() const override { return false; }
};

class Slider : public RangeControl {
 public:
  Slider(Form& form, std::string name, int index = -1);
};

// Tabs counted from 1, as the tab strip does; selecting another raises Click.
struct TabStripState {
  std::vector<std::string> tabs;
  int selected = 0;  // 0: none
};
class TabStrip : public StatefulControl<TabStripState> {
 public:
  TabStrip(Form& form, std::string name, int index = -1);
  void AddTab(const std::string& caption);
  int TabCount() const { return static_cast<int>(state_.tabs.size()); }
  std::string TabCaption(int i) const;
  void SetTabCaption(int i, const std::string& v);
  int SelectedTab() const { return state_.selected; }
  void SetSelectedTab(int v);
  const PropertyTable& Properties() const override;
};

// One thumbnail of the grid: a picture with a check box and a frame for the
// current photo. Events: Click (Handled by reference), CheckClick, MouseMove.
struct ThumbnailState {
  int photo_index = 0;
  std::string photo_path;
  std::string thumbnail_file;
  std::string tool_text;
  bool checked = false;
  bool current = false;
};
class Thumbnail : public StatefulControl<ThumbnailState> {
 public:
  Thumbnail(Form& form, std::string name, int index = -1);
  int PhotoIndex() const { return state_.photo_index; }
  void SetPhotoIndex(int v);
  const std::string& PhotoPath() const { return state_.photo_path; }
  void SetPhotoPath(const std::string& v);
  // Shows the picture of a thumbnail file; "" clears it.
  void LoadThumbnail(const std::string& file);
  const std::string& ThumbnailFile() const { return state_.thumbnail_file; }
  // Acts as a click on the picture: raises Click, then marks it current.
  void SelectThumbnail();
  void MarkCurrent();
  // Takes the frame of the current photo off.
  void ReleaseThumbnail(bool unchecked);
  bool Current() const { return state_.current; }
  bool Checked() const { return state_.checked; }
  // Sets the check box, raising CheckClick only when `raise_event` is set.
  void SetCheck(bool value, bool raise_event);
  void SetToolText(const std::string& v);
  const std::string& ToolText() const { return state_.tool_text; }
  const PropertyTable& Properties() const override;
  // A member loaded from member 0 takes its look, not its photo: no picture,
  // no tick and no frame of the current photo.
  void CopyStateFrom(const Control& other) override;
};

// The photo view: the photo on display at its zoom. The program attaches the
// picture model (AttachDisplay); the operations below pass the control's size
// to it and forward. Without a model every operation fails (False, 0).
// Events: Click, MouseMove, MouseWheel, and the editor tools' CropTooSmall
// and RedEyeRemoved (see DisplayControl).
struct PhotoViewState {
  std::string photo_path;
  std::shared_ptr<DisplayControl> display;
  int back_red = 0;
  int back_green = 0;
  int back_blue = 0;
  int scale_base = 0;
};
class PhotoView : public StatefulControl<PhotoViewState> {
 public:
  PhotoView(Form& form, std::string name, int index = -1);
  ~PhotoView() override;
  PhotoView(const PhotoView&) = delete;
  PhotoView& operator=(const PhotoView&) = delete;
  void AttachDisplay(std::shared_ptr<DisplayControl> display);
  DisplayControl* Display() const { return state_.display.get(); }

  // The file last loaded with success; "" when none is shown.
  const std::string& PhotoPath() const { return state_.photo_path; }
  bool LoadPhoto(const std::string& path);
  // Tells the model the photos likely to be loaded next (see
  // DisplayControl::PrepareLoad), at the control's present size.
  void PrepareLoad(const std::vector<std::string>& paths);
  void ClearPhoto();
  bool ZoomFitToWidth();
  bool ZoomTo(int percent);
  int ZoomPercent() const;
  bool RotateView(int degrees);
  int PhotoWidth() const;
  int PhotoHeight() const;

  // The editor's operations (see DisplayControl).
  bool SetCropAspect(int aspect_x, int aspect_y);
  void ClearEdit();
  void BeginRedEye(int mode, int option);
  bool ShowCorrected();
  void ShowOriginal();
  int FinishCorrection(bool write, const std::string& path);
  bool SaveShownPhoto(const std::string& path);
  bool SaveCropped(const std::string& path);

  int BackRed() const { return state_.back_red; }
  void SetBackRed(int v);
  int BackGreen() const { return state_.back_green; }
  void SetBackGreen(int v);
  int BackBlue() const { return state_.back_blue; }
  void SetBackBlue(int v);
  int ScaleBase() const { return state_.scale_base; }
  void SetScaleBase(int v);
  const PropertyTable& Properties() const override;

 private:
  // Tells the model the control's present size in pixels.
  void PassSize() const;
};

// The folder tree. Setting SelectedFolder raises FolderClick with the folder
// in EventArgs::Text, as a click on it would.
struct FolderTreeState {
  std::string selected_folder;
  unsigned refreshes = 0;
};
class FolderTree : public StatefulControl<FolderTreeState> {
 public:
  FolderTree(Form& form, std::string name, int index = -1);
  const std::string& SelectedFolder() const { return state_.selected_folder; }
  void SetSelectedFolder(const std::string& v);
  // Re-reads the folders below the tree's roots.
  void Refresh();
  unsigned Refreshes() const { return state_.refreshes; }
  const PropertyTable& Properties() const override;
};

// The screensaver player: plays a list of photos at an interval, each
// change of photo by one of the transitions its effect codes name ("3001",
// "2007", "7002", "2000" joined by ">"). A key or the mouse on it raises
// UserInput.
struct ScreensaverPlayerState {
  std::vector<std::string> files;
  int interval_seconds = 5;
  bool playing = false;
  std::string ini_path;
  std::string section;
  std::string effects;
};
class ScreensaverPlayer : public StatefulControl<ScreensaverPlayerState> {
 public:
  ScreensaverPlayer(Form& form, std::string name, int index = -1);
  void SetFiles(std::vector<std::string> files);
  const std::vector<std::string>& Files() const { return state_.files; }
  int FileCount() const { return static_cast<int>(state_.files.size()); }
  std::string File(int i) const;
  int IntervalSeconds() const { return state_.interval_seconds; }
  void SetIntervalSeconds(int v);
  bool Playing() const { return state_.playing; }
  void Play();
  // Plays the section `section` of the screensaver store at `ini_path`, whose
  // photos the caller has given with SetFiles.
  void Play(const std::string& ini_path,
            int interval_seconds,
            const std::string& section,
            const std::string& effects);
  const std::string& IniPath() const { return state_.ini_path; }
  const std::string& Section() const { return state_.section; }
  const std::string& Effects() const { return state_.effects; }
  void Stop();
  const PropertyTable& Properties() const override;
};

// A browser view inside a form. Navigate sets LocationURL and raises
// NavigateComplete with the address in EventArgs::Text.
struct WebViewState {
  std::string location_url;
};
class WebView : public StatefulControl<WebViewState> {
 public:
  WebView(Form& form, std::string name, int index = -1);
  const std::string& LocationURL() const { return state_.location_url; }
  void Navigate(const std::string& url);
  const PropertyTable& Properties() const override;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_CONTROLS_H_
