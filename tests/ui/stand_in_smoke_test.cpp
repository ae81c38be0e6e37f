// The desktop window showing a photo whose cached thumbnail stands in for
// it: the thumbnail, enlarged, is painted at once, and the window paints
// the photo itself by its own accord once it is decoded.
#include "platform/display_model.h"
#include "platform/image_operations.h"
#include "tests/ui/desktop_fixture.h"
#include "tests/ui/photo_maker.h"
#include "tests/ui/qt_test_support.h"
#include "ui/qt/form_window.h"
#include "ui/qt/qt_host.h"

#include <QCoreApplication>
#include <QImage>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <string>

namespace qbpd::testing {
namespace {

namespace fs = std::filesystem;

class StandInTest : public DesktopTest {
 protected:
  StandInTest() {
    photo_count_ = 1;
    // As the desktop program has it: the cache's thumbnails stand in.
    adjust_services_ = [this](PlatformServices& services) {
      images_ = services.images.get();
      services.make_display = [this] {
        return MakeVipsDisplayControl(
            /*work_ahead=*/true,
            [this](const std::function<bool()>& done) {
              host_->WaitUnnoticed(done);
            },
            [this](const std::string& path) {
              return images_->CachedStandIn(path);
            });
      };
    };
  }

  ImageOperations* images_ = nullptr;
};

TEST_F(StandInTest, ThumbnailIsPaintedAtOnceAndThePhotoReplacesItByItself) {
  // 24 megapixels with detail: its decoding takes long enough to see.
  const fs::path big = tmp_.path() / "large.jpg";
  MakeDetailedPhoto(big.string(), 6000, 4000);
  std::string entry;
  ASSERT_EQ(images_->GenerateThumbnailAndBuffer(big.string(), entry, 85, 70),
            1);
  ASSERT_TRUE(images_->CachedStandIn(big.string()).has_value());

  QWidget* view = WidgetFor(main_->ctlDisplayImage);
  ASSERT_NE(view, nullptr);
  bool loaded = false;
  bool done = false;
  QTimer::singleShot(0, [&] {
    window_->ActOnForm([&] {
      loaded = main_->ctlDisplayImage.LoadPhoto(big.string());
      main_->ctlDisplayImage.ZoomFitToWidth();
    });
    done = true;
  });
  while (!done) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  ASSERT_TRUE(loaded);
  DisplayControl* model = main_->ctlDisplayImage.Display();
  ASSERT_NE(model, nullptr);
  EXPECT_EQ(model->PhotoWidth(), 6000);
  EXPECT_TRUE(model->Refining()) << "the load waited for the decoding";
  const QImage stand_in = view->grab().toImage();
  SaveScreenshot(window_, "photo_stand_in");

  // Nothing but the window's own paints brings the photo in.
  ASSERT_TRUE(QTest::qWaitFor([&] { return !model->Refining(); }, 30000));
  QTest::qWait(50);
  const QImage photo = view->grab().toImage();
  SaveScreenshot(window_, "photo_after_stand_in");
  EXPECT_NE(photo, stand_in);
  EXPECT_EQ(view->grab().toImage(), photo) << "the picture settled";
}

}  // namespace
}  // namespace qbpd::testing
