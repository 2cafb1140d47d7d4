#include "core/StoragePaths.h"

#include "core/Settings.h"
#include "platform/Files.h"
#include "platform/UserFolders.h"

namespace ferrylane {

QString applicationSupportFolder()
{
    return platform::userDataFolder() + QStringLiteral("/Ferrylane");
}

QString logFolder()
{
    return platform::userStateFolder() + QStringLiteral("/Ferrylane");
}

QString receiveDir()
{
    QString folder = userSettings().string(ferrylaneReceiveFolderKey).value_or(QString());
    if (folder.isEmpty()) folder = platform::userDownloadsFolder() + QStringLiteral("/Ferrylane");
    // Without the folder, the first file that is to be written there fails and says so.
    static_cast<void>(platform::createFolders(folder));
    return folder;
}

} // namespace ferrylane
