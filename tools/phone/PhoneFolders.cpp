#include "phone/PhoneFolders.h"

#include <QFile>
#include <QStandardPaths>

namespace ferrylane::phone {

void usePhoneFolders()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/ferrylane-phone/");
    const struct {
        const char* variable;
        const char* folder;
    } rows[]
        = {{"XDG_CONFIG_HOME", "config"}, {"XDG_STATE_HOME", "state"}, {"XDG_DATA_HOME", "data"}};
    for (const auto& row : rows) {
        qputenv(row.variable, QFile::encodeName(base + QLatin1StringView(row.folder)));
    }
}

} // namespace ferrylane::phone
