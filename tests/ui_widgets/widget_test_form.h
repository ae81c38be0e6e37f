#ifndef QBPD_TESTS_UI_WIDGETS_WIDGET_TEST_FORM_H_
#define QBPD_TESTS_UI_WIDGETS_WIDGET_TEST_FORM_H_

#include "platform/forms/control_array.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"
#include "platform/forms/scripted_host.h"

#include <QImage>
#include <QString>

#include <string>
#include <vector>

namespace qbpd::testing {

// A form with one of each of the desktop's own controls, whose handlers write
// down every event they receive as "control.Event" plus what it carries.
class frmWidgets : public Form {
 public:
  explicit frmWidgets(Host& host);

  ControlArray<Thumbnail> ctrlQuilImage{*this, "ctrlQuilImage"};
  PhotoView ctlDisplayImage{*this, "ctlDisplayImage"};
  FolderTree ExpTreeView{*this, "ExpTreeView"};

  std::vector<std::string> events;
  // What the Click handler of a thumbnail answers by reference.
  bool answer_handled = true;
  // The Handled flag as each thumbnail Click saw it on entry.
  std::vector<bool> handled_on_entry;
};

// Writes `image` as a PNG under the build folder's picture folder, for a
// person to look at; returns the path.
QString SavePicture(const QImage& image, const QString& name);

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_UI_WIDGETS_WIDGET_TEST_FORM_H_
