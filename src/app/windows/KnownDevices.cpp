#include "app/windows/KnownDevices.h"

#include "core/Text.h"

#include <algorithm>

namespace ferrylane {

bool isSameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QList<FerrylanePairedTarget> offeredTargets(
    QList<FerrylanePairedTarget> targets, const QString& ownName)
{
    targets.removeIf(
        [&](const FerrylanePairedTarget& target) { return isSameName(target.name, ownName); });
    std::stable_sort(targets.begin(), targets.end(),
        [order = NameOrder()](const FerrylanePairedTarget& a, const FerrylanePairedTarget& b) {
            return order(a.name, b.name);
        });
    return targets;
}

QStringList offeredNames(
    QStringList names, const QList<FerrylanePairedTarget>& offered, const QString& ownName)
{
    names.removeIf([&](const QString& name) {
        return isSameName(name, ownName)
            || std::any_of(
                offered.begin(), offered.end(), [&](const FerrylanePairedTarget& target) {
                    return target.name.toLower() == name.toLower();
                });
    });
    std::stable_sort(names.begin(), names.end(), NameOrder());
    return names;
}

} // namespace ferrylane
