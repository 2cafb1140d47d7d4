#pragma once

#include "platform/SecretKey.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace ferrylane {

/// Length of a challenge in bytes, decoded.
constexpr qsizetype shortestChallenge = 16;
constexpr qsizetype longestChallenge = 64;

/// The whole response to an identify request: a proof that this computer holds the key (HMAC-SHA256
/// over the challenge), its name, and a proof that binds the name to the challenge. The header
/// order is part of the protocol. None when the challenge is missing, is not base64url (standard
/// base64 does as well), has a wrong length, or begins as the message of a name proof does.
[[nodiscard]] std::optional<QByteArray> identifyResponse(const platform::SecretKey& key,
    const std::optional<QString>& challenge, const QString& deviceName);

} // namespace ferrylane
