#include "discovery/PairedAddresses.h"

#include "core/Log.h"
#include "pairing/PairedTargets.h"

#include <utility>

namespace ferrylane {

void PairedAddresses::claim(const DiscoveryReply& reply, const platform::Endpoint& source)
{
    const auto [entry, isFirst] = claims_.try_emplace(reply.name, Claim{source.address, {}, false});
    Claim& claim = entry->second;
    claim.isContested = claim.isContested || claim.host != source.address;
    if (!reply.tcpPort) return;
    claim.baseURL = QStringLiteral("http://%1:%2").arg(source.addressText()).arg(*reply.tcpPort);
}

void PairedAddresses::refresh()
{
    const auto claims = std::exchange(claims_, {});
    if (claims.empty()) return;
    for (const FerrylanePairedTarget& target : loadFerrylanePairedTargets()) {
        const auto found = claims.find(target.name);
        if (found == claims.end()) continue;
        const Claim& claim = found->second;
        if (claim.isContested) {
            tellContested(target.name, target.baseURL);
            continue;
        }
        contested_.removeAll(target.name);
        if (claim.baseURL.isEmpty() || claim.baseURL == target.baseURL) continue;
        refreshFerrylanePairedTargetAddress(target.name, claim.baseURL);
    }
}

void PairedAddresses::tellContested(const QString& name, const QString& address)
{
    if (contested_.contains(name)) return;
    contested_.append(name);
    flLog(QStringLiteral("More than one device calls itself %1: its paired address stays %2")
              .arg(name, address));
}

} // namespace ferrylane
