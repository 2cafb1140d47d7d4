#include "protocol/DisplayName.h"

#include "core/Text.h"

namespace ferrylane {

namespace {

constexpr QStringView shortPrefix = u"fl ";
constexpr QStringView productSuffix = u" ferrylane";

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

} // namespace ferrylane
