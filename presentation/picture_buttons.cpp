#include "presentation/picture_buttons.h"

#include "core/button_pictures.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

namespace qbpd {

void WirePictureButton(Form& form,
                       const Session& s,
                       PictureButton& button,
                       const std::string& number) {
  const Session* session = &s;
  PictureButton* b = &button;
  form.On(button.Name(), "MouseDown", [session, b, number](EventArgs& e) {
    if (e.Button == 1) {
      ShowButtonState(*session, *b, number, kPicturePressed);
    }
  });
  form.On(button.Name(), "MouseUp", [session, b, number](EventArgs&) {
    ShowButtonState(*session, *b, number, kPictureNormal);
  });
  form.On(button.Name(), "MouseMove", [session, b, number](EventArgs& e) {
    if (e.Button == 0) {
      ShowButtonState(*session, *b, number, kPictureHover);
    }
  });
  ShowButtonState(s, button, number, kPictureNormal);
}

}  // namespace qbpd
