#ifndef QBPD_ONLINE_CLIENT_FACTORY_H_
#define QBPD_ONLINE_CLIENT_FACTORY_H_

#include "online/service_client.h"

#include <memory>

namespace qbpd {

class Application;

// The service client of an online form (its ExtAPI): the one the run's
// maker gives (PlatformServices::make_client), or else the real client over
// Application::ServiceTransport, pumping the run's host while it waits.
std::unique_ptr<ctlExtAPI> NewServiceClient(Application& app);

// A client that hands every call to `target`, so that the instances of
// several forms can all be one scripted double. `target` must outlive it.
std::unique_ptr<ctlExtAPI> ForwardTo(ctlExtAPI& target);

}  // namespace qbpd

#endif  // QBPD_ONLINE_CLIENT_FACTORY_H_
