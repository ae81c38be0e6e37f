#ifndef QBPD_PLATFORM_FORMS_USER_INPUT_H_
#define QBPD_PLATFORM_FORMS_USER_INPUT_H_

#include <string>
#include <string_view>

namespace qbpd {

class Control;
class Form;
class Menu;
struct KeyStroke;

// What a person can do to a form, raising the events a window system raises,
// in its order. A host turns real input into these calls; the scripted host
// and tests call them directly. Acting on a control that a person couldn't
// reach (hidden, disabled, on a hidden form, or behind a modal one) is a
// HostAbort that names it.
namespace user {

// Mouse down, mouse up, Click; a check box toggles, an option button is
// chosen, a thumbnail is selected, a command button or text box takes the
// focus first.
void Click(Control& control);
// Click, then DblClick.
void DblClick(Control& control);
// Mouse events with (x, y) in twips from the control's corner.
void MouseDown(Control& control, int button, int x, int y);
void MouseUp(Control& control, int button, int x, int y);
void MouseMove(Control& control, int x, int y, int buttons = 0);

// A point of a control where a person points the mouse: (x, y) in twips from
// the control's corner, or, with `photo`, in photo pixels of a photo view's
// upright photo (fractions kept), placed as the desktop view places it: the
// photo centred where it is smaller than the view, scroll bars where it is
// larger, scrolled to its top-left (the scripted view doesn't scroll).
struct ControlPoint {
  double x = 0;
  double y = 0;
  bool photo = false;
};
// Where a point lands: twips from the control's corner and, on a photo view,
// the photo point that the whole view pixel under the mouse stands for.
struct PointOnControl {
  int x = 0;  // twips
  int y = 0;
  bool on_photo_view = false;
  double photo_x = 0;
  double photo_y = 0;
};
// A point a person can point at: on the control, and on a photo view inside
// the part of the photo on view. Otherwise a HostAbort that says what the
// control or the view shows.
PointOnControl Locate(Control& control, const ControlPoint& point);

// A left click at a point: MouseDown and MouseUp there, then what Click does
// (a check box toggles, ...). On a photo view the press is first offered to
// the editor's tools, in photo pixels; a tool that takes it gets the release
// and no Click is raised.
void ClickAt(Control& control, const ControlPoint& point);
// ClickAt, then DblClick.
void DblClickAt(Control& control, const ControlPoint& point);
// Presses the left button at `from`, moves in `steps` equal moves to `to`
// with the button held, and lets go there. Points stay where the mouse was
// on the screen when the drag began: a control that moves under the mouse
// (a splitter) gets each event relative to its new place, as a window system
// reports them. Click follows when the button is let go over the control (on
// a photo view: over its drawing area, and no tool took the press).
void Drag(Control& control,
          const ControlPoint& from,
          const ControlPoint& to,
          int steps);
// A mouse move with no button held, as the pointer passes over a point.
void Hover(Control& control, const ControlPoint& point);

// Gives the focus to `control` and types `keys` (SendKeys syntax) into it:
// KeyDown, KeyPress, the edit a text box makes, Change, KeyUp for each key,
// with the form first when it has KeyPreview. Enter clicks the form's
// default button and Escape its cancel button.
void TypeKeys(Control& control, std::string_view keys);
// Presses `keys` on the form's focused control, or on the form alone.
// Each key that is the Shortcut of one of the form's menu entries opens the
// menus above that entry (their Click runs) and, when the entry is then
// visible and enabled, picks it; a shortcut whose entry is disabled or
// hidden reaches the controls as an ordinary key. A focused text box keeps
// its editing keys (Ctrl+A, C, V, X, Y, Z, Delete, Backspace, Home, End and
// the side arrows) whatever shortcuts the menus have, as on the desktop.
void PressKeys(Form& form, std::string_view keys);
// The menu-shortcut step of a key press: true when an entry took the key.
bool PressShortcut(Form& form, const KeyStroke& key);

// Keys pressed on an open message box of `style`, as a person presses them:
// the focus starts on the default button; Tab, Right and Down move it on,
// Shift+Tab, Left and Up back; Enter or Space presses the focused button;
// Escape presses Cancel (OK on a box with OK alone, nothing on a box without
// Cancel); a letter (with Alt or not) presses the button it underlines
// (Yes, No, Abort, Retry, Ignore). Returns the button pressed, or 0 when the
// keys pressed none. Keys after the one that closed the box are a
// RuntimeError, as they would go to a window the script didn't foresee.
int MessageBoxKeys(int style, std::string_view keys);
// Keys pressed on an open pop-up menu: Down and Up move the highlight over
// the visible, enabled entries (wrapping; from nothing Down takes the first
// and Up the last), Home and End take the first and last; Enter, Space or
// Right on an entry with entries of its own opens it (its Click runs) and
// highlights its first; Enter or Space on any other entry picks it (Click);
// a letter picks (or opens) the entry with that access key; Left or Escape
// in an opened entry goes back, and Escape at the top dismisses the menu.
// Keys that leave it open, or keys after it closed, are a RuntimeError.
void PopupKeys(Menu& popup, std::string_view keys);

// Chooses a list or combo entry by its index or by its text.
void ChooseItem(Control& list, int index);
void ChooseItem(Control& list, const std::string& text);
// Sets the check mark of a list entry (a list with check marks).
void CheckItem(Control& list, int index, bool checked);
// Ticks or clears a check box, or a thumbnail's check box.
void SetCheck(Control& control, bool checked);
// Moves a scroll bar or slider to `value`: Scroll, then Change.
void ScrollTo(Control& control, int value);
// Chooses a tab, counted from 1.
void SelectTab(Control& tab_strip, int tab);
// Clicks a folder in the folder tree.
void SelectFolder(Control& tree, const std::string& folder);
// Opens the menus above `entry` (each raises Click, as opening a menu does)
// and clicks it; a disabled or hidden entry (after the opening) is a
// HostAbort.
void PickMenu(Menu& entry);
// Closes the form with its close box: QueryUnload with the user's mode.
void CloseForm(Form& form);

}  // namespace user
}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_USER_INPUT_H_
