#include "tests/ui_widgets/widget_test_form.h"

#include <QDir>

namespace qbpd::testing {
namespace {

std::string Describe(const std::string& control,
                     const std::string& event,
                     const EventArgs& e) {
  std::string text = control;
  if (e.Index >= 0) {
    text += "(" + std::to_string(e.Index) + ")";
  }
  text += "." + event;
  if (event.rfind("Mouse", 0) == 0) {
    text += " " + std::to_string(e.Button) + " " + std::to_string(e.X) + "," +
            std::to_string(e.Y);
  } else if (event.rfind("Key", 0) == 0) {
    text += " " + std::to_string(e.KeyCode);
  } else if (!e.Text.empty()) {
    text += " " + e.Text;
  }
  return text;
}

}  // namespace

frmWidgets::frmWidgets(Host& host) : Form(host, "frmWidgets") {
  const std::vector<std::pair<std::string, std::vector<std::string>>> wiring = {
      {"ctrlQuilImage",
       {"MouseDown", "MouseUp", "MouseMove", "CheckClick", "DblClick"}},
      {"ctlDisplayImage", {"MouseDown", "MouseUp", "MouseMove", "Click"}},
      {"ExpTreeView",
       {"MouseDown", "MouseUp", "KeyDown", "KeyUp", "FolderClick"}}};
  for (const auto& [control, names] : wiring) {
    for (const std::string& event : names) {
      On(control, event, [this, control, event](EventArgs& e) {
        events.push_back(Describe(control, event, e));
      });
    }
  }
  On("ctrlQuilImage", "Click", [this](EventArgs& e) {
    handled_on_entry.push_back(e.Handled);
    events.push_back(Describe("ctrlQuilImage", "Click", e));
    e.Handled = answer_handled;
  });
}

QString SavePicture(const QImage& image, const QString& name) {
  const QString folder = QStringLiteral(QBPD_PICTURE_OUT);
  QDir().mkpath(folder);
  const QString path = folder + "/" + name + ".png";
  image.save(path);
  return path;
}

}  // namespace qbpd::testing
