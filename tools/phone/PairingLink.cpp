#include "phone/PairingLink.h"

#include "core/Encodings.h"
#include "protocol/PairingLink.h"

#include <QRegularExpression>

namespace ferrylane::phone {

namespace {

/// People write a zone behind a mere percent sign, which a URL does not allow.
QString withEncodedZone(const QString& link)
{
    static const QRegularExpression zone(QStringLiteral("^([^/]*//\\[[^]%]*)%(?!25)"));
    return QString(link).replace(zone, QStringLiteral("\\1%25"));
}

} // namespace

std::optional<PairingLink> parsePairingLink(const QString& text)
{
    const auto url = parsePairingUrl(withEncodedZone(text));
    if (!url) return std::nullopt;
    const auto address
        = parseTargetAddress(QStringLiteral("http://%1:%2").arg(url->host).arg(url->port));
    const auto keyBytes = base64URLDecode(url->keyText);
    auto key
        = keyBytes ? platform::SecretKey::fromBytes(platform::bytesOf(*keyBytes)) : std::nullopt;
    if (!address || !key) return std::nullopt;
    return PairingLink{*address, std::move(*key)};
}

} // namespace ferrylane::phone
