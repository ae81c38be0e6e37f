// The desktop host on a form of its own, built only from the form's controls:
// widgets at their geometry, typing through the program's key filter, menus
// with their opening rule and shortcuts, the close box, resizing, message
// boxes, modal forms, timers and control arrays.
#include "ui/qt/form_window.h"

#include "core/application.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/launcher.h"
#include "platform/places.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/qt_convert.h"
#include "ui/qt/qt_host.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCursor>
#include <QElapsedTimer>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QWindow>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace qbpd {
namespace {

class frmProbeDialog : public Form {
 public:
  static constexpr std::string_view kName = "frmProbeDialog";
  explicit frmProbeDialog(Host& host) : Form(host, "frmProbeDialog") {
    SetCaption("Probe dialog");
    Move(0, 0, 3000, 1500);
    cmdClose.Move(100, 100, 1200, 400);
    cmdClose.SetCaption("Close");
    On("cmdClose", "Click", [this](EventArgs&) { Hide(); });
  }
  CommandButton cmdClose{*this, "cmdClose"};
};

class frmProbe : public Form {
 public:
  static constexpr std::string_view kName = "frmProbe";
  frmProbe(Host& host, FormSet& forms) : Form(host, "frmProbe"), forms_(forms) {
    SetCaption("Probe");
    Move(0, 0, 6000, 4500);
    fraBox.Move(300, 300, 3000, 1500);
    fraBox.SetCaption("Size && Shape");
    lblInside.SetContainer("fraBox");
    lblInside.Move(150, 400, 2000, 300);
    lblInside.SetCaption("&Inside");
    txtDigits.Move(300, 2000, 2000, 330);
    txtFree.Move(300, 3800, 2000, 330);
    chkKeep.Move(300, 2500, 2000, 300);
    chkKeep.SetCaption("Keep open");
    cmdOK.Move(3600, 2000, 1200, 400);
    cmdOK.SetCaption("OK");
    cmdOK.SetDefault(true);
    cmdAsk.Move(3600, 2500, 1200, 400);
    cmdAsk.SetCaption("Ask");
    cmdDialog.Move(3600, 3000, 1200, 400);
    cmdDialog.SetCaption("Dialog");
    vsbPage.Move(5000, 0, 255, 1800);
    vsbPage.SetMax(40);
    vsbPage.SetLargeChange(5);
    lblPage.Move(300, 3000, 1000, 300);
    lblStatus.Move(300, 3400, 3000, 300);
    lblItem[0].Move(3600, 300, 1000, 300);
    lblItem[0].SetCaption("item 0");
    mnuFile.SetCaption("&File");
    mnuFCount.SetContainer("mnuFile");
    mnuFCount.SetCaption("&Count");
    mnuFCount.SetShortcut("Ctrl+K");
    mnuFSep.SetContainer("mnuFile");
    mnuFSep.SetCaption("-");
    mnuFSecret.SetContainer("mnuFile");
    mnuFSecret.SetCaption("Secret");
    mnuFSecret.SetVisible(false);
    tmrTick.SetEnabled(false);
    On("txtDigits", "KeyPress", [](EventArgs& e) {
      bool digit = e.KeyAscii >= '0' && e.KeyAscii <= '9';
      if (!digit && e.KeyAscii >= 32) {
        e.KeyAscii = 0;
      }
    });
    On("cmdOK", "Click",
       [this](EventArgs&) { lblStatus.SetCaption("ok " + txtDigits.Text()); });
    On("cmdAsk", "Click", [this](EventArgs&) {
      answer = host_ref().MsgBox("Replace it?", kMbQuestionYesNoDefaultNo,
                                 "Probe title");
    });
    On("cmdDialog", "Click", [this](EventArgs&) {
      forms_.Get(frmProbeDialog::kName).Show(/*modal=*/true);
      // Reached only once the dialog has gone.
      lblStatus.SetCaption("dialog closed");
    });
    On("vsbPage", "Change", [this](EventArgs&) {
      lblPage.SetCaption(std::to_string(vsbPage.Value()));
    });
    On("mnuFile", "Click", [this](EventArgs&) {
      ++file_opens;
      // The opening rule: Count is on only while Keep open is ticked off.
      mnuFCount.SetEnabled(chkKeep.Value() == 0);
    });
    On("mnuFCount", "Click", [this](EventArgs&) { ++count_clicks; });
    On("tmrTick", "Timer", [this](EventArgs&) {
      if (++ticks == 3) {
        tmrTick.SetEnabled(false);
      }
    });
  }

  Frame fraBox{*this, "fraBox"};
  Label lblInside{*this, "lblInside"};
  TextBox txtDigits{*this, "txtDigits"};
  TextBox txtFree{*this, "txtFree"};
  CheckBox chkKeep{*this, "chkKeep"};
  CommandButton cmdOK{*this, "cmdOK"};
  CommandButton cmdAsk{*this, "cmdAsk"};
  CommandButton cmdDialog{*this, "cmdDialog"};
  ScrollBar vsbPage{*this, "vsbPage"};
  Label lblPage{*this, "lblPage"};
  Label lblStatus{*this, "lblStatus"};
  ControlArray<Label> lblItem{*this, "lblItem"};
  Menu mnuFile{*this, "mnuFile"};
  Menu mnuFCount{*this, "mnuFCount"};
  Menu mnuFSep{*this, "mnuFSep"};
  Menu mnuFSecret{*this, "mnuFSecret"};
  Timer tmrTick{*this, "tmrTick"};

  int file_opens = 0;
  int count_clicks = 0;
  int ticks = 0;
  int resizes = 0;
  int answer = 0;

 protected:
  void Form_Load() override { Show(); }
  void Form_Resize() override { ++resizes; }
  void Form_QueryUnload(int& Cancel, int) override {
    if (chkKeep.Value() == 1) {
      Cancel = 1;
    }
  }

 private:
  Host& host_ref() { return host(); }
  FormSet& forms_;
};

class FormWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    testing::EnsureQtApplication();
    auto owned = std::make_unique<QtHost>();
    host_ = owned.get();
    PlatformServices services;
    services.resources = FindResourcesFolder(services.places);
    app_ = std::make_unique<Application>(
        std::move(owned), std::move(services), [](Application& app) {
          FormSet* forms = &app.forms();
          Host* host = &app.host();
          app.forms().Register<frmProbe>([host, forms] {
            return std::make_unique<frmProbe>(*host, *forms);
          });
          app.forms().Register<frmProbeDialog>(
              [host] { return std::make_unique<frmProbeDialog>(*host); });
          app.SetEntryForm("frmProbe");
        });
    Application* app = app_.get();
    host_->SetIdleHook([app] { app->forms().CollectGarbage(); });
    app_->Start("");
    probe_ = app_->forms().Find<frmProbe>();
    ASSERT_NE(probe_, nullptr);
    window_ = host_->WindowOf(*probe_);
    ASSERT_NE(window_, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window_));
  }

  void TearDown() override {
    app_->End();
    app_.reset();
    QCoreApplication::processEvents();
  }

  QWidget* WidgetFor(const Control& c) {
    ControlWidget* w = window_->WidgetOf(c);
    return w != nullptr ? w->widget() : nullptr;
  }

  QtHost* host_ = nullptr;
  std::unique_ptr<Application> app_;
  frmProbe* probe_ = nullptr;
  FormWindow* window_ = nullptr;
};

TEST_F(FormWindowTest,
       WidgetsStandAtTheirControlsGeometryInsideTheirContainers) {
  EXPECT_EQ(window_->windowTitle(), "Probe");
  EXPECT_EQ(window_->size(), QSize(400, 300));
  for (Control* c : probe_->Controls()) {
    if (c->Kind() == ControlKind::kMenu || c->Kind() == ControlKind::kTimer) {
      EXPECT_EQ(WidgetFor(*c), nullptr) << c->DisplayName();
      continue;
    }
    QWidget* w = WidgetFor(*c);
    ASSERT_NE(w, nullptr) << c->DisplayName();
    EXPECT_EQ(w->geometry(),
              PixelRect(c->Left(), c->Top(), c->Width(), c->Height()))
        << c->DisplayName();
  }
  // The label inside the frame is the frame's child, placed from its corner.
  EXPECT_EQ(WidgetFor(probe_->lblInside)->parentWidget(),
            WidgetFor(probe_->fraBox));
  EXPECT_EQ(
      WidgetFor(probe_->lblInside)->mapTo(window_->client(), QPoint(0, 0)),
      QPoint(20 + 10, 20 + 26));
  auto* label = qobject_cast<QLabel*>(WidgetFor(probe_->lblInside));
  ASSERT_NE(label, nullptr);
  EXPECT_EQ(label->text(), "Inside");
  // The menu bar: one title; a separator; the hidden entry is not shown.
  ASSERT_EQ(window_->menu_bar()->actions().size(), 1);
  EXPECT_EQ(window_->menu_bar()->actions()[0]->text(), "&File");
  EXPECT_TRUE(window_->ActionOf(probe_->mnuFSep)->isSeparator());
  EXPECT_FALSE(window_->ActionOf(probe_->mnuFSecret)->isVisible());
  EXPECT_EQ(window_->ActionOf(probe_->mnuFCount)->text(), "&Count\tCtrl+K");
  testing::SaveScreenshot(window_, "generic_form");
}

TEST_F(FormWindowTest,
       TypingGoesThroughTheProgramsKeyFilterAndEnterClicksDefault) {
  auto* edit = qobject_cast<QLineEdit*>(WidgetFor(probe_->txtDigits));
  ASSERT_NE(edit, nullptr);
  QTest::keyClicks(edit, "1a2b3");
  EXPECT_EQ(probe_->txtDigits.Text(), "123");
  EXPECT_EQ(edit->text(), "123");
  EXPECT_EQ(probe_->ActiveControl(), &probe_->txtDigits);
  QTest::keyClick(edit, Qt::Key_Backspace);
  EXPECT_EQ(probe_->txtDigits.Text(), "12");
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(probe_->lblStatus.Caption(), "ok 12");
  // Characters that mean something to SendKeys arrive as typed; so do
  // characters beyond ASCII, and the caret moves with the arrows.
  auto* free = qobject_cast<QLineEdit*>(WidgetFor(probe_->txtFree));
  ASSERT_NE(free, nullptr);
  QTest::keyClicks(free, "a+(b)~{");
  QKeyEvent accented(QEvent::KeyPress, Qt::Key_Eacute, Qt::NoModifier,
                     QString::fromUtf8("é"));
  QApplication::sendEvent(free, &accented);
  QTest::keyClicks(free, "}");
  EXPECT_EQ(probe_->txtFree.Text(), "a+(b)~{é}");
  QTest::keyClick(free, Qt::Key_Home);
  QTest::keyClick(free, Qt::Key_Right);
  QTest::keyClicks(free, "X");
  EXPECT_EQ(probe_->txtFree.Text(), "aX+(b)~{é}");
  EXPECT_EQ(free->text(), QString::fromUtf8("aX+(b)~{é}"));
  EXPECT_EQ(free->cursorPosition(), 2);
  EXPECT_EQ(qobject_cast<QLabel*>(WidgetFor(probe_->lblStatus))->text(),
            "ok 12");
}

TEST_F(FormWindowTest, ProgramChangesShowAndUserChangesRaiseEvents) {
  auto* box = qobject_cast<QCheckBox*>(WidgetFor(probe_->chkKeep));
  ASSERT_NE(box, nullptr);
  QTest::mouseClick(box, Qt::LeftButton);
  EXPECT_EQ(probe_->chkKeep.Value(), 1);
  EXPECT_TRUE(box->isChecked());
  auto* bar = qobject_cast<QScrollBar*>(WidgetFor(probe_->vsbPage));
  ASSERT_NE(bar, nullptr);
  bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
  EXPECT_EQ(probe_->vsbPage.Value(), 5);
  EXPECT_EQ(probe_->lblPage.Caption(), "5");
  // The program's own change reaches the widget without an event back.
  probe_->Dispatch("test", [this] { probe_->vsbPage.SetValue(30); });
  host_->AfterEvent();
  EXPECT_EQ(bar->value(), 30);
  EXPECT_EQ(probe_->lblPage.Caption(), "30");
  // Hidden and disabled follow.
  probe_->Dispatch("test", [this] {
    probe_->cmdAsk.SetVisible(false);
    probe_->cmdOK.SetEnabled(false);
  });
  host_->AfterEvent();
  EXPECT_FALSE(WidgetFor(probe_->cmdAsk)->isVisible());
  EXPECT_FALSE(WidgetFor(probe_->cmdOK)->isEnabled());
}

TEST_F(FormWindowTest, OpeningAMenuRunsItsClickBeforeItShowsAndShortcutsPick) {
  QAction* file = window_->ActionOf(probe_->mnuFile);
  ASSERT_NE(file, nullptr);
  ASSERT_NE(file->menu(), nullptr);
  file->menu()->popup(window_->mapToGlobal(QPoint(0, 0)));
  EXPECT_EQ(probe_->file_opens, 1);
  window_->ActionOf(probe_->mnuFCount)->trigger();
  file->menu()->hide();
  EXPECT_EQ(probe_->count_clicks, 1);

  // The shortcut opens the menu above (its rule runs) and picks the entry.
  window_->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
  QTest::keyClick(window_, Qt::Key_K, Qt::ControlModifier);
  EXPECT_EQ(probe_->file_opens, 2);
  EXPECT_EQ(probe_->count_clicks, 2);
  // With Keep open ticked the rule turns Count off: the shortcut does
  // nothing more than open the menu.
  QTest::mouseClick(WidgetFor(probe_->chkKeep), Qt::LeftButton);
  QTest::keyClick(window_, Qt::Key_K, Qt::ControlModifier);
  EXPECT_EQ(probe_->file_opens, 3);
  EXPECT_EQ(probe_->count_clicks, 2);
  EXPECT_FALSE(window_->ActionOf(probe_->mnuFCount)->isEnabled());
}

TEST_F(FormWindowTest, TheCloseBoxAsksTheFormWhichMayRefuse) {
  QTest::mouseClick(WidgetFor(probe_->chkKeep), Qt::LeftButton);
  window_->close();
  EXPECT_TRUE(window_->isVisible());
  EXPECT_TRUE(probe_->IsLoaded());
  QTest::mouseClick(WidgetFor(probe_->chkKeep), Qt::LeftButton);
  QPointer<FormWindow> window(window_);
  window_->close();
  EXPECT_EQ(app_->forms().Find<frmProbe>(), nullptr);
  EXPECT_TRUE(QTest::qWaitFor([&window] { return window.isNull(); }, 2000));
  EXPECT_TRUE(window.isNull());
}

TEST_F(FormWindowTest, ResizingTheWindowResizesTheForm) {
  int before = probe_->resizes;
  window_->resize(600, 420);
  QCoreApplication::processEvents();
  EXPECT_EQ(probe_->Width(), 9000);
  EXPECT_EQ(probe_->Height(), 6300);
  EXPECT_GT(probe_->resizes, before);
  // And the program's size reaches the window.
  probe_->Dispatch("test", [this] { probe_->Move(0, 0, 7500, 4500); });
  host_->AfterEvent();
  EXPECT_EQ(window_->size(), QSize(500, 300));
}

TEST_F(FormWindowTest, MessageBoxShowsTheStyleAndReturnsTheAnswer) {
  testing::SeenMessageBox seen;
  testing::AnswerNextMessageBox(QMessageBox::Yes, &seen);
  QTest::mouseClick(WidgetFor(probe_->cmdAsk), Qt::LeftButton);
  EXPECT_TRUE(seen.shown);
  EXPECT_EQ(seen.text, "Replace it?");
  EXPECT_EQ(seen.title, "Probe title");
  EXPECT_EQ(seen.icon, QMessageBox::Question);
  EXPECT_EQ(seen.default_button, QMessageBox::No);
  EXPECT_EQ(probe_->answer, kIdYes);
}

TEST_F(FormWindowTest, AModalFormHoldsItsCallerUntilItIsHidden) {
  QTimer::singleShot(100, [this] {
    auto* dialog = app_->forms().Find<frmProbeDialog>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(host_->ModalForm(), dialog);
    EXPECT_EQ(probe_->lblStatus.Caption(), "");
    FormWindow* w = host_->WindowOf(*dialog);
    ASSERT_NE(w, nullptr);
    EXPECT_TRUE(w->isModal());
    // It stays above the window that opened it.
    ASSERT_NE(w->windowHandle(), nullptr);
    EXPECT_EQ(w->windowHandle()->transientParent(), window_->windowHandle());
    QTest::mouseClick(w->WidgetOf(dialog->cmdClose)->widget(), Qt::LeftButton);
  });
  QTest::mouseClick(WidgetFor(probe_->cmdDialog), Qt::LeftButton);
  EXPECT_EQ(probe_->lblStatus.Caption(), "dialog closed");
  EXPECT_EQ(host_->ModalForm(), nullptr);
}

// A call that waits unnoticed (the photo view's decoding): Qt's own timers
// run, the program's timer and what the window tells its form wait until
// the event in hand is over; a timer that came due meanwhile fires once.
TEST_F(FormWindowTest, AWaitUnnoticedHoldsTimersAndFormRequestsToTheEnd) {
  int qt_ticks = 0;
  QTimer qt_timer;
  QObject::connect(&qt_timer, &QTimer::timeout, [&qt_ticks] { ++qt_ticks; });
  qt_timer.start(5);
  int program_ticks_during = -1;
  int qt_ticks_during = 0;
  bool request_ran = false;
  bool request_ran_during = false;
  bool waiting = false;
  probe_->Dispatch("test", [&] {
    probe_->tmrTick.SetInterval(5);
    probe_->tmrTick.SetEnabled(true);
    const int before = probe_->ticks;
    waiting = true;
    // A request the window makes of its form while the call waits.
    QTimer::singleShot(10, [&] {
      window_->ActOnForm([&] {
        request_ran = true;
        request_ran_during = waiting;
      });
    });
    QElapsedTimer clock;
    clock.start();
    host_->WaitUnnoticed([&] { return clock.elapsed() >= 150; });
    waiting = false;
    program_ticks_during = probe_->ticks - before;
    qt_ticks_during = qt_ticks;
  });
  EXPECT_EQ(program_ticks_during, 0);
  EXPECT_GE(qt_ticks_during, 1);
  EXPECT_TRUE(QTest::qWaitFor([this] { return probe_->ticks >= 3; }, 3000));
  EXPECT_TRUE(request_ran);
  EXPECT_FALSE(request_ran_during);
}

// A wait on another thread (a photo view made on a decoding thread) holds
// nothing of the window's thread and pumps none of its events.
TEST_F(FormWindowTest, AWaitOnAnotherThreadHoldsNothing) {
  std::atomic<bool> release{false};
  std::atomic<bool> waited{false};
  std::thread other([&] {
    host_->WaitUnnoticed([&] { return release.load(); });
    waited = true;
  });
  probe_->Dispatch("test", [this] {
    probe_->tmrTick.SetInterval(5);
    probe_->tmrTick.SetEnabled(true);
  });
  EXPECT_TRUE(QTest::qWaitFor([this] { return probe_->ticks >= 3; }, 3000));
  EXPECT_FALSE(host_->Holding());
  release = true;
  other.join();
  EXPECT_TRUE(waited);
}

TEST_F(FormWindowTest, TimersTickAndControlArrayMembersComeAndGo) {
  probe_->Dispatch("test", [this] {
    probe_->tmrTick.SetInterval(20);
    probe_->tmrTick.SetEnabled(true);
  });
  EXPECT_TRUE(QTest::qWaitFor([this] { return probe_->ticks >= 3; }, 3000));
  QTest::qWait(100);
  EXPECT_EQ(probe_->ticks, 3);  // it stopped itself

  probe_->Dispatch("test", [this] {
    Label& item = probe_->lblItem.Load(1);
    item.Move(3600, 700, 1000, 300);
    item.SetCaption("item 1");
    item.SetVisible(true);
  });
  host_->AfterEvent();
  QWidget* member = WidgetFor(probe_->lblItem[1]);
  ASSERT_NE(member, nullptr);
  EXPECT_EQ(qobject_cast<QLabel*>(member)->text(), "item 1");
  EXPECT_TRUE(member->isVisible());
  QPointer<QWidget> gone(member);
  probe_->Dispatch("test", [this] { probe_->lblItem.Unload(1); });
  host_->AfterEvent();
  EXPECT_TRUE(QTest::qWaitFor([&gone] { return gone.isNull(); }, 2000));
  EXPECT_TRUE(gone.isNull());
}

TEST_F(FormWindowTest, TheHostsServicesAreTheDesktops) {
  // Text width in the control's real font, in twips; bold is wider.
  Font plain{8.25, false};
  Font bold{8.25, true};
  QWidget* label = WidgetFor(probe_->lblStatus);
  int measured = QFontMetrics(label->font()).horizontalAdvance("Hello world");
  EXPECT_NEAR(host_->TextWidth("Hello world", plain), measured * 15, 15);
  EXPECT_GT(host_->TextWidth("Hello world", bold),
            host_->TextWidth("Hello world", plain));
  EXPECT_GT(host_->TextWidth("Hello world", Font{16, false}),
            host_->TextWidth("Hello world", plain));
  EXPECT_GT(host_->ScreenWidth(), 0);
  EXPECT_EQ(host_->ScreenWidth() % kTwipsPerPixel, 0);

  // The hourglass is the application's wait cursor.
  host_->SetMousePointer(kPointerHourglass);
  ASSERT_NE(QApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
  host_->SetMousePointer(kPointerDefault);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);

  // Sleep keeps the events coming, and the clock moves with it.
  bool fired = false;
  QTimer::singleShot(10, [&fired] { fired = true; });
  long long before = host_->TickCount();
  host_->Sleep(80);
  EXPECT_TRUE(fired);
  EXPECT_GE(host_->TickCount() - before, 75);

  // Keys sent arrive at the active form after the current event: F1 opens
  // the help at the form's topic.
  auto* launcher = dynamic_cast<RecordingLauncher*>(&app_->launcher());
  ASSERT_NE(launcher, nullptr);
  probe_->Dispatch("test", [this] { host_->SendKeys("{F1}"); });
  EXPECT_TRUE(launcher->Opened().empty());
  EXPECT_TRUE(QTest::qWaitFor(
      [launcher] { return !launcher->Opened().empty(); }, 2000));
}

}  // namespace
}  // namespace qbpd
