#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

namespace ferrylane::phone {

/// What the command line asks for.
struct Arguments {
    enum class Command { identify, upload };

    Command command = Command::identify;
    std::optional<QString> link; ///< none: this user's own receiver (--local)
    QStringList files;
    bool skipsIdentify = false;
    std::optional<QString> senderName;
};

struct Help {
    QString text;
};

/// `arguments`: with the program's name in front. Throws Failure (usage).
[[nodiscard]] std::variant<Arguments, Help> parseArguments(const QStringList& arguments);

} // namespace ferrylane::phone
