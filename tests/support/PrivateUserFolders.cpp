#include "support/PrivateUserFolders.h"

#include "core/Settings.h"
#include "support/TestFiles.h"

#include <QFile>

#include <stdexcept>

namespace support {

PrivateUserFolders::PrivateUserFolders()
    : homeVariable_("HOME", QFile::encodeName(folder_.path()))
    , configVariable_("XDG_CONFIG_HOME", QFile::encodeName(config()))
    , dataVariable_("XDG_DATA_HOME", QFile::encodeName(data()))
    , stateVariable_("XDG_STATE_HOME", QFile::encodeName(state()))
    , cacheVariable_("XDG_CACHE_HOME", QFile::encodeName(below(QStringLiteral("cache"))))
{
    // Going on would mean going on in some other folder.
    if (!folder_.isValid()) throw std::runtime_error("no temporary folder");
}

PrivateUserFolders::~PrivateUserFolders()
{
    // Or the folder would be made again after it has gone.
    ferrylane::userSettings().flush();
}

QString PrivateUserFolders::file(const QString& name, const QByteArray& content) const
{
    writeFile(below(name), content);
    return below(name);
}

QString PrivateUserFolders::log() const
{
    return QString::fromUtf8(contentOf(state() + QStringLiteral("/Ferrylane/ferrylane.log")));
}

} // namespace support
