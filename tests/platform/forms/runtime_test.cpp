#include "core/application.h"
#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/keys.h"
#include "platform/forms/runtime_error.h"
#include "platform/forms/scripted_host.h"
#include "platform/forms/user_input.h"
#include "tests/support/fixture_program.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

using testing::frmFixture;
using testing::frmFixtureDialog;

// A fresh application on the scripted host, running the fixture program.
class RuntimeTest : public ::testing::Test {
 protected:
  RuntimeTest() {
    auto host = std::make_unique<ScriptedHost>();
    host_ = host.get();
    app_ = std::make_unique<Application>(std::move(host), PlatformServices{},
                                         testing::RegisterFixtureProgram);
    host_->SetIdleHook([this] { app_->forms().CollectGarbage(); });
    app_->Start("");
  }

  frmFixture& main() { return app_->forms().Get<frmFixture>(); }

  ScriptedHost* host_;
  std::unique_ptr<Application> app_;
};

TEST_F(RuntimeTest, TimersFireInVirtualTimeInDueOrder) {
  // tmrOnce (200 ms) stops itself; tmrTick repeats every 1000 ms.
  host_->Advance(199);
  EXPECT_EQ(main().lblStatus.Caption(), "");
  host_->Advance(1);
  EXPECT_EQ(main().lblStatus.Caption(), "ready");
  EXPECT_FALSE(main().tmrOnce.Enabled());
  host_->Advance(2799);
  EXPECT_EQ(main().lblTicks.Caption(), "2");
  host_->Advance(1);
  EXPECT_EQ(main().lblTicks.Caption(), "3");
  EXPECT_EQ(host_->TickCount(), 3000);
}

TEST_F(RuntimeTest, IntervalChangedInsideHandlerStartsNewPeriod) {
  std::vector<long long> fired;
  main().On("tmrTick", "Timer", [&](EventArgs&) {
    fired.push_back(host_->TickCount());
    if (fired.size() == 1) {
      main().tmrTick.SetInterval(300);
    }
    if (fired.size() == 3) {
      main().tmrTick.SetEnabled(false);
    }
  });
  host_->Advance(5000);
  EXPECT_EQ(fired, (std::vector<long long>{1000, 1300, 1600}));
}

TEST_F(RuntimeTest, TimerDoesNotReenterItsOwnHandler) {
  int depth = 0;
  int max_depth = 0;
  int calls = 0;
  main().On("tmrTick", "Timer", [&](EventArgs&) {
    ++calls;
    max_depth = std::max(max_depth, ++depth);
    if (calls == 1) {
      host_->Sleep(3500);  // pumps while virtual time passes
    }
    --depth;
  });
  host_->Advance(1000);
  EXPECT_EQ(max_depth, 1);
  // The ticks due during the sleep fire once the handler has returned.
  host_->Advance(1000);
  EXPECT_GE(calls, 2);
}

TEST_F(RuntimeTest, CancelClickArrivesInsideBlockingCall) {
  host_->QueueInside("cancel", [&] { user::Click(main().cmdCancel); });
  user::Click(main().cmdWork);
  EXPECT_EQ(main().lblStatus.Caption(), "cancelled");
  // Without a cancel the loop runs to its end.
  user::Click(main().cmdWork);
  EXPECT_EQ(main().lblStatus.Caption(), "finished");
}

TEST_F(RuntimeTest, MessageBoxAnsweredAndRecorded) {
  host_->QueueMsgBoxAnswer("no", [](const MsgBoxCall&) { return kIdNo; });
  user::Click(main().cmdAsk);
  EXPECT_EQ(main().lblAnswer.Caption(), "No");
  ASSERT_EQ(host_->MessageBoxes().size(), 1u);
  EXPECT_EQ(host_->MessageBoxes()[0].prompt, "Do you like it?");
  EXPECT_EQ(host_->MessageBoxes()[0].style, 36);
  EXPECT_EQ(host_->MessageBoxes()[0].title, "Fixture");
}

TEST_F(RuntimeTest, UnexpectedMessageBoxAbortsNamingIt) {
  host_->Queue("something else", [] {});
  try {
    user::Click(main().cmdAsk);
    FAIL() << "no abort";
  } catch (const HostAbort& e) {
    EXPECT_EQ(e.message(),
              "Unexpected message box \"Do you like it?\" (style 36, caption "
              "\"Fixture\"); the next step is: something else");
  }
}

TEST_F(RuntimeTest, AnswerWithoutMessageBoxAborts) {
  host_->QueueMsgBoxAnswer("yes please", [](const MsgBoxCall&) { return 6; });
  try {
    host_->Run();
    FAIL() << "no abort";
  } catch (const HostAbort& e) {
    EXPECT_NE(e.message().find("yes please"), std::string::npos);
  }
}

TEST_F(RuntimeTest, ModalDialogRunsNestedLoopAndItsFieldsDie) {
  host_->Queue("type", [&] {
    auto* dialog = app_->forms().Find<frmFixtureDialog>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->IsModal());
    EXPECT_EQ(host_->ModalForm(), dialog);
    user::TypeKeys(dialog->txtValue, "abc");
  });
  // The main form can't be reached behind the modal dialog.
  host_->Queue("click behind",
               [&] { EXPECT_THROW(user::Click(main().cmdAsk), HostAbort); });
  host_->Queue("ok", [&] {
    user::Click(app_->forms().Find<frmFixtureDialog>()->cmdOK);
  });
  user::Click(main().cmdDialog);
  EXPECT_EQ(main().lblStatus.Caption(), "dialog: abc");
  EXPECT_EQ(app_->forms().Find<frmFixtureDialog>(), nullptr);
  EXPECT_EQ(host_->ModalForm(), nullptr);
  // A new use makes a new form: the typed text is gone.
  EXPECT_EQ(app_->forms().Get<frmFixtureDialog>().txtValue.Text(), "");
}

TEST_F(RuntimeTest, NestedModalFormsCloseInnermostFirst) {
  std::vector<std::string> modal_seen;
  auto dialog = [&] { return app_->forms().Find<frmFixtureDialog>(); };
  host_->Queue("open the note", [&] {
    modal_seen.push_back(host_->ModalForm()->Name());
    user::Click(dialog()->cmdNote);
  });
  host_->Queue("dialog is behind the note", [&] {
    modal_seen.push_back(host_->ModalForm()->Name());
    EXPECT_THROW(user::Click(dialog()->cmdOK), HostAbort);
  });
  host_->Queue("close the note", [&] {
    user::Click(app_->forms().Find<testing::frmFixtureNote>()->cmdClose);
  });
  host_->Queue("back in the dialog", [&] {
    modal_seen.push_back(host_->ModalForm()->Name());
    EXPECT_EQ(dialog()->lblPrompt.Caption(), "note read");
    user::PressKeys(*dialog(), "{ESC}");
  });
  user::Click(main().cmdDialog);
  EXPECT_EQ(modal_seen,
            (std::vector<std::string>{"frmFixtureDialog", "frmFixtureNote",
                                      "frmFixtureDialog"}));
  EXPECT_EQ(main().lblStatus.Caption(), "dialog cancelled");
  EXPECT_EQ(host_->ModalForm(), nullptr);
}

TEST_F(RuntimeTest, ModalFormStillOpenAtEndOfScriptAborts) {
  try {
    user::Click(main().cmdDialog);
    FAIL() << "no abort";
  } catch (const HostAbort& e) {
    EXPECT_EQ(e.message(),
              "Form frmFixtureDialog is still shown modal after the last step");
  }
}

TEST_F(RuntimeTest, QueryUnloadRefusesClose) {
  user::SetCheck(main().chkKeepOpen, true);
  user::CloseForm(main());
  EXPECT_EQ(main().lblStatus.Caption(), "close refused");
  EXPECT_TRUE(app_->IsRunning());
  user::SetCheck(main().chkKeepOpen, false);
  user::CloseForm(*app_->forms().Find("frmFixture"));
  EXPECT_FALSE(app_->IsRunning());
}

TEST_F(RuntimeTest, TimersStopWhenTheirFormUnloads) {
  main().Unload();
  app_->forms().CollectGarbage();
  host_->Advance(10000);  // would touch a destroyed timer if still scheduled
  EXPECT_FALSE(app_->IsRunning());
}

TEST_F(RuntimeTest, FailingHandlerIsSwallowedAndRecorded) {
  main().On("cmdAsk", "Click", [](EventArgs&) {
    throw RuntimeError(kErrSubscript, "Subscript out of range");
  });
  user::Click(main().cmdAsk);
  ASSERT_EQ(host_->FailedHandlers().size(), 1u);
  EXPECT_EQ(host_->FailedHandlers()[0],
            "frmFixture.cmdAsk_Click: Subscript out of range");
}

TEST_F(RuntimeTest, AMemberUnloadedInItsOwnEventLivesUntilTheEventEnds) {
  auto& qty = main().txtQty;
  TextBox& fourth = qty.Load(4);
  fourth.SetVisible(true);
  // The handler unloads the member whose event it is, and loads a new one
  // under the same index, as re-reading a folder does.
  bool done = false;
  main().On("txtQty", "Change", [&](EventArgs& e) {
    if (e.Index == 4 && !done) {
      done = true;
      qty.Unload(4);
      qty.Load(4).SetText("new");
    }
  });
  // The event goes on with the old member (Change, then KeyUp); the sanitizer
  // build sees any use of a destroyed one.
  user::TypeKeys(fourth, "7");
  ASSERT_TRUE(qty.Exists(4));
  EXPECT_EQ(qty[4].Text(), "new");
  EXPECT_EQ(&main().control("txtQty", 4), &qty[4]);
  qty.Unload(4);
  EXPECT_EQ(main().FindControl("txtQty", 4), nullptr);
}

TEST_F(RuntimeTest, ControlArraysLoadCopyAndUnload) {
  auto& qty = main().txtQty;
  EXPECT_EQ(qty.Count(), 3);
  qty[0].SetMaxLength(3);
  qty[0].SetToolTipText("quantity");
  TextBox& fifth = qty.Load(5);
  EXPECT_EQ(fifth.MaxLength(), 3);
  EXPECT_EQ(fifth.ToolTipText(), "quantity");
  EXPECT_FALSE(fifth.Visible());
  EXPECT_EQ(&main().control("txtQty", 5), &fifth);
  EXPECT_EQ(qty.UBound(), 5);

  struct Case {
    std::function<void()> call;
    int number;
  };
  for (const Case& c : std::vector<Case>{
           {[&] { qty.Load(5); }, kErrElementExists},
           {[&] { qty[4]; }, kErrNoSuchControl},
           {[&] { qty.Unload(0); }, kErrInvalidCall},
           {[&] { qty.Unload(4); }, kErrNoSuchControl},
       }) {
    try {
      c.call();
      ADD_FAILURE() << "no error";
    } catch (const RuntimeError& e) {
      EXPECT_EQ(e.number(), c.number) << e.what();
    }
  }
  qty.Unload(5);
  EXPECT_EQ(main().FindControl("txtQty", 5), nullptr);
  // Events of every member reach the one handler with the index.
  user::TypeKeys(qty[1], "4");
  EXPECT_EQ(main().lblStatus.Caption(), "qty 1: 4");
}

TEST_F(RuntimeTest, ReflectionReadsAndWritesEveryPropertyByName) {
  Control& combo = main().control("cboSize");
  EXPECT_EQ(combo.Property("ListCount").ToLong(), 3);
  EXPECT_EQ(combo.Property("List", 2).ToText(), "8 x 10");
  EXPECT_EQ(combo.Property("itemdata", 2).ToLong(), 20);  // any case
  combo.SetProperty("ListIndex", 1);
  EXPECT_EQ(combo.Property("Text").ToText(), "5 x 7");

  // Setting Text through reflection raises Change, as the program expects.
  main().control("txtName").SetProperty("Text", "Ann");
  EXPECT_EQ(main().lblStatus.Caption(), "name: Ann");
  // An option set by the program clears its neighbours and raises Click.
  main().control("optSmall").SetProperty("Value", true);
  main().control("optLarge").SetProperty("Value", "True");
  EXPECT_FALSE(main().optSmall.Value());
  EXPECT_EQ(main().lblStatus.Caption(), "large");

  try {
    main().control("lblAnswer").Property("Text");
    FAIL();
  } catch (const RuntimeError& e) {
    EXPECT_EQ(std::string(e.what()), "Label lblAnswer has no property Text");
  }
  try {
    main().control("lblNope");
    FAIL();
  } catch (const RuntimeError& e) {
    EXPECT_EQ(std::string(e.what()), "Form frmFixture has no control lblNope");
  }
  EXPECT_THROW(combo.SetProperty("ListCount", 4), RuntimeError);
  EXPECT_EQ(main().Property("Caption").ToText(), "Fixture");
}

TEST_F(RuntimeTest, EveryKindHasCommonPropertiesAndSettableOwnOnes) {
  // Each kind declares its table once; reading back what was set through
  // reflection must give the same value for every writable plain property
  // that takes text or numbers without side effects on others.
  for (Control* c : main().Controls()) {
    for (const PropertyInfo& p : c->Properties()) {
      if (p.indexed) {
        continue;
      }
      Value v = c->Property(p.name);  // every readable property reads
      (void)v;
    }
    EXPECT_NE(c->FindProperty("Visible"), nullptr) << c->DisplayName();
    EXPECT_NE(c->FindProperty("Tag"), nullptr) << c->DisplayName();
  }
  main().control("lblTicks").SetProperty("Left", 1234);
  EXPECT_EQ(main().lblTicks.Left(), 1234);
}

TEST_F(RuntimeTest, TypingFollowsKeyPressFiltersAndMaxLength) {
  user::TypeKeys(main().txtName, "Jo3hn{LEFT}{LEFT}{DEL}X");
  // "John" typed (3 refused), caret moved back twice, "h" deleted, X typed.
  EXPECT_EQ(main().txtName.Text(), "JoXn");
  main().txtName.SetSelStart(0);
  main().txtName.SetSelLength(2);
  user::TypeKeys(main().txtName, "Z");
  EXPECT_EQ(main().txtName.Text(), "ZXn");
  main().txtName.SetLocked(true);
  user::TypeKeys(main().txtName, "q");
  EXPECT_EQ(main().txtName.Text(), "ZXn");
}

TEST_F(RuntimeTest, AccentedLettersTypeAndKeyDownCanSwallowAKey) {
  std::vector<int> pressed;
  main().On("txtName", "KeyPress",
            [&pressed](EventArgs& e) { pressed.push_back(e.KeyAscii); });
  // "ë" has no key code of its own; it is pressed and typed all the same.
  user::TypeKeys(main().txtName, "Zoë");
  EXPECT_EQ(main().txtName.Text(), "Zoë");
  ASSERT_EQ(pressed.size(), 3u);
  EXPECT_EQ(pressed.back(), 0xEB);
  // A KeyDown handler that zeroes the code takes the key away.
  main().On("txtName", "KeyDown", [](EventArgs& e) {
    if (e.KeyCode == 'Q') {
      e.KeyCode = 0;
    }
  });
  user::TypeKeys(main().txtName, "q!");
  EXPECT_EQ(main().txtName.Text(), "Zoë!");
}

TEST_F(RuntimeTest, MenusOpenTheirParentsAndRefuseDisabledEntries) {
  EXPECT_EQ(main().mnuFile.AccessKey(), 'F');
  EXPECT_EQ(main().mnuFRecent[1].AccessKey(), '1');
  // Ask, Save, Recent(0..2).
  EXPECT_EQ(main().mnuFile.Entries().size(), 5u);
  // Opening mnuFile runs its Click, which disables Ask while work runs.
  host_->QueueInside("pick while working", [&] {
    EXPECT_THROW(user::PickMenu(main().mnuFAsk), HostAbort);
    user::Click(main().cmdCancel);
  });
  user::Click(main().cmdWork);
  host_->QueueMsgBoxAnswer("yes", [](const MsgBoxCall&) { return kIdYes; });
  user::PickMenu(main().mnuFAsk);
  EXPECT_EQ(main().lblAnswer.Caption(), "Yes");
}

TEST_F(RuntimeTest, HiddenOrDisabledControlsCannotBeClicked) {
  main().cmdAsk.SetEnabled(false);
  EXPECT_THROW(user::Click(main().cmdAsk), HostAbort);
  main().cmdAsk.SetEnabled(true);
  main().fraOptions.SetVisible(false);
  EXPECT_THROW(user::Click(main().optSmall), HostAbort);
}

TEST_F(RuntimeTest, SendKeysReachesTheActiveFormAtTheNextPump) {
  main().txtName.SetFocus();
  host_->SendKeys("ab");
  EXPECT_EQ(main().txtName.Text(), "");
  host_->DoEvents();
  EXPECT_EQ(main().txtName.Text(), "ab");
}

TEST(KeysTest, ParsesSendKeysSyntax) {
  struct Case {
    std::string keys;
    std::vector<int> codes;
    std::vector<int> ascii;
  };
  for (const Case& c : std::vector<Case>{
           {"aB", {'A', 'B'}, {'a', 'B'}},
           {"{F1}", {kKeyF1}, {0}},
           {"{BACKSPACE 2}~", {8, 8, 13}, {8, 8, 13}},
           {"^v", {'V'}, {22}},  // Ctrl+V types code 22
           {"{{}", {0}, {'{'}},
           {"é", {0}, {0xE9}},
       }) {
    std::vector<KeyStroke> keys = ParseKeys(c.keys);
    ASSERT_EQ(keys.size(), c.codes.size()) << c.keys;
    for (size_t i = 0; i < keys.size(); ++i) {
      EXPECT_EQ(keys[i].ascii, c.ascii[i]) << c.keys;
      if (c.codes[i] != 0) {
        EXPECT_EQ(keys[i].key_code, c.codes[i]) << c.keys;
      }
    }
  }
  EXPECT_THROW(ParseKeys("{NOPE}"), RuntimeError);
  EXPECT_THROW(ParseKeys("{F1"), RuntimeError);
}

TEST(ScriptedHostTest, TextWidthMetricCanBeReplaced) {
  ScriptedHost host;
  EXPECT_EQ(host.TextWidth("abcd", Font{}), 4 * 7 * kTwipsPerPixel);
  EXPECT_EQ(host.TextWidth("éé", Font{}), 2 * 7 * kTwipsPerPixel);
  host.SetTextMetric([](std::string_view t, const Font&) {
    return static_cast<int>(t.size()) * 100;
  });
  EXPECT_EQ(host.TextWidth("abc", Font{}), 300);
}

TEST(ScriptedHostTest, TodayComesFromTheVirtualClock) {
  using namespace std::chrono;
  ScriptedHost host(local_days{year{2026} / March / 31} + hours{23});
  host.Advance(60 * 60 * 1000);
  auto day = floor<days>(host.Now());
  EXPECT_EQ(year_month_day{day}, year{2026} / April / 1);
}

}  // namespace
}  // namespace qbpd
