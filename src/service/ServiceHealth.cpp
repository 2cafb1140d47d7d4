#include "service/ServiceHealth.h"

#include "core/Service.h"
#include "protocol/DiscoveryProtocol.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace ferrylane {

using platform::Transport;

namespace {

std::uint16_t portOf(Transport transport)
{
    return transport == Transport::tcp ? port : discoveryPort;
}

QString portText(Transport transport)
{
    return QStringLiteral("%1 port %2")
        .arg(transport == Transport::tcp ? QStringLiteral("TCP") : QStringLiteral("UDP"))
        .arg(portOf(transport));
}

QString holderText(const std::optional<platform::PortHolder>& holder)
{
    if (!holder) return QStringLiteral("another program");
    return QStringLiteral("\u201C%1\u201D (process %2)")
        .arg(holder->program, QString::number(holder->processId));
}

} // namespace

void ServiceHealth::set(Transport transport, const std::error_code& error)
{
    if (error) {
        faults_[transport] = error;
        return;
    }
    faults_.erase(transport);
    if (transport == Transport::tcp) hasBeenReachable_ = true;
}

QString ServiceHealth::faultText() const
{
    QStringList sentences;
    for (const auto& [transport, error] : faults_) {
        sentences << (error == std::errc::address_in_use
                ? QStringLiteral("%1 is in use by %2.")
                      .arg(portText(transport),
                          holderText(platform::holderOfPort(transport, portOf(transport))))
                : QStringLiteral("%1 could not be opened: %2.")
                      .arg(portText(transport), QString::fromStdString(error.message())));
    }
    return sentences.join(u'\n');
}

QString ServiceHealth::adviceText() const
{
    const bool isPortTaken = std::any_of(faults_.begin(), faults_.end(),
        [](const auto& fault) { return fault.second == std::errc::address_in_use; });
    return (isPortTaken ? QStringLiteral("End that program, then switch the service on again.")
                        : QStringLiteral("Switch the service on to try again."))
        + QStringLiteral(" Sending files works meanwhile.");
}

} // namespace ferrylane
