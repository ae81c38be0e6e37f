#ifndef QBPD_CORE_JPEG_NAME_H_
#define QBPD_CORE_JPEG_NAME_H_

#include <string>

namespace qbpd {

// Whether the file's extension names a JPEG (".jpg", ".jpeg", ".jpe" in any
// case); a name that is only an extension, such as ".jpg", has none. The
// photos without one go to the service as JPEG copies.
bool HasJpegExtension(const std::string& path);

}  // namespace qbpd

#endif  // QBPD_CORE_JPEG_NAME_H_
