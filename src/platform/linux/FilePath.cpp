#include "platform/FilePath.h"

#include "platform/linux/FileCalls.h"

#include <sys/stat.h>

namespace platform {

FilePath::FilePath(const QString& path) : native_(nativePath(path)) {}

FilePath FilePath::fromNative(QByteArray path)
{
    FilePath result;
    result.native_ = std::move(path);
    return result;
}

std::optional<FilePath> FilePath::fromUrl(const QUrl& url)
{
    if (!url.isLocalFile()) return std::nullopt;
    if (!url.host().isEmpty()) return FilePath(url.toLocalFile());
    // Not toLocalFile(), which makes text of it.
    const QByteArray encoded = url.path(QUrl::FullyEncoded).toLatin1();
    QByteArray path = QByteArray::fromPercentEncoding(encoded);
    if (path.contains('\0')) return std::nullopt;
    return fromNative(std::move(path));
}

QString FilePath::name() const
{
    return QString::fromUtf8(native_.sliced(native_.lastIndexOf('/') + 1));
}

bool FilePath::isFolder() const
{
    struct stat status {};
    return ::stat(native_.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<qint64> FilePath::size() const
{
    struct stat status {};
    if (::stat(native_.constData(), &status) != 0) return std::nullopt;
    return status.st_size;
}

FilePaths withoutFolders(FilePaths paths)
{
    paths.removeIf([](const FilePath& path) { return path.isFolder(); });
    return paths;
}

} // namespace platform
