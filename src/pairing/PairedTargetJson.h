#pragma once

#include "protocol/PairedTarget.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace ferrylane {

// Paired phones as JSON: an object with the members "name", "baseURL" and "keyB64", all of them
// text. Other members are passed over; one that lacks makes the whole unreadable.

/// An array of objects, compact, with each slash escaped.
[[nodiscard]] QByteArray pairedTargetsJson(const QList<FerrylanePairedTarget>& targets);

[[nodiscard]] std::optional<QList<FerrylanePairedTarget>> parsePairedTargetsJson(
    const QByteArray& json);

/// One object by itself.
[[nodiscard]] std::optional<FerrylanePairedTarget> parsePairedTargetJson(const QByteArray& json);

} // namespace ferrylane
