#include "service/html.h"

namespace qbpd::service {

std::string EscapeHtml(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string HtmlPage(std::string_view title, std::string_view body) {
  std::string page =
      "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
      "<title>";
  page += EscapeHtml(title);
  page +=
      " - Quillbay</title></head>\n<body>\n<p><a href=\"/\">Quillbay</a></p>\n"
      "<h1>";
  page += EscapeHtml(title);
  page += "</h1>\n";
  page += body;
  page += "\n</body></html>\n";
  return page;
}

}  // namespace qbpd::service
