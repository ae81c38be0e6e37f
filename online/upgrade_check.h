#ifndef QBPD_ONLINE_UPGRADE_CHECK_H_
#define QBPD_ONLINE_UPGRADE_CHECK_H_

namespace qbpd {

class Application;
class frmMainWindow;

// The main window's upgrade check: tmrUpgrade (a minute after start-up, and
// again each minute until one check has reached the service; at most one
// question per run) with the window's own service control ctlInet, and the
// Help menu's "Check for upgrade", which opens frmCheckUpgrade.
void WireUpgradeCheck(frmMainWindow& window, Application& app);

}  // namespace qbpd

#endif  // QBPD_ONLINE_UPGRADE_CHECK_H_
