#include "core/help.h"

#include "core/application.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace qbpd {
namespace {

constexpr int kOperationCrop = 1;
constexpr int kOperationRedEye = 4;
constexpr int kOperationAutoColour = 5;

constexpr std::array<HelpTopic, 13> kTopics = {{
    {kHelpContents, "index.html", "Contents"},
    {kHelpBrowsing, "browsing-photos.html", "Browsing your photos"},
    {kHelpCrop, "cropping.html", "Cropping a photo for a print size"},
    {kHelpRedEye, "red-eye.html", "Removing red eye"},
    {kHelpAutoColour, "auto-colour.html", "Correcting colour automatically"},
    {kHelpLogin, "login.html", "Signing in to the online service"},
    {kHelpSignUp, "sign-up.html", "Opening an account"},
    {kHelpUpload, "upload.html", "Uploading photos to an album"},
    {kHelpShare, "share.html", "Sharing an album by e-mail"},
    {kHelpOrderPrints, "order-prints.html", "Ordering prints"},
    {kHelpPreferences, "preferences.html", "Preferences"},
    {kHelpScreensaver, "screensaver.html", "Making a screensaver"},
    {kHelpCameraTransfer, "camera-transfer.html",
     "Getting photos from a camera or card"},
}};

}  // namespace

std::span<const HelpTopic> HelpTopics() {
  return kTopics;
}

std::string_view HelpPage(int context) {
  auto it = std::find_if(
      kTopics.begin(), kTopics.end(),
      [context](const HelpTopic& t) { return t.context == context; });
  return it != kTopics.end() ? it->page : kTopics.front().page;
}

int HelpContextForOperation(int operation) {
  switch (operation) {
    case kOperationCrop:
      return kHelpCrop;
    case kOperationRedEye:
      return kHelpRedEye;
    case kOperationAutoColour:
      return kHelpAutoColour;
    default:
      return kHelpBrowsing;
  }
}

LaunchResult ShowHelp(Application& app, int context) {
  if (app.resources_folder().empty()) {
    return {false, "The program's help folder was not found.", -1};
  }
  const std::filesystem::path page =
      std::filesystem::path(app.resources_folder()) / "help" /
      std::string(HelpPage(context));
  std::error_code error;
  if (!std::filesystem::is_regular_file(page, error)) {
    return {false, "The help page " + page.string() + " is missing.", -1};
  }
  return app.launcher().OpenDocument(page.string());
}

}  // namespace qbpd
