#ifndef QBPD_ONLINE_UPGRADE_INFO_H_
#define QBPD_ONLINE_UPGRADE_INFO_H_

#include <optional>
#include <string>

namespace qbpd {

// What the service's upgrade description (upgrade.xml) offers.
struct UpgradeOffer {
  std::string version;
  std::string location;
  std::string size;
  std::string notes;
};

// Reads the upgrade description `xml` that was fetched from `url`. It must be
// one <upgrade> element (after an optional XML declaration and comments)
// holding a <version> of numbers and dots and a <location> on the same
// scheme, host and port as `url`; <size> and <notes> may be missing. Nothing
// comes back for an empty, cut or malformed file, a version that isn't
// one, or a location that points anywhere else (another site, another
// scheme, a relative path, "user@host" tricks).
std::optional<UpgradeOffer> ReadUpgradeXml(const std::string& xml,
                                           const std::string& url);

// The scheme, host and port of an absolute http or https URL, in lower case
// and with the scheme's default port made explicit ("https://h:443"); ""
// for anything else.
std::string UrlOrigin(const std::string& url);

// The address of a download's detached signature: the download's address
// with ".sig" after its path.
std::string SignatureUrl(const std::string& download_url);

}  // namespace qbpd

#endif  // QBPD_ONLINE_UPGRADE_INFO_H_
