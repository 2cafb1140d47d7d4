#include "platform/Files.h"

#include "platform/linux/FileCalls.h"

#include <QRandomGenerator>

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

/// Hidden, not to be guessed, and of a length that does not depend on the name of the file.
QByteArray temporaryName()
{
    auto* const random = QRandomGenerator::system();
    return '.' + QByteArray::number(random->generate64(), 16)
        + QByteArray::number(random->generate64(), 16) + ".tmp";
}

/// A new file in a folder, removed again unless it was renamed.
class TemporaryFile {
public:
    TemporaryFile(const QByteArray& folder, mode_t mode)
        : path_(folder + '/' + temporaryName())
        , file_(openFile(path_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode))
    {
        if (!file_.isOpen()) {
            error_ = lastError();
            return;
        }
        exists_ = true;
        // Before the first byte, and it can only widen: the umask has taken away from `mode`.
        if (::fchmod(file_.get(), mode) != 0) error_ = lastError();
    }

    ~TemporaryFile()
    {
        if (exists_) ::unlink(path_.constData());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Each step does nothing once one has failed.
    void write(ByteView content)
    {
        if (!error_) error_ = writeAll(file_.get(), content);
        if (!error_) error_ = syncAll(file_.get());
        if (!error_) error_ = file_.close();
    }

    void renameTo(const QByteArray& target)
    {
        if (error_) return;
        if (::rename(path_.constData(), target.constData()) == 0) {
            exists_ = false;
        } else {
            error_ = lastError();
        }
    }

    [[nodiscard]] const std::error_code& error() const { return error_; }

private:
    QByteArray path_;
    FileDescriptor file_;
    bool exists_ = false;
    std::error_code error_;
};

} // namespace

std::error_code writeFileAtomically(const QString& path, ByteView content, mode_t mode)
{
    const QByteArray target = nativePath(path);
    if (target.isEmpty()) return std::make_error_code(std::errc::no_such_file_or_directory);

    const QByteArray folderPath = folderOf(target);
    // Opened first: what cannot be synced in the end had better not be replaced.
    const FileDescriptor folder = openFile(folderPath, O_RDONLY | O_DIRECTORY);
    if (!folder.isOpen()) return lastError();

    TemporaryFile temporary(folderPath, mode);
    temporary.write(content);
    temporary.renameTo(target);
    if (temporary.error()) return temporary.error();
    return syncFolderEntries(folder.get());
}

} // namespace platform
