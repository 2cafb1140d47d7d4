#pragma once

#include "protocol/PairingLink.h"

#include <QList>
#include <QString>

#include <optional>

namespace ferrylane {

// The paired phones, in the order of pairing, and which of them files are sent to. The list is a
// file beside the receiver key, for its owner alone; the choice is a setting. Nothing is kept in
// memory: every call reads the file and replaces it in one step that survives a crash. Safe from
// any thread: nobody reads half a change, and none undoes another. Changes wait for the disk,
// reading does not wait for them.
//
// Names are compared without regard to the case of letters, keys exactly.

/// The path of the list.
[[nodiscard]] QString ferrylanePairedTargetsURL();
/// The path where earlier versions kept their single phone. It is taken over when there is no
/// readable list, then deleted.
[[nodiscard]] QString ferrylanePairedTargetURL();

/// The list; phones whose key is not 32 bytes are left out, and names lose a leading "fl ". A list
/// with one unreadable entry is unreadable as a whole and counts as missing; it is kept under
/// another name when the next change is written (see setAside()). A phone taken over from an
/// earlier version becomes the chosen one.
[[nodiscard]] QList<FerrylanePairedTarget> loadFerrylanePairedTargets();

/// Puts the phone at the end of the list, in place of those with its key or its name, and chooses
/// it. False, with a line in the log, when the list cannot be written; the choice then stays.
[[nodiscard]] bool saveFerrylanePairedTarget(const FerrylanePairedTarget& target);

/// Gives the first phone of this name a new address. Cheap when it has that one already, or when
/// nobody has the name: nothing is written or logged.
void refreshFerrylanePairedTargetAddress(const QString& name, const QString& baseURL);

/// Chooses the phone that files are sent to.
void selectFerrylanePairedTarget(const FerrylanePairedTarget& target);

/// The chosen phone. When the choice names none of the list, the first one becomes the choice. None
/// when the list is empty.
[[nodiscard]] std::optional<FerrylanePairedTarget> loadFerrylanePairedTarget();

/// Removes the phones with this one's key, whatever their name. If it was the chosen one, the first
/// of the rest becomes so, even when the list could not be written (which is logged).
void forgetFerrylanePairedTarget(const FerrylanePairedTarget& target);
/// Forgets the chosen phone, if there is one.
void forgetFerrylanePairedTarget();
/// Removes the list, and what has been kept of damaged ones.
void removeFerrylanePairedTargets();

// Paired phones as JSON: an array of objects with the members "name", "baseURL" and "keyB64", all
// of them text. Other members are passed over; one that lacks makes the whole unreadable.

/// Compact, with each slash escaped.
[[nodiscard]] QByteArray pairedTargetsJson(const QList<FerrylanePairedTarget>& targets);

[[nodiscard]] std::optional<QList<FerrylanePairedTarget>> parsePairedTargetsJson(
    const QByteArray& json);

/// One object by itself.
[[nodiscard]] std::optional<FerrylanePairedTarget> parsePairedTargetJson(const QByteArray& json);

} // namespace ferrylane
