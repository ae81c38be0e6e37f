#ifndef QBPD_UI_QT_QT_CLIPBOARD_H_
#define QBPD_UI_QT_QT_CLIPBOARD_H_

#include "platform/clipboard.h"

#include <memory>

namespace qbpd {

// The desktop's clipboard (QClipboard): a photo copied here can be pasted in
// another program, and a picture copied there can be pasted here as a new
// JPEG file. Needs a QGuiApplication. The rules of platform/clipboard.h hold:
// decoding is bounded, and a written file appears whole or not at all and
// never replaces another.
std::unique_ptr<Clipboard> MakeQtClipboard();

}  // namespace qbpd

#endif  // QBPD_UI_QT_QT_CLIPBOARD_H_
