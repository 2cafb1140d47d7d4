#include "support/PrivateUserFolders.h"

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

QString PrivateUserFolders::file(const QString& name, const QByteArray& content) const
{
    QFile file(below(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        throw std::runtime_error("no file in the temporary folder");
    }
    return file.fileName();
}

} // namespace support
