#ifndef QBPD_UI_QT_GENERIC_WIDGETS_H_
#define QBPD_UI_QT_GENERIC_WIDGETS_H_

#include "ui/qt/control_widget.h"

#include <QPixmap>
#include <QSize>

#include <memory>
#include <string>

class QWidget;

namespace qbpd {

class Control;
class FormWindow;

// The widget of a control of the standard kinds (labels, text boxes,
// buttons, lists, scroll bars, frames, pictures, shapes, ...). What a person
// does to it reaches the program as user_input.h describes, through
// `window`, which keeps the windows in step afterwards. Null for kinds that
// have no widget (timers, menus) and for the kinds with widgets of their own.
std::unique_ptr<ControlWidget> MakeGenericWidget(Control& control,
                                                 QWidget* parent,
                                                 FormWindow& window);

// The file that shows picture `file`: the file itself, or the SVG of the
// same name when the PNG is missing. "" when neither exists.
std::string PictureFile(const std::string& file);

// Picture `file` (PNG or SVG) drawn for `size` logical pixels at the device
// pixel ratio `ratio`, its proportions kept unless `stretch`. A null pixmap
// when the file can't be read. An empty `size` gives the picture's own size.
QPixmap RenderPicture(const std::string& file,
                      QSize size,
                      qreal ratio,
                      bool stretch);

}  // namespace qbpd

#endif  // QBPD_UI_QT_GENERIC_WIDGETS_H_
