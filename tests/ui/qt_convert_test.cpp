#include "ui/qt/qt_convert.h"

#include "platform/forms/host.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

TEST(QtConvertTest, CaptionsDropTheAccessKeyMarkAndKeepDoubledAmpersands) {
  struct Case {
    const char* caption;
    const char* shown;
  } cases[] = {
      {"&File", "File"},
      {"Holiday && Home", "Holiday & Home"},
      {"Holiday && Home &1", "Holiday & Home 1"},
      {"E&xit", "Exit"},
      {"&&&Save", "&Save"},
      {"trailing &", "trailing "},  // a lone mark at the end shows nothing
      {"", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(PlainCaption(c.caption).toStdString(), c.shown) << c.caption;
  }
}

TEST(QtConvertTest, TwipsRoundDownSoThatTouchingControlsTouchOnScreen) {
  // 1585 twips is 105.67 pixels: a control there starts at 105, and the one
  // that ends there ends at 105 too.
  QRect left = PixelRect(0, 0, 1585, 300);
  QRect right = PixelRect(1585, 0, 1500, 300);
  EXPECT_EQ(left.x() + left.width(), right.x());
  EXPECT_EQ(PixelRect(15, 30, 150, 45), QRect(1, 2, 10, 3));
  // A panel scrolled up inside its container keeps whole steps.
  EXPECT_EQ(PixelRect(0, -1655, 100, 1655).y(), -111);
  EXPECT_EQ(PixelRect(0, 0, -30, 10).width(), 0);
  EXPECT_EQ(PixelsToTwips(TwipsToPixels(3000)), 3000);
}

TEST(QtConvertTest, ColoursAreBlueGreenRedAndSystemColoursAreLeftAlone) {
  EXPECT_EQ(ColorFromProgram(0x0000FF), QColor(255, 0, 0));
  EXPECT_EQ(ColorFromProgram(0xFF0000), QColor(0, 0, 255));
  EXPECT_EQ(ColorFromProgram(0x00CECE), QColor(0xCE, 0xCE, 0));
  EXPECT_TRUE(IsSystemColor(0x8000000FL));
  EXPECT_FALSE(IsSystemColor(0xFFFFFF));
}

TEST(QtConvertTest, FiltersBecomeQtFilters) {
  EXPECT_EQ(QtFileFilter("JPEG (*.jpg)|*.jpg").toStdString(), "JPEG (*.jpg)");
  EXPECT_EQ(QtFileFilter("JPEG (*.jpg)|*.jpg|Bitmap|*.bmp").toStdString(),
            "JPEG (*.jpg);;Bitmap (*.bmp)");
  // Several patterns in one pair are separated by blanks for Qt.
  EXPECT_EQ(QtFileFilter("Pictures|*.jpg;*.jpeg").toStdString(),
            "Pictures (*.jpg *.jpeg)");
  EXPECT_EQ(QtFileFilter("Pictures (*.jpg;*.jpeg)|*.jpg;*.jpeg").toStdString(),
            "Pictures (*.jpg *.jpeg)");
  EXPECT_EQ(QtFileFilter("no pattern").toStdString(), "");
  EXPECT_EQ(QtFileFilter("").toStdString(), "");
}

TEST(QtConvertTest, MessageBoxStylesGiveTheirIconButtonsAndDefault) {
  MessageBoxLook info = LookOfStyle(kMbInformation);
  EXPECT_EQ(info.icon, QMessageBox::Information);
  EXPECT_EQ(info.buttons, QMessageBox::Ok);
  MessageBoxLook stop = LookOfStyle(kMbStop);
  EXPECT_EQ(stop.icon, QMessageBox::Critical);
  EXPECT_EQ(stop.buttons, QMessageBox::Ok);
  MessageBoxLook question = LookOfStyle(kMbQuestionYesNo);
  EXPECT_EQ(question.icon, QMessageBox::Question);
  EXPECT_EQ(question.buttons, QMessageBox::Yes | QMessageBox::No);
  EXPECT_EQ(question.default_button, QMessageBox::Yes);
  EXPECT_EQ(question.escape_button, QMessageBox::No);
  MessageBoxLook replace = LookOfStyle(kMbQuestionYesNoDefaultNo);
  EXPECT_EQ(replace.icon, QMessageBox::Question);
  EXPECT_EQ(replace.default_button, QMessageBox::No);
  // Plain 0: OK alone, no icon.
  EXPECT_EQ(LookOfStyle(kMbOk).icon, QMessageBox::NoIcon);
  EXPECT_EQ(AnswerOf(QMessageBox::Yes), kIdYes);
  EXPECT_EQ(AnswerOf(QMessageBox::No), kIdNo);
  EXPECT_EQ(AnswerOf(QMessageBox::Ok), kIdOk);
}

TEST(QtConvertTest, KeyPressesBecomeSendKeysText) {
  struct Case {
    int key;
    Qt::KeyboardModifiers modifiers;
    QString text;
    std::string keys;
  } cases[] = {
      {Qt::Key_A, Qt::NoModifier, "a", "a"},
      {Qt::Key_A, Qt::ShiftModifier, "A", "A"},
      {Qt::Key_Return, Qt::NoModifier, "\r", "{ENTER}"},
      {Qt::Key_Enter, Qt::KeypadModifier, "\r", "{ENTER}"},
      {Qt::Key_Escape, Qt::NoModifier, "\x1b", "{ESC}"},
      {Qt::Key_Backspace, Qt::NoModifier, "\b", "{BACKSPACE}"},
      {Qt::Key_F1, Qt::NoModifier, "", "{F1}"},
      {Qt::Key_Left, Qt::NoModifier, "", "{LEFT}"},
      {Qt::Key_Tab, Qt::ShiftModifier, "", "+{TAB}"},
      {Qt::Key_Backtab, Qt::ShiftModifier, "", "+{TAB}"},
      // Ctrl+D types a control character; the key names it.
      {Qt::Key_D, Qt::ControlModifier, "\x04", "^d"},
      {Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier, "\x13", "+^s"},
      // SendKeys' own signs are typed in braces.
      {Qt::Key_Plus, Qt::ShiftModifier, "+", "{+}"},
      {Qt::Key_ParenLeft, Qt::ShiftModifier, "(", "{(}"},
      {Qt::Key_AsciiTilde, Qt::ShiftModifier, "~", "{~}"},
      {Qt::Key_Eacute, Qt::NoModifier, QString::fromUtf8("é"), "é"},
      // A character beyond the 16-bit range arrives whole.
      {Qt::Key_unknown, Qt::NoModifier, QString::fromUtf8("😀"), "😀"},
      // A modifier alone types nothing.
      {Qt::Key_Shift, Qt::ShiftModifier, "", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(SendKeysText(c.key, c.modifiers, c.text), c.keys) << c.keys;
  }
}

TEST(QtConvertTest, OffsetsConvertBetweenUtf8BytesAndUtf16Units) {
  QString text = QString::fromUtf8("aé€b");  // 1 + 2 + 3 + 1 bytes
  EXPECT_EQ(Utf8Offset(text, 0), 0);
  EXPECT_EQ(Utf8Offset(text, 2), 3);
  EXPECT_EQ(Utf8Offset(text, 4), 7);
  EXPECT_EQ(Utf16Offset(text, 3), 2);
  EXPECT_EQ(Utf16Offset(text, 6), 3);
  // Out of range is held at the ends.
  EXPECT_EQ(Utf8Offset(text, 99), 7);
  EXPECT_EQ(Utf16Offset(text, -4), 0);
}

}  // namespace
}  // namespace qbpd
