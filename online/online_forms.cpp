#include "online/online_forms.h"

#include "core/application.h"
#include "online/frm_address_book.h"
#include "online/frm_check_upgrade.h"
#include "online/frm_display_download.h"
#include "online/frm_login.h"
#include "online/frm_net_conn.h"
#include "online/frm_registration.h"
#include "online/frm_share_congrats.h"
#include "online/frm_share_info.h"
#include "online/frm_upload_album_infm.h"
#include "online/frm_upload_congrats.h"
#include "online/frm_upload_imgs.h"
#include "online/frm_web_content.h"

namespace qbpd {

void RegisterOnlineForms(Application& app) {
  Application* a = &app;
  app.forms().Register<frmLogin>(
      [a] { return std::make_unique<frmLogin>(*a); });
  app.forms().Register<frmNetConn>(
      [a] { return std::make_unique<frmNetConn>(*a); });
  app.forms().Register<frmUploadAlbumInfm>(
      [a] { return std::make_unique<frmUploadAlbumInfm>(*a); });
  app.forms().Register<frmUploadImgs>(
      [a] { return std::make_unique<frmUploadImgs>(*a); });
  app.forms().Register<frmUploadCongrats>(
      [a] { return std::make_unique<frmUploadCongrats>(*a); });
  app.forms().Register<frmRegistration>(
      [a] { return std::make_unique<frmRegistration>(*a); });
  app.forms().Register<frmShareInfo>(
      [a] { return std::make_unique<frmShareInfo>(*a); });
  app.forms().Register<frmAddressBook>(
      [a] { return std::make_unique<frmAddressBook>(*a); });
  app.forms().Register<frmShareCongrats>(
      [a] { return std::make_unique<frmShareCongrats>(*a); });
  app.forms().Register<frmWebContent>(
      [a] { return std::make_unique<frmWebContent>(*a); });
  app.forms().Register<frmCheckUpgrade>(
      [a] { return std::make_unique<frmCheckUpgrade>(*a); });
  app.forms().Register<frmDisplayDownload>(
      [a] { return std::make_unique<frmDisplayDownload>(*a); });
}

}  // namespace qbpd
