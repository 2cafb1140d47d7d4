#pragma once

#include <QString>

namespace ferrylane {

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

} // namespace ferrylane
