#include "app/StorageCheck.h"

#include "core/StoragePaths.h"
#include "platform/Files.h"

#include <QFileInfo>
#include <QStringList>

namespace ferrylane {

namespace {

bool canWriteTo(const QString& folder)
{
    constexpr mode_t ownersOnly = 0700;
    return !platform::createFolders(folder, ownersOnly) && QFileInfo(folder).isWritable();
}

} // namespace

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
