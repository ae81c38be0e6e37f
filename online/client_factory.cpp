#include "online/client_factory.h"

#include "core/application.h"

namespace qbpd {
namespace {

class ForwardingClient final : public ctlExtAPI {
 public:
  explicit ForwardingClient(ctlExtAPI& target) : t_(target) {}

  bool LoginUser(const std::string& site,
                 const std::string& email,
                 const std::string& password,
                 StringArray& session,
                 std::string& errCode,
                 std::string& errText) override {
    return t_.LoginUser(site, email, password, session, errCode, errText);
  }
  bool GetUserInfo(const std::string& site,
                   const std::string& authCode,
                   std::string& accountType,
                   StringArray& profile,
                   StringArray& address,
                   StringArray& card,
                   std::string& errCode,
                   std::string& errText) override {
    return t_.GetUserInfo(site, authCode, accountType, profile, address, card,
                          errCode, errText);
  }
  bool GetPriceList(const std::string& site,
                    PriceTierDictionary& prices,
                    TextGrid& rates,
                    std::string& errCode,
                    std::string& errText) override {
    return t_.GetPriceList(site, prices, rates, errCode, errText);
  }
  bool GetAlbumList(const std::string& site,
                    const std::string& authCode,
                    TextGrid& albums,
                    std::string& errCode,
                    std::string& errText) override {
    return t_.GetAlbumList(site, authCode, albums, errCode, errText);
  }
  bool GetAddressBook(const std::string& site,
                      const std::string& authCode,
                      StringArray& emails,
                      std::string& errCode,
                      std::string& errText) override {
    return t_.GetAddressBook(site, authCode, emails, errCode, errText);
  }
  bool RegisterUser(const std::string& site,
                    const StringArray& fields,
                    StringArray& result,
                    std::string& errCode,
                    std::string& errText) override {
    return t_.RegisterUser(site, fields, result, errCode, errText);
  }
  bool UploadFile(const std::string& url,
                  const std::string& filePath,
                  std::string& errCode,
                  std::string& errText,
                  const std::string& fieldName,
                  std::string& albumId,
                  std::string& imageId,
                  bool& fatal) override {
    return t_.UploadFile(url, filePath, errCode, errText, fieldName, albumId,
                         imageId, fatal);
  }
  bool ShareAlbum(const std::string& site,
                  const std::string& authCode,
                  const std::string& albumId,
                  const StringArray& emails,
                  const std::string& subject,
                  const std::string& message,
                  const std::string& access,
                  std::string& accepted,
                  std::string& errCode,
                  std::string& errText) override {
    return t_.ShareAlbum(site, authCode, albumId, emails, subject, message,
                         access, accepted, errCode, errText);
  }
  bool GetAlbumPhotos(const std::string& site,
                      const std::string& authCode,
                      const std::string& albumId,
                      TextDictionary& photos,
                      std::string& errCode,
                      std::string& errText) override {
    return t_.GetAlbumPhotos(site, authCode, albumId, photos, errCode, errText);
  }
  bool PlaceOrder(const std::string& site,
                  const std::string& authCode,
                  const std::string& userCode,
                  const std::string& couponCode,
                  PrintLineCollection& orderLines,
                  TextDictionary& orderIndex,
                  TextGrid& sizeTotals,
                  TextGrid& freePrints,
                  std::string& orderId,
                  std::string& shipping,
                  TextGrid& orderTax,
                  StringArray& couponResult,
                  double& costOfPrints,
                  double& orderTotal,
                  std::string& errCode,
                  std::string& errText,
                  const StringArray* shipTo) override {
    return t_.PlaceOrder(site, authCode, userCode, couponCode, orderLines,
                         orderIndex, sizeTotals, freePrints, orderId, shipping,
                         orderTax, couponResult, costOfPrints, orderTotal,
                         errCode, errText, shipTo);
  }
  bool ConfirmOrder(const std::string& site,
                    const std::string& authCode,
                    const std::string& orderId,
                    const std::string& couponCode,
                    std::string& errCode,
                    std::string& errText) override {
    return t_.ConfirmOrder(site, authCode, orderId, couponCode, errCode,
                           errText);
  }
  bool UpdateUserAddress(const std::string& site,
                         const std::string& authCode,
                         const std::string& email,
                         const std::string& password,
                         const StringArray& address,
                         const StringArray& card,
                         StringArray& session,
                         std::string& errCode,
                         std::string& errText,
                         bool cardChanged,
                         const std::string& storedCardNumber) override {
    return t_.UpdateUserAddress(site, authCode, email, password, address, card,
                                session, errCode, errText, cardChanged,
                                storedCardNumber);
  }
  bool GetUpgradeInfo(const std::string& url,
                      const std::string& currentVersion,
                      std::string& downloadLocation,
                      std::string& newVersion,
                      std::string& fileSize,
                      std::string& notes) override {
    return t_.GetUpgradeInfo(url, currentVersion, downloadLocation, newVersion,
                             fileSize, notes);
  }
  bool DownloadFile(const std::string& url,
                    const std::string& targetFolder,
                    std::string& savedPath,
                    std::string& errText) override {
    return t_.DownloadFile(url, targetFolder, savedPath, errText);
  }
  void CancelRequest(bool cancel) override { t_.CancelRequest(cancel); }
  bool IsBusy() const override { return t_.IsBusy(); }
  bool IsCancelled() const override { return t_.IsCancelled(); }

 private:
  ctlExtAPI& t_;
};

}  // namespace

std::unique_ptr<ctlExtAPI> NewServiceClient(Application& app) {
  return NewServiceClient(app, ServiceNeed::kStart);
}

std::unique_ptr<ctlExtAPI> NewServiceClient(Application& app,
                                            ServiceNeed need) {
  if (app.ClientMaker()) {
    return app.ClientMaker()();
  }
  Application* a = &app;
  return MakeServiceClient(app.host(),
                           [a, need] { return a->ServiceTransport(need); });
}

std::unique_ptr<ctlExtAPI> ForwardTo(ctlExtAPI& target) {
  return std::make_unique<ForwardingClient>(target);
}

}  // namespace qbpd
