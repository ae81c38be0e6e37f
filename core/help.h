#ifndef QBPD_CORE_HELP_H_
#define QBPD_CORE_HELP_H_

#include "platform/launcher.h"

#include <span>
#include <string>
#include <string_view>

namespace qbpd {

class Application;

// The help: one page per topic under the help folder of the program's
// resources, found by a form's help context number. F1 on a form opens the
// page of the form's HelpContextID.

// Context numbers of the topics.
inline constexpr int kHelpContents = 0;
inline constexpr int kHelpBrowsing = 6;
inline constexpr int kHelpCrop = 7;
inline constexpr int kHelpRedEye = 8;
inline constexpr int kHelpAutoColour = 9;
inline constexpr int kHelpLogin = 10;
inline constexpr int kHelpSignUp = 11;
inline constexpr int kHelpUpload = 12;
inline constexpr int kHelpShare = 13;
inline constexpr int kHelpOrderPrints = 14;
inline constexpr int kHelpPreferences = 15;
inline constexpr int kHelpScreensaver = 16;
inline constexpr int kHelpCameraTransfer = 17;

struct HelpTopic {
  int context;
  std::string_view page;   // file name in the help folder
  std::string_view title;  // as the contents page lists it
};

// Every topic, the contents first. This is the one map of context numbers
// to pages.
std::span<const HelpTopic> HelpTopics();

// The page of `context`; the contents page for a number without a topic.
std::string_view HelpPage(int context);

// The topic of the main window's help for what it is busy with
// (giCurrentOperation): cropping, red eye and auto colour have their own;
// anything else is browsing.
int HelpContextForOperation(int operation);

// Opens the page of `context` from the program's help folder through the
// application's launcher. Fails, opening nothing, when the page isn't
// there.
[[nodiscard]] LaunchResult ShowHelp(Application& app, int context);

}  // namespace qbpd

#endif  // QBPD_CORE_HELP_H_
