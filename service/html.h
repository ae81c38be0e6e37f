#ifndef QBPD_SERVICE_HTML_H_
#define QBPD_SERVICE_HTML_H_

#include <string>
#include <string_view>

namespace qbpd::service {

// Escapes text for an HTML element or a quoted attribute value.
std::string EscapeHtml(std::string_view text);

// A whole page: the title and the body are escaped or built by the caller;
// the title is escaped here.
std::string HtmlPage(std::string_view title, std::string_view body);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_HTML_H_
