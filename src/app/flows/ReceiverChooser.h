#pragma once

#include "protocol/PairingLink.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class QWidget;

namespace ferrylane {

/// One way that the question where to send offers.
struct SendChoice {
    enum class Kind { sendTo, pair, pairByCode, cancel };

    Kind kind = Kind::cancel;
    QString text;                                ///< of its button
    std::optional<FerrylanePairedTarget> target; ///< of sendTo

    bool operator==(const SendChoice&) const = default;
};

/// All of them in order: the paired phones, the visible devices that are not paired, pairing by a
/// code, and none of these. Both lists are sorted for people; this computer is in neither.
[[nodiscard]] QList<SendChoice> sendChoices(const QList<FerrylanePairedTarget>& paired,
    const QStringList& visibleNames, const QString& ownName);

/// "2 files selected. Choose a paired device, or pair a visible one."
[[nodiscard]] QString sendQuestionText(qsizetype fileCount);

/// Asks where files are to go, with a button for each choice, and returns when one has been chosen.
/// Closing the window chooses the last one. Many choices scroll; the window stays within the
/// screen.
[[nodiscard]] SendChoice askForReceiver(
    QWidget* parent, const QString& question, const QList<SendChoice>& choices);

} // namespace ferrylane
