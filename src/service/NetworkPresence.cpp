#include "service/NetworkPresence.h"

#include "core/Log.h"

namespace ferrylane {

NetworkPresence::NetworkPresence(std::uint16_t tcpPort) : tcpPort_(tcpPort), responder_(tcpPort)
{
    QObject::connect(&publisher_, &platform::ServicePublisher::told, flLog);
}

void NetworkPresence::announce(const QString& name)
{
    publisher_.publish(name, dnsSdServiceType, tcpPort_);
}

} // namespace ferrylane
