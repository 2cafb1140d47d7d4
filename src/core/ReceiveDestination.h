#pragma once

#include "platform/Folder.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <system_error>

namespace ferrylane {

// Where a received file goes. Names come from the network: whatever they hold, the place they lead
// to is in the receive folder. Names that are longer than the file system takes are shortened by
// whole characters.

/// The name with each slash, backslash, colon and NUL replaced by an underscore.
[[nodiscard]] QString sanitize(const QString& name);

/// The name of a sender's folder: without the product's prefix, safe, without dots and blanks at
/// its ends, at most 80 characters, "Unknown device" if nothing is left.
[[nodiscard]] QString cleanSenderFolderName(const std::optional<QString>& senderName);

/// The sender's folder in the receive folder, under the first name of namesToTry() that is taken,
/// created when missing. Null, and `error` set, when it cannot be opened.
[[nodiscard]] std::unique_ptr<platform::Folder> senderReceiveDirectory(
    const platform::Folder& receiveFolder, const std::optional<QString>& senderName,
    std::error_code& error);

/// Whether this is how a file system refuses a name for what is in it, as FAT and those of Windows
/// do.
[[nodiscard]] bool isNameRefused(const std::error_code& error);

/// The name, and what to try in turn when it is refused: without what FAT and Windows do not take,
/// and one that every file system takes.
[[nodiscard]] QStringList namesToTry(const QString& name);

/// A name that nothing in `folder` has: the safe one, else "stem (1).extension" and so on to 9999,
/// else a random one. Number and extension stay when it is shortened, but for an extension that
/// leaves the stem no character. Nothing is reserved: move the file there right away, without
/// replacing.
[[nodiscard]] QString collisionSafeDestination(const QString& name, const platform::Folder& folder);

} // namespace ferrylane
