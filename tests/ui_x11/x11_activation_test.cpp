// A second start brings the running instance's window forward on a real X
// server: the token reaches the first instance over its socket, the window
// takes the focus from another program's window, carries the startup id,
// and the desktop's launch feedback for that start ends.
#include "platform/single_instance.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/qt_test_support.h"
#include "tests/ui_x11/x11_server.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"
#include "ui/qt/window_activation.h"

#include <QApplication>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace qbpd {
namespace {

struct FreeDeleter {
  void operator()(void* p) const { std::free(p); }
};

// A second connection to the X server, as another program (the desktop's
// launch feedback) would have: it reads window properties and hears the
// startup notification messages sent to the root window.
class XObserver {
 public:
  XObserver() {
    connection_ = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection_) != 0) {
      return;
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection_);
    begin_ = Atom("_NET_STARTUP_INFO_BEGIN");
    more_ = Atom("_NET_STARTUP_INFO");
  }
  ~XObserver() { xcb_disconnect(connection_); }

  xcb_atom_t Atom(const char* name) {
    std::unique_ptr<xcb_intern_atom_reply_t, FreeDeleter> reply(
        xcb_intern_atom_reply(
            connection_,
            xcb_intern_atom(connection_, 0,
                            static_cast<uint16_t>(std::strlen(name)), name),
            nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }

  std::string Property(xcb_window_t window, const char* name) {
    std::unique_ptr<xcb_get_property_reply_t, FreeDeleter> reply(
        xcb_get_property_reply(
            connection_,
            xcb_get_property(connection_, 0, window, Atom(name),
                             XCB_GET_PROPERTY_TYPE_ANY, 0, 1024),
            nullptr));
    if (!reply) {
      return "";
    }
    const auto* data =
        static_cast<const char*>(xcb_get_property_value(reply.get()));
    const int length = xcb_get_property_value_length(reply.get());
    if (reply->format == 32 && length == 4) {
      uint32_t value = 0;
      std::memcpy(&value, data, 4);
      return std::to_string(value);
    }
    return std::string(data, static_cast<size_t>(length));
  }

  // The startup messages heard so far, whole.
  const std::vector<std::string>& StartupMessages() {
    while (auto* event = xcb_poll_for_event(connection_)) {
      std::unique_ptr<xcb_generic_event_t, FreeDeleter> owned(event);
      if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE) {
        continue;
      }
      auto* message = reinterpret_cast<xcb_client_message_event_t*>(event);
      if (message->type != begin_ && message->type != more_) {
        continue;
      }
      if (message->type == begin_) {
        partial_.clear();
      }
      for (uint8_t byte : message->data.data8) {
        if (byte == 0) {
          messages_.push_back(partial_);
          partial_.clear();
          break;
        }
        partial_ += static_cast<char>(byte);
      }
    }
    return messages_;
  }

 private:
  xcb_connection_t* connection_ = nullptr;
  xcb_window_t root_ = XCB_WINDOW_NONE;
  xcb_atom_t begin_ = XCB_ATOM_NONE;
  xcb_atom_t more_ = XCB_ATOM_NONE;
  std::string partial_;
  std::vector<std::string> messages_;
};

class X11ActivationTest : public testing::DesktopTest {
 protected:
  void SetUp() override {
    std::string why;
    const std::string display = testing::PrivateXDisplay(&why);
    if (display.empty()) {
      GTEST_SKIP() << why;
    }
    if (QApplication::instance() == nullptr) {
      setenv("DISPLAY", display.c_str(), 1);
      qputenv("QT_QPA_PLATFORM", "xcb");
      static int argc = 1;
      static char name[] = "ui_x11_tests";
      static char* argv[] = {name, nullptr};
      new QApplication(argc, argv);
      QApplication::setQuitOnLastWindowClosed(false);
    }
    ASSERT_EQ(QGuiApplication::platformName(), "xcb");
    photo_count_ = 2;
    instance_folder_ = (tmp_.path() / "run").string();
    DesktopTest::SetUp();
  }
};

TEST_F(X11ActivationTest, ASecondStartsTokenBringsTheFirstWindowForward) {
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window_));
  // Another program's window has the focus.
  QWidget other;
  other.setWindowTitle("another program");
  other.resize(400, 300);
  other.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&other));
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  ASSERT_FALSE(window_->isActiveWindow());
  XObserver observer;

  const std::string id = "filer-2201-host-qbpd-1_TIME4242";
  auto second = MakeSingleInstance(instance_folder_, {id, "wl-token-1"});
  ASSERT_FALSE(second->Claim());
  ASSERT_TRUE(second->AskFirstToComeForward());

  std::optional<ActivationToken> request = app_->PollInstanceRequests();
  ASSERT_TRUE(request.has_value());
  EXPECT_EQ(request->startup_id, id);
  EXPECT_EQ(request->xdg_activation, "wl-token-1");
  host_->BringForward(*request);

  EXPECT_TRUE(QTest::qWaitForWindowActive(window_));
  EXPECT_EQ(QApplication::activeWindow(), window_);
  const auto xid = static_cast<xcb_window_t>(window_->winId());
  EXPECT_EQ(observer.Property(xid, "_NET_STARTUP_ID"), id);
  EXPECT_EQ(observer.Property(xid, "_NET_WM_USER_TIME"), "4242");
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return !observer.StartupMessages().empty(); }, 5000));
  ASSERT_FALSE(observer.StartupMessages().empty());
  EXPECT_EQ(observer.StartupMessages().back(), "remove: ID=" + id);
  testing::SaveScreenshot(window_, "x11_brought_forward");
}

TEST_F(X11ActivationTest, WithoutATokenTheWindowStillComesForward) {
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window_));
  QWidget other;
  other.resize(300, 200);
  other.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&other));
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  XObserver observer;

  auto second = MakeSingleInstance(instance_folder_);
  ASSERT_TRUE(second->AskFirstToComeForward());
  std::optional<ActivationToken> request = app_->PollInstanceRequests();
  ASSERT_TRUE(request.has_value());
  host_->BringForward(*request);
  EXPECT_TRUE(QTest::qWaitForWindowActive(window_));
  // No launch of this start to end, and no id to carry.
  EXPECT_EQ(observer.Property(static_cast<xcb_window_t>(window_->winId()),
                              "_NET_STARTUP_ID"),
            "");
  EXPECT_TRUE(observer.StartupMessages().empty());
}

TEST(StartupIdTest, TheTimeAndTheRemoveMessage) {
  EXPECT_EQ(StartupIdTime("host-1-2_TIME123"), 123u);
  EXPECT_EQ(StartupIdTime("a_TIME1_TIME99"), 99u);
  EXPECT_EQ(StartupIdTime("no-time"), 0u);
  EXPECT_EQ(StartupIdTime("x_TIME12a"), 0u);
  EXPECT_EQ(StartupIdTime("x_TIME99999999999"), 0u);  // beyond 32 bits
  EXPECT_EQ(StartupRemoveMessage("a_TIME1"), "remove: ID=a_TIME1");
  EXPECT_EQ(StartupRemoveMessage("a b\"c\\d"), "remove: ID=a\\ b\\\"c\\\\d");
}

}  // namespace
}  // namespace qbpd
