#ifndef QBPD_UI_QT_QT_CONVERT_H_
#define QBPD_UI_QT_QT_CONVERT_H_

#include <QColor>
#include <QFont>
#include <QMessageBox>
#include <QRect>
#include <QString>

#include <string>

namespace qbpd {

struct Font;

// Conversions between the program's terms (twips, colours as 0x00BBGGRR,
// captions with "&" access keys, "text|pattern" filters, message box styles,
// SendKeys text) and Qt's. Free of widgets, so that they can be checked
// without a display.

// A mouse button as an event's Button (1 left, 2 right, 4 middle), the
// buttons held as their sum, and the modifiers as an event's Shift (1 Shift,
// 2 Ctrl, 4 Alt).
int ButtonOf(Qt::MouseButton button);
int ButtonsOf(Qt::MouseButtons buttons);
int ShiftOf(Qt::KeyboardModifiers modifiers);

// Twips to logical pixels and back (15 twips to a pixel; Qt's device pixel
// ratio takes care of high density).
int TwipsToPixels(int twips);
int PixelsToTwips(int pixels);
// A twips rectangle as pixels. Edges are rounded down on their own, so that
// controls that touch in twips touch on screen.
QRect PixelRect(int left, int top, int width, int height);

// A colour value of the program: 0x00BBGGRR. Values with the top bit set are
// the system's own colours; IsSystemColor says so and the widget keeps its
// palette then.
QColor ColorFromProgram(long value);
bool IsSystemColor(long value);

// A caption shown as plain text: the "&" before an access key is dropped and
// "&&" is one "&". Buttons and menus keep the "&"s, which Qt reads the same
// way.
QString PlainCaption(const std::string& caption);
// The text of a menu entry, with its shortcut shown after a tab.
QString MenuText(const std::string& caption, const std::string& shortcut);

// The program's font as a Qt font (size in points, bold).
QFont MakeQFont(const Font& font);

// A save dialog's filter, "JPEG (*.jpg)|*.jpg|Bitmap|*.bmp", as Qt writes
// it: "JPEG (*.jpg);;Bitmap (*.bmp)". A text that doesn't show its pattern
// gets it added in brackets; a lone text without a pattern is dropped.
QString QtFileFilter(const std::string& filter);

// What a message box style asks for.
struct MessageBoxLook {
  QMessageBox::Icon icon = QMessageBox::NoIcon;
  QMessageBox::StandardButtons buttons = QMessageBox::Ok;
  QMessageBox::StandardButton default_button = QMessageBox::Ok;
  QMessageBox::StandardButton escape_button = QMessageBox::Ok;
};
MessageBoxLook LookOfStyle(int style);
// The program's answer (kIdOk, kIdYes, ...) for a button pressed.
int AnswerOf(QMessageBox::StandardButton button);

// One key press as SendKeys text: "a", "{+}", "{ENTER}", "^c", "+{TAB}".
// `qt_key` is a Qt::Key, `text` what the key types. "" for a key the program
// has no name for (a lone modifier, a media key).
std::string SendKeysText(int qt_key,
                         Qt::KeyboardModifiers modifiers,
                         const QString& text);

// Offsets into a text: the program counts UTF-8 bytes, Qt UTF-16 units.
int Utf8Offset(const QString& text, int utf16_offset);
int Utf16Offset(const QString& text, int utf8_offset);

}  // namespace qbpd

#endif  // QBPD_UI_QT_QT_CONVERT_H_
