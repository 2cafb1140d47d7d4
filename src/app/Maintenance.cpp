#include "app/Maintenance.h"

#include "core/Settings.h"
#include "pairing/PairedTargets.h"
#include "pairing/ReceiverKeyStore.h"
#include "platform/Files.h"

#include <QTemporaryFile>

namespace ferrylane {

void removeSettingsAndPairings()
{
    for (const QString& key : userSettings().keys()) {
        if (key.startsWith(u"Ferrylane")) userSettings().remove(key);
    }
    removeFerrylanePairedTargets();
    platform::removeFile(ferrylaneKeyURL());
}

QString receiveFolderProblem(const QString& folder)
{
    if (const std::error_code error = platform::createFolders(folder)) {
        return QString::fromStdString(error.message());
    }
    QTemporaryFile file(folder + QStringLiteral("/.ferrylane-try"));
    return file.open() ? QString() : file.errorString();
}

} // namespace ferrylane
