#pragma once

#include "core/StoragePaths.h"

#include <QString>

#include <optional>

namespace ferrylane {

// Where a received file goes. Names come from the network: whatever they hold, the place they lead
// to is in the receive folder.

/// The name with each slash, backslash, colon and NUL replaced by an underscore.
[[nodiscard]] QString sanitize(const QString& name);

/// The name of a sender's folder: without the product's prefix, safe, without dots and blanks at
/// its ends, at most 80 characters, "Unknown device" if nothing is left.
[[nodiscard]] QString cleanSenderFolderName(const std::optional<QString>& senderName);

/// The sender's folder in the receive folder. It is created when missing; when that fails, it is
/// returned all the same, and moving a file into it fails.
[[nodiscard]] QString senderReceiveDirectory(const std::optional<QString>& senderName);

/// A path in `folder` where nothing is: the safe name, else "stem (1).extension" and so on to 9999,
/// else a random name. Nothing is reserved: move the file in right away, without replacing.
[[nodiscard]] QString collisionSafeDestination(
    const QString& name, const QString& folder = receiveDir());

} // namespace ferrylane
