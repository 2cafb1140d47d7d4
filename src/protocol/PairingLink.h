#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace ferrylane {

/// The name of a phone that has told none.
[[nodiscard]] QString unnamedPhone();

/// Drops a leading "fl ", in any case of letters, and trims what is left. Other names stay as they
/// are, blanks at their ends included.
[[nodiscard]] QString withoutShortPrefix(const QString& name);

/// What people see of a phone by the instance name of its DNS-SD service: without " ferrylane" at
/// the end and "fl " at the start, in any case of letters, and trimmed.
[[nodiscard]] QString ferrylaneDisplayNameForDiscoveredService(const QString& instanceName);

/// A paired phone.
struct FerrylanePairedTarget {
    QString name;
    /// "http://HOST:PORT" of the phone's receiver, without a path.
    QString baseURL;
    /// The phone's 32-byte key exactly as the phone gave it: base64url without padding or standard
    /// base64 (see base64URLDecode()). A secret: it is not to be logged.
    QString keyB64;

    bool operator==(const FerrylanePairedTarget&) const = default;
};

/// Whether the text decodes to exactly the 32 bytes of a key.
[[nodiscard]] bool decodesToKey(QStringView keyText);

/// The parts of "http://HOST:PORT/?flkey=KEY&name=NAME", the form of pairing texts in both
/// directions.
struct PairingUrl {
    QString host; ///< as it stands in a URL: ASCII, IPv6 in brackets
    std::uint16_t port = 0;
    QString keyText; ///< percent-decoded; it decodes to 32 bytes (base64URLDecode())
    QString name;    ///< percent-decoded; empty when there is none
};

/// Reads a pairing text: "http" in any case of letters, a host, a port and, among the items of the
/// query, a "flkey" of 32 bytes. Of items with the same name the first counts. User, path, fragment
/// and other items are ignored. A name that is not percent-encoded UTF-8 counts as none; in a key
/// that is an error. None for anything else.
[[nodiscard]] std::optional<PairingUrl> parsePairingUrl(const QString& text);

/// The TCP port of a phone's receiver, unless a phone says otherwise.
inline constexpr std::uint16_t phonePort = 8787;

/// What people see of a name, at most, in characters as they see them.
inline constexpr qsizetype maximumPhoneNameCharacters = 80;

/// Reads the pairing QR code that a phone shows: a pairing URL (see parsePairingUrl()) on the port
/// 8787. The name loses a leading "fl ", is trimmed and cut to 80 characters, and is "Android" when
/// there is none. The key is kept as it is written. None for any other text. From any thread.
[[nodiscard]] std::optional<FerrylanePairedTarget> parseFerrylanePairingQR(const QString& text);

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
