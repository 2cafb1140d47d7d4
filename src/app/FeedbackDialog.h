#pragma once

#include <QString>

#include <optional>

class QWidget;

namespace ferrylane {

/// What somebody wants to tell the maker.
struct Feedback {
    QString text;
    bool withDetails = false; ///< of this program, the system and the transfers
};

/// Asks for it and returns when that is decided; none when nothing is to be sent.
[[nodiscard]] std::optional<Feedback> askForFeedback(QWidget* parent);

} // namespace ferrylane
