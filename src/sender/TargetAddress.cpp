#include "sender/TargetAddress.h"

#include <QUrl>

namespace ferrylane {

QString TargetAddress::hostInURL() const
{
    return host.contains(u':') ? u'[' + host + u']' : host;
}

QString TargetAddress::statusURL() const
{
    return QStringLiteral("http://%1:%2/transfer-status").arg(hostInURL(), QString::number(port));
}

std::optional<TargetAddress> parseTargetAddress(const QString& baseURL)
{
    const QUrl url(baseURL, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty() || url.port() < 0) return std::nullopt;
    return TargetAddress{url.host(), static_cast<std::uint16_t>(url.port())};
}

} // namespace ferrylane
