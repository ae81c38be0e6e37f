#ifndef QBPD_UI_QT_THUMBNAIL_WIDGET_H_
#define QBPD_UI_QT_THUMBNAIL_WIDGET_H_

#include <QDateTime>
#include <QImage>
#include <QRect>
#include <QString>
#include <QWidget>

namespace qbpd {

class Thumbnail;

// One thumbnail of the grid: the picture of its thumbnail file, scaled to fit
// with its aspect kept and centred, a check box under it, and a frame around
// the picture while it is the current photo. The tooltip is the control's
// ToolTipText, or its ToolText when that is empty.
//
// What the person does becomes the control's events, as the scripted host
// raises them: a press raises MouseDown, a release MouseUp (X and Y in twips
// from the control's corner); a left click on the picture then acts as
// SelectThumbnail (Click with a Handled flag, then the frame); a left click on
// the check box flips it and raises CheckClick; a double click on the picture
// raises DblClick after the click of its first press; moving the mouse raises
// MouseMove. Space flips the check box of a focused thumbnail.
//
// A thumbnail file that is missing or not a picture shows an empty box; the
// file is read again only when its name, size or time changes.
class ThumbnailWidget : public QWidget {
 public:
  ThumbnailWidget(Thumbnail& control, QWidget* parent);

  // Pulls the control's state: picture, check, frame, tooltip, visibility.
  void Sync();
  // Forgets the control, which is going away: no event is raised after this.
  void Detach() { detached_ = true; }

  // Where the picture and the check box stand, in logical pixels; the areas
  // that a click is tested against.
  QRect PictureBox() const;
  QRect CheckBoxRect() const;
  // Whether a picture was read from the thumbnail file.
  bool HasPicture() const { return !picture_.isNull(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  enum class Area { kNone, kPicture, kCheck };
  Area AreaAt(const QPoint& p) const;
  void RaiseMouse(const char* event, QMouseEvent* e);
  void LoadPicture();

  Thumbnail& control_;
  // The file behind picture_, and its size and time when it was read.
  QString picture_file_;
  qint64 picture_size_ = -1;
  QDateTime picture_time_;
  QImage picture_;
  // picture_ scaled to the box at the device pixel ratio it was made for.
  QImage scaled_;
  bool detached_ = false;
  Area pressed_ = Area::kNone;
  bool in_double_click_ = false;
};

}  // namespace qbpd

#endif  // QBPD_UI_QT_THUMBNAIL_WIDGET_H_
