#ifndef QBPD_ONLINE_FRM_WEB_CONTENT_H_
#define QBPD_ONLINE_FRM_WEB_CONTENT_H_

#include "core/application.h"
#include "platform/forms/controls.h"
#include "platform/forms/form.h"

#include <string>
#include <string_view>

namespace qbpd {

// The program's own local pages (the share access notes, the terms of
// sign-up) shown inside the program: a heading over a browser view of a
// page in the program's folder.
class frmWebContent : public Form {
 public:
  static constexpr std::string_view kName = "frmWebContent";
  explicit frmWebContent(Application& app);

  Label lblManipHead{*this, "lblManipHead"};
  PictureButton imgQuillbayLogo{*this, "imgQuillbayLogo"};
  WebView WebContent{*this, "WebContent"};
  PictureButton imgOK{*this, "imgOK"};

  // Sets the heading, fits the window to it, shows `page` (a file name in
  // the program's folder of pages) and shows the form modally.
  void ShowPage(const std::string& heading, const std::string& page);

 protected:
  void Form_Load() override;
  void Form_Unload(int& Cancel) override;

 private:
  void imgOK_Click();
  void imgQuillbayLogo_Click();

  Application& app_;
};

}  // namespace qbpd

#endif  // QBPD_ONLINE_FRM_WEB_CONTENT_H_
