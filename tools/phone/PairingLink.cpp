#include "phone/PairingLink.h"

#include "core/Base64Url.h"
#include "pairing/PairingUrl.h"
#include "sender/TargetAddress.h"

namespace ferrylane::phone {

QString PairingLink::hostInHeader() const
{
    return TargetAddress{host, port}.hostInURL();
}

std::optional<PairingLink> parsePairingLink(const QString& text)
{
    const auto url = parsePairingUrl(text);
    if (!url || url->port == 0) return std::nullopt;
    const auto keyBytes = base64URLDecode(url->keyText);
    auto key
        = keyBytes ? platform::SecretKey::fromBytes(platform::bytesOf(*keyBytes)) : std::nullopt;
    if (!key) return std::nullopt;
    const bool isIPv6 = url->host.startsWith(u'[');
    const QString host = isIPv6 ? url->host.sliced(1).chopped(1) : url->host;
    return PairingLink{host, url->port, std::move(*key)};
}

} // namespace ferrylane::phone
