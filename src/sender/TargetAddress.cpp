#include "sender/TargetAddress.h"

#include <QUrl>

namespace ferrylane {

QString TargetAddress::hostInHeader() const
{
    return host.contains(u':') ? u'[' + host.section(u'%', 0, 0) + u']' : host;
}

QString TargetAddress::baseURL() const
{
    // In a URL the percent sign in front of a zone is encoded.
    const QString encoded = QString(host).replace(u'%', QStringLiteral("%25"));
    return QStringLiteral("http://%1:%2")
        .arg(host.contains(u':') ? u'[' + encoded + u']' : host, QString::number(port));
}

std::optional<TargetAddress> parseTargetAddress(const QString& baseURL)
{
    const QUrl url(baseURL, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty() || url.port() < 0) return std::nullopt;
    // Encoded, as resolvers take names in other scripts, but for the zone.
    const QString host
        = url.host(QUrl::FullyEncoded).replace(QStringLiteral("%25"), QStringLiteral("%"));
    return TargetAddress{host, static_cast<std::uint16_t>(url.port())};
}

} // namespace ferrylane
