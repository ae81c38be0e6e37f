#ifndef QBPD_PRESENTATION_PICTURE_BUTTONS_H_
#define QBPD_PRESENTATION_PICTURE_BUTTONS_H_

#include <string>

namespace qbpd {

class Form;
class PictureButton;
class Session;

// Gives a picture button of a presentation dialog its pressed, released and
// hover pictures (picture set `number`) by the usual convention, and shows
// its normal picture now.
void WirePictureButton(Form& form,
                       const Session& s,
                       PictureButton& button,
                       const std::string& number);

}  // namespace qbpd

#endif  // QBPD_PRESENTATION_PICTURE_BUTTONS_H_
