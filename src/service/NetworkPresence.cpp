#include "service/NetworkPresence.h"

#include "core/DeviceName.h"
#include "core/Log.h"

namespace ferrylane {

NetworkPresence::NetworkPresence(std::uint16_t tcpPort)
    : tcpPort_(tcpPort)
    , responder_(
          [this] { return visible_.load(); }, [] { return ferrylaneDeviceSuffix(); }, tcpPort)
    , publisher_(platform::ServicePublisher::create([](const QString& line) { flLog(line); }))
{
}

void NetworkPresence::announce(const QString& name)
{
    publisher_->publish(name, dnsSdServiceType, tcpPort_);
}

} // namespace ferrylane
