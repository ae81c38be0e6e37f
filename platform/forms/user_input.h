#ifndef QBPD_PLATFORM_FORMS_USER_INPUT_H_
#define QBPD_PLATFORM_FORMS_USER_INPUT_H_

#include <string>
#include <string_view>

namespace qbpd {

class Control;
class Form;
class Menu;

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
void MouseMove(Control& control, int x, int y);

// Gives the focus to `control` and types `keys` (SendKeys syntax) into it:
// KeyDown, KeyPress, the edit a text box makes, Change, KeyUp for each key,
// with the form first when it has KeyPreview. Enter clicks the form's
// default button and Escape its cancel button.
void TypeKeys(Control& control, std::string_view keys);
// Presses `keys` on the form's focused control, or on the form alone.
void PressKeys(Form& form, std::string_view keys);

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
