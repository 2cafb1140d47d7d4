#pragma once

#include "platform/Files.h"

#include <QByteArrayList>
#include <QString>

#include <chrono>
#include <cstdint>
#include <optional>
#include <variant>

namespace ferrylane::phone {

// What the command line asks for. A link that is none stands for this user's own receiver
// (--local).

struct IdentifyArguments {
    std::optional<QString> link;
};

struct UploadArguments {
    std::optional<QString> link;
    platform::FilePaths files;
    bool skipsIdentify = false;
    std::optional<QString> senderName;
};

struct ReceiveArguments {
    QString folder;
    QString name;
    std::uint16_t port = 0;
    int busyTimes = 0;
};

struct DiscoverArguments {
    std::chrono::seconds time{};
};

struct Help {
    QString text;
};

using Arguments
    = std::variant<Help, IdentifyArguments, UploadArguments, ReceiveArguments, DiscoverArguments>;

/// `arguments`: as main() gets them, with the program's name in front. Throws Failure (usage).
[[nodiscard]] Arguments parseArguments(const QByteArrayList& arguments);

} // namespace ferrylane::phone
