#pragma once

#include <QString>

#include <cstdint>

namespace ferrylane {

/// The text of the QR code by which others pair with a receiver: "http://HOST:PORT/?flkey=KEY".
/// `host` as it stands in a URL (see ferrylaneLocalHostForURL()), `keyText` the receiver key as
/// base64url. It holds the secret: it is not to be logged.
[[nodiscard]] QString ferrylanePairingLink(
    const QString& host, std::uint16_t tcpPort, const QString& keyText);

/// The same with "&name=" and the device's name, percent-encoded; "Mac" for a name that cannot
/// be, which is not Unicode.
[[nodiscard]] QString ferrylanePairingLink(
    const QString& host, std::uint16_t tcpPort, const QString& keyText, const QString& deviceName);

} // namespace ferrylane
