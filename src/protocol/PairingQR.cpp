#include "protocol/PairingQR.h"

#include "core/Text.h"
#include "protocol/DisplayName.h"
#include "protocol/PairingUrl.h"

namespace ferrylane {

namespace {

QString phoneName(const QString& given)
{
    const QString name = withoutShortPrefix(given.trimmed());
    return name.isEmpty() ? unnamedPhone() : firstCharacters(name, maximumPhoneNameCharacters);
}

} // namespace

std::optional<FerrylanePairedTarget> parseFerrylanePairingQR(const QString& text)
{
    const auto url = parsePairingUrl(text);
    if (!url || url->port != phonePort) return std::nullopt;
    return FerrylanePairedTarget{phoneName(url->name),
        QStringLiteral("http://%1:%2").arg(url->host).arg(phonePort), url->keyText};
}

} // namespace ferrylane
