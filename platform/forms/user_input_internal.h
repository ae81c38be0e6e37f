#ifndef QBPD_PLATFORM_FORMS_USER_INPUT_INTERNAL_H_
#define QBPD_PLATFORM_FORMS_USER_INPUT_INTERNAL_H_

#include <string>
#include <string_view>

namespace qbpd {

class Control;
class Form;

// What the files of the user's actions share (user_input.cpp for the keys
// and controls, user_mouse.cpp for points of a control, user_answers.cpp for
// shortcuts, message boxes and pop-up menus).
namespace user::detail {

void RequireNotBehindModal(const Form& f, const std::string& what);
// Hidden, disabled, on a hidden form or behind a modal one: a HostAbort.
void RequireReachable(const Control& c);
bool TakesFocus(const Control& c);
void RaiseMouse(Control& c, std::string_view event, int button, int x, int y);
// What a left click does after the mouse went up: a check box toggles, an
// option is chosen, a thumbnail selected, and Click is raised.
void ClickEffect(Control& control);

}  // namespace user::detail
}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_USER_INPUT_INTERNAL_H_
