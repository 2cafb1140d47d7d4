#include "core/DeviceName.h"

#include "core/Settings.h"
#include "core/Text.h"
#include "platform/HostName.h"

namespace ferrylane {

namespace {

constexpr QStringView shortPrefix = u"fl ";
constexpr QStringView longPrefix = u"ferrylane ";
constexpr qsizetype longestTypedName = 40;

/// By whole characters: a blank that carries an accent is not the prefix's blank.
bool beginsWith(const QString& name, QStringView prefix)
{
    return firstCharacters(name, prefix.size()).compare(prefix, Qt::CaseInsensitive) == 0;
}

/// Trimming takes the blank that belongs to the prefix away, so it is looked for before.
bool isShortPrefixAlone(const QString& text)
{
    const QString name = text.trimmed();
    return name.compare(u"fl", Qt::CaseInsensitive) == 0 && text.contains(name + u' ');
}

QString nameOrDefault(const QString& hostName)
{
    const QString name = hostName.trimmed();
    return name.isEmpty() ? QStringLiteral("Mac") : name;
}

} // namespace

QString withoutProductPrefix(const QString& name)
{
    for (const QStringView prefix : {shortPrefix, longPrefix}) {
        if (beginsWith(name, prefix)) return name.sliced(prefix.size()).trimmed();
    }
    return name;
}

QString defaultFerrylaneDeviceSuffix()
{
    return nameOrDefault(platform::localizedHostName());
}

QString ferrylaneDeviceSuffix(const std::optional<QString>& storedName, const QString& hostName)
{
    const QString stored = storedName.value_or(QString());
    const QString name = withoutProductPrefix(stored.trimmed());
    return name.isEmpty() || isShortPrefixAlone(stored) ? nameOrDefault(hostName) : name;
}

QString ferrylaneDeviceSuffix()
{
    return ferrylaneDeviceSuffix(
        userSettings().string(ferrylaneDeviceNameKey), platform::localizedHostName());
}

QString ferrylaneDeviceName()
{
    return ferrylaneDeviceSuffix();
}

QString typedDeviceName(const QString& typed)
{
    if (isShortPrefixAlone(typed)) return {};
    QString name = typed.trimmed();
    if (beginsWith(name, shortPrefix)) name = name.sliced(shortPrefix.size()).trimmed();
    return firstCharacters(name, longestTypedName);
}

} // namespace ferrylane
