#include "phone/PairingLink.h"

#include "core/Base64Url.h"

#include <QUrl>
#include <QUrlQuery>

namespace ferrylane::phone {

QString PairingLink::hostInHeader() const
{
    return host.contains(u':') ? u'[' + host + u']' : host;
}

std::optional<PairingLink> parsePairingLink(const QString& text)
{
    const QUrl url(text, QUrl::StrictMode);
    const int port = url.port();
    if (!url.isValid() || url.scheme() != u"http" || url.host().isEmpty() || port < 1) {
        return std::nullopt;
    }
    const QString keyText
        = QUrlQuery(url).queryItemValue(QStringLiteral("flkey"), QUrl::FullyDecoded);
    const auto keyBytes = base64URLDecode(keyText);
    if (!keyBytes) return std::nullopt;
    auto key = platform::SecretKey::fromBytes(platform::bytesOf(*keyBytes));
    if (!key) return std::nullopt;
    return PairingLink{url.host(), static_cast<std::uint16_t>(port), std::move(*key)};
}

} // namespace ferrylane::phone
