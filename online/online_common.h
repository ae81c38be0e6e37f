#ifndef QBPD_ONLINE_ONLINE_COMMON_H_
#define QBPD_ONLINE_ONLINE_COMMON_H_

#include <string>
#include <string_view>

namespace qbpd {

class Application;

// The texts that several online forms show, in the program's own words.
inline constexpr std::string_view kServerProblemBox =
    "There is some problem with the server, please try after some time...";
inline constexpr std::string_view kServerProblemLogin =
    "There is some problem with the server, Please try after some time...";
inline constexpr std::string_view kCheckConnectionLabel =
    "Please check Internet Connection";
inline constexpr std::string_view kCheckConnectionBox =
    "Please, check internet connection...";
inline constexpr std::string_view kNoSuchAccount =
    "Please try again.\nOops! There is no Quillbay account with this email "
    "address.";

// Red, as the program colours a failure label.
inline constexpr long kErrorColour = 0x0000FF;

// The text that the login form shows for a failed login, by error code:
// "9999", "0" and "2006" have their own sentences, any other code shows the
// service's text as it stands.
std::string LoginFailureText(const std::string& errCode,
                             const std::string& errText);

// Whether `path` names a plain file now (the program's FileExists).
bool FileExists(const std::string& path);

// Session values that the online road resets (ConnectToSite, the transfer
// screen's cancel): the share form's subject and message to their defaults.
void ResetShareTexts(Application& app);

}  // namespace qbpd

#endif  // QBPD_ONLINE_ONLINE_COMMON_H_
