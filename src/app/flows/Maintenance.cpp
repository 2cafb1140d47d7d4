#include "app/flows/Maintenance.h"

#include "core/Settings.h"
#include "core/StoragePaths.h"
#include "pairing/PairedTargets.h"
#include "pairing/ReceiverKeyStore.h"
#include "platform/Files.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QTemporaryFile>

namespace ferrylane {

namespace {

bool canWriteTo(const QString& folder)
{
    constexpr mode_t ownersOnly = 0700;
    return !platform::createFolders(folder, ownersOnly) && QFileInfo(folder).isWritable();
}

} // namespace

void removeSettingsAndPairings()
{
    for (const QString& key : userSettings().keys()) {
        if (key.startsWith(u"Ferrylane")) userSettings().remove(key);
    }
    removeFerrylanePairedTargets();
    QFile::remove(ferrylaneKeyURL());
}

QString receiveFolderProblem(const QString& folder)
{
    if (const std::error_code error = platform::createFolders(folder)) {
        return QString::fromStdString(error.message());
    }
    QTemporaryFile file(folder + QStringLiteral("/.ferrylane-try"));
    return file.open() ? QString() : file.errorString();
}

QString storageProblem()
{
    QStringList problems;
    if (!canWriteTo(applicationSupportFolder())) {
        problems << QStringLiteral("Pairings and recent transfers last only until Ferrylane ends: "
                                   "the folder %1 cannot be written.")
                        .arg(applicationSupportFolder());
    }
    if (!canWriteTo(logFolder())) {
        problems << QStringLiteral("Nothing is logged: the folder %1 cannot be written.")
                        .arg(logFolder());
    }
    if (!canWriteTo(receiveDir())) {
        problems << QStringLiteral("No file can be received: the folder %1 cannot be written.")
                        .arg(receiveDir());
    }
    return problems.join(QStringLiteral("\n\n"));
}

} // namespace ferrylane
