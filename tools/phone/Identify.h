#pragma once

#include "phone/PairingLink.h"

#include <QByteArray>

#include <optional>

namespace ferrylane::phone {

/// The name in a computer's HTTP answer to `challenge` (the text as it was sent), if both proofs in
/// it show that the computer holds `key`.
[[nodiscard]] std::optional<QString> provenName(
    const platform::SecretKey& key, const QString& challenge, const QByteArray& answer);

/// Makes the computer prove that it holds the link's key, and returns its name. Throws Failure.
[[nodiscard]] QString identify(const PairingLink& link);

} // namespace ferrylane::phone
