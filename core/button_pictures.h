#ifndef QBPD_CORE_BUTTON_PICTURES_H_
#define QBPD_CORE_BUTTON_PICTURES_H_

#include <string>
#include <string_view>

namespace qbpd {

class PictureButton;
class Session;

// The states of a picture button, by the letter that ends its picture's
// name: "26N" normal, "26D" pressed, "26O" under the mouse.
inline constexpr char kPictureNormal = 'N';
inline constexpr char kPicturePressed = 'D';
inline constexpr char kPictureHover = 'O';

// The file of picture `name` of the "BUTTON" category. Before the branded
// resources are made (goResources is empty) the name alone comes back, so
// that a form shown that early still says which picture it wants.
std::string ButtonPicture(const Session& s, std::string_view name);

// Shows the picture of button number `number` in `state` on `button`.
void ShowButtonState(const Session& s,
                     PictureButton& button,
                     std::string_view number,
                     char state);

}  // namespace qbpd

#endif  // QBPD_CORE_BUTTON_PICTURES_H_
