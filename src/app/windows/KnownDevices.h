#pragma once

#include "protocol/PairingLink.h"

#include <QList>
#include <QStringList>

namespace ferrylane {

// The devices that people choose from: in the order of their names, and without this computer. A
// name is the same in any case of letters.

[[nodiscard]] bool isSameName(const QString& a, const QString& b);

/// The paired phones.
[[nodiscard]] QList<FerrylanePairedTarget> offeredTargets(
    QList<FerrylanePairedTarget> targets, const QString& ownName);

/// The names nearby that are none of `offered`.
[[nodiscard]] QStringList offeredNames(
    QStringList names, const QList<FerrylanePairedTarget>& offered, const QString& ownName);

} // namespace ferrylane
