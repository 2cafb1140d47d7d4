#pragma once

#include "protocol/PairedTarget.h"

#include <QList>
#include <QStringList>

#include <optional>

namespace ferrylane {

/// A device in the list of devices.
struct DeviceRow {
    QString name;
    bool isNearby = false;
    std::optional<FerrylanePairedTarget> target; ///< none for a device that is not paired

    [[nodiscard]] bool isPaired() const { return target.has_value(); }
};

/// The paired phones, then the devices nearby that are not paired, each in the order of their
/// names; without this computer.
[[nodiscard]] QList<DeviceRow> deviceRows(const QList<FerrylanePairedTarget>& paired,
    const QStringList& nearbyNames, const QString& ownName);

/// "Paired · Online", "Paired · Offline" or "Not paired".
[[nodiscard]] QString deviceStatusText(const DeviceRow& row);

} // namespace ferrylane
