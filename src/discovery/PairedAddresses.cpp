#include "discovery/PairedAddresses.h"

#include "core/Log.h"
#include "pairing/PairedTargets.h"

#include <map>

namespace ferrylane {

namespace {

struct Claim {
    std::uint32_t host = 0;
    QString baseURL; ///< empty when the host has told no port that can be reached
    bool isContested = false;
};

struct AnyCase {
    bool operator()(const QString& left, const QString& right) const
    {
        return left.compare(right, Qt::CaseInsensitive) < 0;
    }
};

using Claims = std::map<QString, Claim, AnyCase>;

Claims claimsIn(const Scan& scan)
{
    Claims claims;
    for (const auto& [device, source, time] : scan.replies) {
        const auto [entry, isFirst]
            = claims.try_emplace(device.name, Claim{source.address, {}, false});
        Claim& claim = entry->second;
        claim.isContested = claim.isContested || claim.host != source.address;
        if (!device.tcpPort) continue;
        claim.baseURL
            = QStringLiteral("http://%1:%2").arg(source.addressText()).arg(*device.tcpPort);
    }
    return claims;
}

} // namespace

void PairedAddresses::refresh(const Scan& scan)
{
    if (scan.outcome != Scan::Outcome::complete || scan.replies.empty()) return;
    const Claims claims = claimsIn(scan);
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
