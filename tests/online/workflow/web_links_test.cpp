// The service's home page from the Help menu, the result page's links when
// the session lacks its values, and the local page form.
#include "core/web_links.h"

#include "core/settings.h"
#include "online/frm_upload_congrats.h"
#include "online/frm_web_content.h"
#include "tests/online/online_fixture.h"

namespace qbpd::testing_support {
namespace {

using WebLinksTest = OnlineTest;

TEST_F(WebLinksTest, TheHelpMenuOpensTheSiteAddressWithoutTrailingBlanks) {
  WritePhotos(1);
  Start();
  ASSERT_TRUE(settings().Write(kRootKey, "IP", "http://127.0.0.1:8931  "));
  Queue("menu", [this] { user::PickMenu(main().mnuHWebsite); });
  Run();
  EXPECT_EQ(Opened(), std::vector<std::string>{"http://127.0.0.1:8931"});
}

TEST_F(WebLinksTest, AnAddressOfBlanksOpensNothing) {
  WritePhotos(1);
  Start();
  ASSERT_TRUE(settings().Write(kRootKey, "IP", "   "));
  OpenServiceHome(app());
  ASSERT_TRUE(settings().Write(kRootKey, "IP", std::string(1, '\0')));
  OpenServiceHome(app());
  EXPECT_TRUE(Opened().empty());
}

TEST_F(WebLinksTest, ResultLinksDoNothingWithoutASessionAndAnAlbum) {
  WritePhotos(1);
  Start();
  session().gsSiteAddress = kAddress;
  session().gsAuthCode = "CODE";
  session().gsAlbumId = "  ";
  session().giUploadTotal = 1;
  session().giUploadedCount = 1;
  Queue("show", [this] { Get("frmUploadCongrats").Show(/*modal=*/true); });
  QueueClick("frmUploadCongrats", "lblViewLink");
  QueueClick("frmUploadCongrats", "lblShareLink");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  EXPECT_TRUE(Opened().empty());
}

TEST_F(WebLinksTest, AnOrderResultOffersItsReceiptAndHidesTheAlbum) {
  WritePhotos(1);
  Start();
  session().gsSiteAddress = kAddress;
  session().gsAuthCode = "CODE";
  session().gsAlbumId = "A1";
  session().gsOrderId = "O5";
  session().giCurrentOperation = 13;
  session().giUploadTotal = 2;
  session().giUploadedCount = 2;
  Queue("show", [this] { Get("frmUploadCongrats").Show(/*modal=*/true); });
  Queue("look", [this] {
    auto& page = app().forms().Get<frmUploadCongrats>();
    EXPECT_EQ(page.lblPhotosUploaded.Caption(),
              "Your order has been received.");
    EXPECT_EQ(page.lblOrdPrints.Caption(), " reciept of this order");
    EXPECT_FALSE(page.lblViewLink.Visible());
    EXPECT_FALSE(page.lblAlbumName.Visible());
  });
  QueueClick("frmUploadCongrats", "lblOrdPrintsLink");
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
  EXPECT_EQ(Opened(), std::vector<std::string>{std::string(kAddress) +
                                               "/orderstatus/o=O5/u_=CODE"});
}

TEST_F(WebLinksTest, ACancelledRunShowsNoSentenceOnTheResultPage) {
  WritePhotos(1);
  Start();
  session().giUploadTotal = 3;
  session().giUploadedCount = 1;
  session().gbUploadCancelled = true;
  session().gbFileMissing = true;
  Queue("show", [this] { Get("frmUploadCongrats").Show(/*modal=*/true); });
  Queue("look", [this] {
    auto& page = app().forms().Get<frmUploadCongrats>();
    EXPECT_EQ(page.lblPhotosUploaded.Caption(), "");
    EXPECT_FALSE(page.lblCongratulations.Visible());
  });
  QueueClick("frmUploadCongrats", "imgOK");
  Run();
}

TEST_F(WebLinksTest, TheLocalPageFormShowsAPageOfTheProgramFolder) {
  WritePhotos(1);
  Start();
  Queue("open", [this] {
    app().forms().Get<frmWebContent>().ShowPage("Terms and conditions",
                                                "upload.html");
  });
  Queue("look", [this] {
    auto& form = app().forms().Get<frmWebContent>();
    EXPECT_EQ(form.lblManipHead.Caption(), "Terms and conditions");
    EXPECT_EQ(form.WebContent.LocationURL(),
              app().resources_folder() + "/help/upload.html");
  });
  QueueClick("frmWebContent", "imgQuillbayLogo");
  QueueClick("frmWebContent", "imgOK");
  Run();
  EXPECT_EQ(Find("frmWebContent"), nullptr);
  EXPECT_EQ(Opened(), std::vector<std::string>{kAddress});
}

}  // namespace
}  // namespace qbpd::testing_support
