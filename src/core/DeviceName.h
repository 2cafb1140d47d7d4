#pragma once

#include <QString>

#include <optional>

namespace ferrylane {

/// Drops a leading "fl " or else "ferrylane ", in any case of letters, from a name without white
/// space at its ends, and trims the rest. One prefix goes, and only once.
[[nodiscard]] QString withoutProductPrefix(const QString& name);

/// The host's name as people gave it, "Mac" when it has none.
[[nodiscard]] QString defaultFerrylaneDeviceSuffix();

/// The device name in force, by which phones know this computer: the stored one, trimmed and
/// without the product's prefix, else the default one. From any thread.
[[nodiscard]] QString ferrylaneDeviceSuffix();

/// The same for a given stored name and host name. A stored name that is nothing but the prefix
/// "fl ", with its blank, counts as empty.
[[nodiscard]] QString ferrylaneDeviceSuffix(
    const std::optional<QString>& storedName, const QString& hostName);

/// ferrylaneDeviceSuffix() as it is.
[[nodiscard]] QString ferrylaneDeviceName();

/// What is stored of a name that the user typed: trimmed, without a leading "fl ", its first 40
/// characters. Empty when nothing is left, which is not to be stored.
[[nodiscard]] QString typedDeviceName(const QString& typed);

} // namespace ferrylane
