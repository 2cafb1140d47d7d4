#include "receiver/PartialFile.h"

#include "core/Log.h"
#include "core/ReceiveDestination.h"

#include <QRegularExpression>
#include <QUuid>

#include <chrono>

namespace ferrylane {

namespace {

// How often another process may take the chosen name before ours is moved there.
constexpr int maximumClaims = 100;

QString newPartialName()
{
    const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    return u'.' + uuid + QStringLiteral(".ferrylane-v4-part");
}

bool isPartialName(const QString& name)
{
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        QStringLiteral("\\.[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.ferrylane-v4-part")));
    return pattern.match(name).hasMatch();
}

void syncOrLog(const platform::Folder& folder)
{
    if (const std::error_code error = folder.sync()) {
        flLog(QStringLiteral("Stored the upload, but a crash may undo that: cannot sync %1: %2")
                  .arg(folder.path(), QString::fromStdString(error.message())));
    }
}

void removeStaleIn(const platform::Folder& folder, const QStringList& names)
{
    // Where no lock can tell that somebody writes it, time must.
    constexpr auto age = std::chrono::hours(24);
    for (const QString& name : names) {
        if (isPartialName(name) && folder.removeUnlessLocked(name, age)) {
            flLog(QStringLiteral("Removed unfinished upload ") + name);
        }
    }
}

} // namespace

std::unique_ptr<PartialFile> PartialFile::create(const QString& folder, std::error_code& error)
{
    SharedFolder opened = platform::Folder::open(folder, error);
    return opened ? createIn(std::move(opened), error) : nullptr;
}

std::unique_ptr<PartialFile> PartialFile::createIn(SharedFolder folder, std::error_code& error)
{
    for (int i = 0; i < maximumClaims; ++i) {
        const QString name = newPartialName();
        auto file = folder->createFile(name, error);
        if (file) {
            return std::unique_ptr<PartialFile>(
                new PartialFile(std::move(folder), name, std::move(file)));
        }
        if (error != std::errc::device_or_resource_busy) break;
    }
    return nullptr;
}

PartialFile::PartialFile(SharedFolder folder, QString name, std::unique_ptr<platform::NewFile> file)
    : folder_(std::move(folder)), name_(std::move(name)), file_(std::move(file))
{
}

PartialFile::~PartialFile()
{
    if (!name_.isEmpty()) folder_->remove(name_);
}

std::optional<QString> PartialFile::store(
    const QString& name, const std::optional<QString>& senderName, std::error_code& error)
{
    error = file_->sync();
    if (error) return std::nullopt;
    const SharedFolder folder = senderReceiveDirectory(*folder_, senderName, error);
    if (error) return std::nullopt;
    const QString stored = moveInto(folder, name, error);
    if (error) return std::nullopt;
    syncOrLog(*folder);
    // The sender's folder may be new, and the partial file has left this one.
    syncOrLog(*folder_);
    return folder->path() + u'/' + stored;
}

QString PartialFile::moveInto(
    const SharedFolder& folder, const QString& name, std::error_code& error)
{
    QString stored = claimName(*folder, name, error);
    if (error != std::errc::cross_device_link) return stored;

    // To another file system only a copy gets, which is claimed as soon as it is safe there.
    const auto copy = createIn(folder, error);
    if (!error) error = file_->copyTo(*copy->file_);
    if (!error) error = copy->file_->sync();
    return error ? QString() : copy->claimName(*folder, name, error);
}

QString PartialFile::claimName(
    const platform::Folder& folder, const QString& name, std::error_code& error)
{
    QString destination;
    for (const QString& wanted : namesToTry(name)) {
        for (int i = 0; i < maximumClaims; ++i) {
            destination = collisionSafeDestination(wanted, folder);
            error = folder_->moveWithoutReplacing(name_, folder, destination);
            if (error != std::errc::file_exists) break;
        }
        if (!isNameRefused(error)) break;
    }
    if (!error) name_.clear();
    return destination;
}

void removeStalePartialFiles(const QString& folder)
{
    std::error_code error;
    const auto receiveFolder = platform::Folder::open(folder, error);
    if (!receiveFolder) return;
    const QStringList names = receiveFolder->names();
    removeStaleIn(*receiveFolder, names);
    // A sender's folder has one only if it is on another file system, but that may have changed.
    for (const QString& name : names) {
        if (!receiveFolder->isFolder(name)) continue;
        const auto sender = receiveFolder->openOrCreate(name, error);
        if (sender) removeStaleIn(*sender, sender->names());
    }
}

} // namespace ferrylane
