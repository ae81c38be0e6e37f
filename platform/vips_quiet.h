#ifndef QBPD_PLATFORM_VIPS_QUIET_H_
#define QBPD_PLATFORM_VIPS_QUIET_H_

namespace qbpd {

// Swallows libvips' warnings and messages while it lives: a broken photo
// fails by its result and prints nothing on the terminal. Owners that use
// libvips hold one.
class QuietVipsLog {
 public:
  QuietVipsLog();
  ~QuietVipsLog();
  QuietVipsLog(const QuietVipsLog&) = delete;
  QuietVipsLog& operator=(const QuietVipsLog&) = delete;

 private:
  unsigned handler_;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_VIPS_QUIET_H_
