#include "discovery/NearbyNames.h"

#include "core/NameOrder.h"

#include <algorithm>

namespace ferrylane {

void NearbyNames::setAdvertised(const QStringList& names)
{
    advertised_ = {names.begin(), names.end()};
}

void NearbyNames::markSeen(const QString& name, platform::TimePoint now)
{
    if (seen_.size() == maximumSeen) forgetSilent(now);
    if (seen_.size() < maximumSeen || seen_.contains(name)) seen_[name] = now;
}

void NearbyNames::forgetSilent(platform::TimePoint now)
{
    std::erase_if(seen_, [&](const auto& entry) { return entry.second < now - grace; });
}

void NearbyNames::clear()
{
    advertised_.clear();
    seen_.clear();
}

QStringList NearbyNames::snapshot(platform::TimePoint now, const QString& ownName)
{
    forgetSilent(now);

    // Out of a set, so that names that differ only in case keep their order from one snapshot to
    // the next.
    std::set<QString> all = advertised_;
    for (const auto& [name, time] : seen_) {
        all.insert(name);
    }
    std::erase_if(
        all, [&](const QString& name) { return name.compare(ownName, Qt::CaseInsensitive) == 0; });
    QStringList names(all.begin(), all.end());
    std::stable_sort(names.begin(), names.end(), NameOrder());
    return names;
}

} // namespace ferrylane
