#include "platform/vips_quiet.h"

#include <glib.h>

namespace qbpd {
namespace {

void IgnoreLogMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

}  // namespace

QuietVipsLog::QuietVipsLog()
    : handler_(g_log_set_handler(
          "VIPS",
          static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING |
                                      G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO),
          IgnoreLogMessage,
          nullptr)) {}

QuietVipsLog::~QuietVipsLog() {
  g_log_remove_handler("VIPS", handler_);
}

}  // namespace qbpd
