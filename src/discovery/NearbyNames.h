#pragma once

#include "platform/Clock.h"

#include <QString>
#include <QStringList>

#include <map>
#include <set>

namespace ferrylane {

/// The names of the devices that are here right now, out of two sources: the latest set of DNS-SD
/// services, and who has answered over UDP in the last ten seconds. Of the latter, which anybody
/// can make up, no more than 256 are kept: those that are there stay, and newcomers wait for one of
/// them to fall silent. For one thread.
class NearbyNames {
public:
    static constexpr platform::Duration grace = std::chrono::seconds(10);
    static constexpr std::size_t maximumSeen = 256;

    /// `names` are all that DNS-SD has now.
    void setAdvertised(const QStringList& names);
    void markSeen(const QString& name, platform::TimePoint now);
    void clear();

    /// Every name once, names that differ in case being different ones, in the order for people.
    /// Names that have been silent for more than ten seconds are dropped for good. `ownName` in any
    /// case of letters is left out.
    [[nodiscard]] QStringList snapshot(platform::TimePoint now, const QString& ownName);

private:
    void forgetSilent(platform::TimePoint now);

    std::set<QString> advertised_;
    std::map<QString, platform::TimePoint> seen_;
};

} // namespace ferrylane
