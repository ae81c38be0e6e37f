#ifndef QBPD_UI_QT_CONTROL_WIDGET_H_
#define QBPD_UI_QT_CONTROL_WIDGET_H_

#include <memory>

class QWidget;

namespace qbpd {

class FolderTree;
class PhotoView;
class Thumbnail;

// The widget that shows one control of a form on the desktop. The form
// window makes one per visible control kind, places it at the control's twips
// geometry (15 twips to a logical pixel), and calls Sync after every event
// whose handlers changed the control (its revision moved). A widget turns
// what the person does into the control's events by name, through
// Form::Raise, so that the program's handlers run as they do under the
// scripted host.
class ControlWidget {
 public:
  virtual ~ControlWidget() = default;
  // The Qt widget; owned by its parent widget, which the form window keeps.
  virtual QWidget* widget() = 0;
  // Pulls every property of the control into the widget (geometry is the
  // form window's job).
  virtual void Sync() = 0;
};

// The widgets of their own: the folder tree over the file system, one
// thumbnail of the grid, and the photo view drawing its picture model.
std::unique_ptr<ControlWidget> MakeFolderTreeWidget(FolderTree& control,
                                                    QWidget* parent);
std::unique_ptr<ControlWidget> MakeThumbnailWidget(Thumbnail& control,
                                                   QWidget* parent);
std::unique_ptr<ControlWidget> MakePhotoViewWidget(PhotoView& control,
                                                   QWidget* parent);

}  // namespace qbpd

#endif  // QBPD_UI_QT_CONTROL_WIDGET_H_
