#ifndef QBPD_ONLINE_CLIENT_FACTORY_H_
#define QBPD_ONLINE_CLIENT_FACTORY_H_

#include "online/service_client.h"
#include "platform/local_service.h"

#include <memory>

namespace qbpd {

class Application;

// The service client of an online form (its ExtAPI): the one the run's
// maker gives (PlatformServices::make_client), or else the real client over
// Application::ServiceTransport, pumping the run's host while it waits.
std::unique_ptr<ctlExtAPI> NewServiceClient(Application& app);
// The same for a check in the background (`need` kRunning): its requests
// start no service.
std::unique_ptr<ctlExtAPI> NewServiceClient(Application& app, ServiceNeed need);

// A client that hands every call to `target`, so that the instances of
// several forms can all be one scripted double. `target` must outlive it.
std::unique_ptr<ctlExtAPI> ForwardTo(ctlExtAPI& target);

}  // namespace qbpd

#endif  // QBPD_ONLINE_CLIENT_FACTORY_H_
