#include "app/DeviceRows.h"

#include "app/KnownDevices.h"

#include <algorithm>

namespace ferrylane {

QList<DeviceRow> deviceRows(const QList<FerrylanePairedTarget>& paired,
    const QStringList& nearbyNames, const QString& ownName)
{
    QList<DeviceRow> rows;
    const auto targets = offeredTargets(paired, ownName);
    for (const FerrylanePairedTarget& target : targets) {
        const bool isNearby = std::any_of(nearbyNames.begin(), nearbyNames.end(),
            [&](const QString& name) { return isSameName(name, target.name); });
        rows.append({target.name, isNearby, target});
    }
    for (const QString& name : offeredNames(nearbyNames, targets, ownName)) {
        rows.append({name, true, std::nullopt});
    }
    return rows;
}

QString deviceStatusText(const DeviceRow& row)
{
    if (!row.isPaired()) return QStringLiteral("Not paired");
    return row.isNearby ? QStringLiteral("Paired \u00B7 Online")
                        : QStringLiteral("Paired \u00B7 Offline");
}

} // namespace ferrylane
