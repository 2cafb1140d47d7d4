#include "protocol/PairingUrl.h"

#include "core/Encodings.h"
#include "protocol/PairedTarget.h"

#include <QUrl>

namespace ferrylane {

namespace {

QString hostInUrl(const QUrl& url)
{
    // Encoded, so that a name in another script or the zone of an address stays part of a URL.
    const QString host = url.host(QUrl::FullyEncoded);
    return host.contains(u':') ? u'[' + host + u']' : host;
}

/// The value of the first item of this name. None when there is no such item, or when it has no
/// value that can be decoded. QUrlQuery does not tell what cannot be decoded.
std::optional<QString> queryValue(const QString& encodedQuery, QStringView name)
{
    for (const QStringView item : QStringView(encodedQuery).split(u'&')) {
        const qsizetype equals = item.indexOf(u'=');
        const QStringView itemName = equals < 0 ? item : item.first(equals);
        if (percentDecode(itemName) != name) continue;
        return equals < 0 ? std::nullopt : percentDecode(item.sliced(equals + 1));
    }
    return std::nullopt;
}

} // namespace

std::optional<PairingUrl> parsePairingUrl(const QString& text)
{
    const QUrl url(text, QUrl::StrictMode);
    const int port = url.port();
    // The scheme has been lower-cased.
    if (!url.isValid() || url.scheme() != u"http" || url.host().isEmpty() || port < 1) {
        return std::nullopt;
    }
    const QString query = url.query(QUrl::FullyEncoded);
    const auto keyText = queryValue(query, u"flkey");
    if (!keyText || !decodesToKey(*keyText)) return std::nullopt;
    return PairingUrl{hostInUrl(url), static_cast<std::uint16_t>(port), *keyText,
        queryValue(query, u"name").value_or(QString())};
}

} // namespace ferrylane
