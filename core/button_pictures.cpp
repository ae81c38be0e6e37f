#include "core/button_pictures.h"

#include "core/session.h"
#include "platform/forms/controls.h"

namespace qbpd {

std::string ButtonPicture(const Session& s, std::string_view name) {
  if (!s.goResources) {
    return std::string(name);
  }
  return s.goResources->Picture(name, "BUTTON");
}

void ShowButtonState(const Session& s,
                     PictureButton& button,
                     std::string_view number,
                     char state) {
  std::string name(number);
  name += state;
  const std::string picture = ButtonPicture(s, name);
  // Moving the mouse over a button raises many events; only a change of
  // state changes the control.
  if (button.Picture() != picture) {
    button.SetPicture(picture);
  }
}

}  // namespace qbpd
