#pragma once

#include "app/SendChoices.h"

class QWidget;

namespace ferrylane {

/// Asks where files are to go, with a button for each choice, and returns when one has been chosen.
/// Closing the window chooses the last one. Many choices scroll; the window stays within the
/// screen.
[[nodiscard]] SendChoice askForReceiver(
    QWidget* parent, const QString& question, const QList<SendChoice>& choices);

} // namespace ferrylane
