#include "protocol/PairingLink.h"

#include "core/Encodings.h"
#include "core/Text.h"
#include "platform/SecretKey.h"

#include <QUrl>

namespace ferrylane {

namespace {

constexpr QStringView shortPrefix = u"fl ";
constexpr QStringView productSuffix = u" ferrylane";

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

QString phoneName(const QString& given)
{
    const QString name = withoutShortPrefix(given.trimmed());
    return name.isEmpty() ? unnamedPhone() : firstCharacters(name, maximumPhoneNameCharacters);
}

} // namespace

QString unnamedPhone()
{
    return QStringLiteral("Android");
}

QString withoutShortPrefix(const QString& name)
{
    // By whole characters: a blank that carries an accent is not the prefix's blank.
    const QString start = firstCharacters(name, shortPrefix.size());
    const bool hasPrefix = start.compare(shortPrefix, Qt::CaseInsensitive) == 0;
    return hasPrefix ? name.sliced(shortPrefix.size()).trimmed() : name;
}

QString ferrylaneDisplayNameForDiscoveredService(const QString& instanceName)
{
    QString name = instanceName.trimmed();
    if (name.endsWith(productSuffix, Qt::CaseInsensitive)) {
        name = name.chopped(productSuffix.size()).trimmed();
    }
    name = withoutShortPrefix(name);
    return name.isEmpty() ? unnamedPhone() : name;
}

bool decodesToKey(QStringView keyText)
{
    const auto key = base64URLDecode(keyText);
    return key && key->size() == qsizetype{platform::SecretKey::length};
}

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

std::optional<FerrylanePairedTarget> parseFerrylanePairingQR(const QString& text)
{
    const auto url = parsePairingUrl(text);
    if (!url || url->port != phonePort) return std::nullopt;
    return FerrylanePairedTarget{phoneName(url->name),
        QStringLiteral("http://%1:%2").arg(url->host).arg(phonePort), url->keyText};
}

QString ferrylanePairingLink(const QString& host, std::uint16_t tcpPort, const QString& keyText)
{
    return QStringLiteral("http://") + host + u':' + QString::number(tcpPort)
        + QStringLiteral("/?flkey=") + keyText;
}

QString ferrylanePairingLink(
    const QString& host, std::uint16_t tcpPort, const QString& keyText, const QString& deviceName)
{
    const QString name
        = deviceName.isValidUtf16() ? percentEncodeForQuery(deviceName) : QStringLiteral("Mac");
    return ferrylanePairingLink(host, tcpPort, keyText) + QStringLiteral("&name=") + name;
}

} // namespace ferrylane
