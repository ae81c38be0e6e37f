// The widgets of the program's components: the web view of its local pages
// and the screensaver player.
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "ui/qt/generic_widget_base.h"
#include "ui/qt/qt_convert.h"

#include <QFileInfo>
#include <QPainter>
#include <QTextBrowser>
#include <QTimer>
#include <QUrl>

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

// Plays its photos in turn while Playing, each fitted to the widget.
class ScreensaverWidget : public GenericWidget {
 public:
  ScreensaverWidget(ScreensaverPlayer& control,
                    QWidget* parent,
                    FormWindow& window)
      : GenericWidget(control, window), player_(control) {
    auto* w = new PaintedWidget(parent);
    timer_ = new QTimer(w);
    QObject::connect(timer_, &QTimer::timeout, w, [this, w] {
      if (!files_.empty()) {
        at_ = (at_ + 1) % files_.size();
        w->update();
      }
    });
    w->SetPainter([this, w](QPainter& p, const QRect& r) {
      p.fillRect(r, Qt::black);
      if (files_.empty()) {
        return;
      }
      const QPixmap& pixmap =
          cache_.Get(files_[at_], r.size(), w->devicePixelRatioF(), false);
      if (!pixmap.isNull()) {
        DrawCentred(p, r, pixmap);
      }
    });
    Attach(w, /*passive=*/true);
  }
  void Sync() override {
    if (files_ != player_.Files()) {
      files_ = player_.Files();
      at_ = 0;
    }
    timer_->setInterval(std::max(1, player_.IntervalSeconds()) * 1000);
    if (player_.Playing() && !timer_->isActive()) {
      timer_->start();
    } else if (!player_.Playing()) {
      timer_->stop();
    }
    widget_->update();
  }

 private:
  ScreensaverPlayer& player_;
  QTimer* timer_ = nullptr;
  std::vector<std::string> files_;
  size_t at_ = 0;
  PictureCache cache_;
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
