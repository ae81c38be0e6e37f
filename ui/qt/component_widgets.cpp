// The widgets of the program's components: the web view of its local pages
// and the screensaver player.
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/saver_player.h"
#include "ui/qt/generic_widget_base.h"
#include "ui/qt/qt_convert.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QTextBrowser>
#include <QTimer>
#include <QUrl>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace qbpd {
namespace {

// The program's own local pages, rendered: a local file (a path or a
// file: address) is shown as HTML with its pictures and style sheet; the
// program never points this view at the network, so any other address is
// shown as text, and an empty one clears the view. Links between local
// pages are followed inside the view.
class WebViewWidget : public GenericWidget {
 public:
  WebViewWidget(WebView& control, QWidget* parent, FormWindow& window)
      : GenericWidget(control, window), view_(control) {
    auto* w = new QTextBrowser(parent);
    w->setOpenExternalLinks(false);
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    const std::string& location = view_.LocationURL();
    if (location == shown_) {
      return;
    }
    shown_ = location;
    auto* browser = static_cast<QTextBrowser*>(widget_.data());
    QUrl url = QUrl(QString::fromStdString(location));
    if (!location.empty() && location.front() == '/') {
      url = QUrl::fromLocalFile(QString::fromStdString(location));
    }
    if (location.empty()) {
      browser->clear();
    } else if (url.isLocalFile() && QFileInfo(url.toLocalFile()).isFile()) {
      browser->setSource(url, QTextDocument::HtmlResource);
    } else {
      browser->setPlainText(QString::fromStdString(location));
    }
  }

 private:
  WebView& view_;
  std::string shown_;
};

// Plays its photos while Playing with the saver player that qbpd-saver uses:
// each photo upright and fitted on black, decoded ahead, changed by the
// transitions of the control's effect codes.
class ScreensaverWidget : public GenericWidget {
 public:
  ScreensaverWidget(ScreensaverPlayer& control,
                    QWidget* parent,
                    FormWindow& window)
      : GenericWidget(control, window), player_(control) {
    auto* w = new PaintedWidget(parent);
    timer_ = new QTimer(w);
    timer_->setInterval(kSaverFrameMs);
    QObject::connect(timer_, &QTimer::timeout, w, [w] { w->update(); });
    w->SetPainter([this, w](QPainter& p, const QRect& r) {
      p.fillRect(r, Qt::black);
      if (!player_.Playing()) {
        return;
      }
      const qreal ratio = w->devicePixelRatioF();
      const int width = static_cast<int>(r.width() * ratio);
      const int height = static_cast<int>(r.height() * ratio);
      if (!saver_ || width != width_ || height != height_) {
        SaverShow show{player_.Files(), player_.IntervalSeconds(),
                       ParseSaverEffects(player_.Effects())};
        saver_ = std::make_unique<SaverPlayer>(std::move(show), width, height);
        width_ = width;
        height_ = height;
        clock_.start();
      }
      const SaverFrame& frame = saver_->FrameAt(clock_.elapsed());
      if (frame.empty()) {
        return;
      }
      const QImage image(reinterpret_cast<const uchar*>(frame.pixels.data()),
                         frame.width, frame.height, frame.width * 4,
                         QImage::Format_RGB32);
      p.drawImage(QRectF(r), image);
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    auto key = std::make_tuple(player_.Files(), player_.IntervalSeconds(),
                               player_.Effects());
    if (key != shown_) {
      shown_ = std::move(key);
      saver_.reset();
    }
    if (player_.Playing() && !timer_->isActive()) {
      timer_->start();
    } else if (!player_.Playing()) {
      timer_->stop();
      saver_.reset();
    }
    widget_->update();
  }

 private:
  static constexpr int kSaverFrameMs = 16;
  ScreensaverPlayer& player_;
  QTimer* timer_ = nullptr;
  std::tuple<std::vector<std::string>, int, std::string> shown_;
  std::unique_ptr<SaverPlayer> saver_;
  int width_ = 0;
  int height_ = 0;
  QElapsedTimer clock_;
};

}  // namespace

std::unique_ptr<ControlWidget> MakeComponentWidget(Control& control,
                                                   QWidget* parent,
                                                   FormWindow& window) {
  switch (control.Kind()) {
    case ControlKind::kWebView:
      return std::make_unique<WebViewWidget>(static_cast<WebView&>(control),
                                             parent, window);
    case ControlKind::kScreensaverPlayer:
      return std::make_unique<ScreensaverWidget>(
          static_cast<ScreensaverPlayer&>(control), parent, window);
    default:
      return nullptr;
  }
}

}  // namespace qbpd
