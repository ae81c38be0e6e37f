#include "online/frm_web_content.h"

#include "core/button_pictures.h"
#include "core/web_links.h"

#include <algorithm>

namespace qbpd {
namespace {

constexpr int kMinWidth = 7200;
constexpr int kFormHeight = 7800;
constexpr int kMargin = 240;
constexpr std::string_view kOkButton = "26";

}  // namespace

frmWebContent::frmWebContent(Application& app)
    : Form(app.host(), std::string(kName)), app_(app) {
  Move(0, 0, kMinWidth, kFormHeight);
  lblManipHead.Move(kMargin, kMargin, kMinWidth - 2 * kMargin, 300);
  lblManipHead.SetFontBold(true);
  imgQuillbayLogo.Move(kMinWidth - kMargin - 1200, kMargin, 1200, 300);
  WebContent.Move(kMargin, 720, kMinWidth - 2 * kMargin, 6000);
  imgOK.Move((kMinWidth - 1200) / 2, 6960, 1200, 390);
  On("imgOK", "Click", &frmWebContent::imgOK_Click);
  On("imgQuillbayLogo", "Click", &frmWebContent::imgQuillbayLogo_Click);
}

void frmWebContent::Form_Load() {
  SetCaption(app_.session().gsAppTitle);
  ShowButtonState(app_.session(), imgOK, kOkButton, kPictureNormal);
}

void frmWebContent::ShowPage(const std::string& heading,
                             const std::string& page) {
  lblManipHead.SetCaption(heading);
  const int text = host().TextWidth(heading, lblManipHead.font());
  const int width = std::max(kMinWidth, text + 2 * kMargin + 1440);
  Move((host().ScreenWidth() - width) / 2,
       (host().ScreenHeight() - kFormHeight) / 2, width, kFormHeight);
  lblManipHead.SetWidth(text + kMargin);
  imgQuillbayLogo.SetLeft(width - kMargin - imgQuillbayLogo.Width());
  WebContent.SetWidth(width - 2 * kMargin);
  imgOK.SetLeft((width - imgOK.Width()) / 2);
  const std::string folder = app_.resources_folder();
  WebContent.Navigate(folder.empty() ? page : folder + "/help/" + page);
  Show(/*modal=*/true);
}

void frmWebContent::Form_Unload(int& Cancel) {
  (void)Cancel;
  WebContent.Navigate("");
}

void frmWebContent::imgOK_Click() {
  Unload();
}

void frmWebContent::imgQuillbayLogo_Click() {
  OpenServiceHome(app_);
}

}  // namespace qbpd
