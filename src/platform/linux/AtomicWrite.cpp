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

} // namespace

struct Replacement::Place {
    QByteArray target;
    QByteArray folder = folderOf(target);
    QByteArray temporary = folder + '/' + temporaryName();
    bool exists = false; ///< the temporary file
};

Replacement::Replacement(const QString& path, ByteView content, mode_t mode)
    : place_(std::make_unique<Place>(Place{nativePath(path)}))
{
    if (place_->target.isEmpty()) {
        result_.failure = std::make_error_code(std::errc::no_such_file_or_directory);
        return;
    }
    FileDescriptor file
        = openFile(place_->temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
    if (!file.isOpen()) {
        result_.failure = lastError();
        return;
    }
    place_->exists = true;
    // Before the first byte, and it can only widen: the umask has taken away from `mode`. What has
    // no modes, such as FAT, refuses.
    if (::fchmod(file.get(), mode) != 0) result_.modeError = lastError();
    result_.failure = writeAll(file.get(), content);
    if (!result_) result_.failure = syncAll(file.get());
    if (!result_) result_.failure = file.close();
}

Replacement::~Replacement()
{
    if (place_->exists) ::unlink(place_->temporary.constData());
}

bool Replacement::commit()
{
    if (result_) return false;
    if (::rename(place_->temporary.constData(), place_->target.constData()) == 0) {
        place_->exists = false;
    } else {
        result_.failure = lastError();
    }
    return !result_;
}

void Replacement::sync()
{
    const FileDescriptor folder = openFile(place_->folder, O_RDONLY | O_DIRECTORY);
    result_.syncError = folder.isOpen() ? syncAll(folder.get()) : lastError();
}

WriteResult writeFileAtomically(const QString& path, ByteView content, mode_t mode)
{
    Replacement replacement(path, content, mode);
    if (replacement.commit()) replacement.sync();
    return replacement.result();
}

} // namespace platform
