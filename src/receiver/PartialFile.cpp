#include "receiver/PartialFile.h"

#include "core/Log.h"
#include "core/ReceiveDestination.h"

#include <QRegularExpression>
#include <QUuid>

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

} // namespace

std::unique_ptr<PartialFile> PartialFile::create(const QString& folder, std::error_code& error)
{
    const QString path = folder + u'/' + newPartialName();
    auto file = platform::NewFile::create(path, error);
    if (!file) return nullptr;
    return std::unique_ptr<PartialFile>(new PartialFile(folder, path, std::move(file)));
}

PartialFile::PartialFile(QString folder, QString path, std::unique_ptr<platform::NewFile> file)
    : folder_(std::move(folder)), path_(std::move(path)), file_(std::move(file))
{
}

PartialFile::~PartialFile()
{
    if (!kept_) platform::removeFile(path_);
}

std::optional<QString> PartialFile::store(
    const QString& name, const std::optional<QString>& senderName, std::error_code& error)
{
    error = file_->sync();
    if (!error) error = file_->close();
    if (!error) error = moveInto(senderReceiveDirectory(senderName), name);
    if (error) return std::nullopt;
    kept_ = true;
    return path_;
}

std::error_code PartialFile::moveInto(const QString& folder, const QString& name)
{
    std::error_code error = claimName(folder, name);
    if (!error) error = platform::syncFolder(folder);
    // The sender's folder may be new, and the partial file has left this one.
    if (!error) error = platform::syncFolder(folder_);
    return error;
}

std::error_code PartialFile::claimName(const QString& folder, const QString& name)
{
    std::error_code error;
    for (int i = 0; i < maximumClaims; ++i) {
        const QString destination = collisionSafeDestination(name, folder);
        error = platform::moveWithoutReplacing(path_, destination);
        if (!error) path_ = destination;
        if (error != std::errc::file_exists) return error;
    }
    return error;
}

void removeStalePartialFiles(const QString& folder)
{
    for (const QString& name : platform::regularFilesIn(folder)) {
        if (isPartialName(name) && platform::removeFile(folder + u'/' + name)) {
            flLog(QStringLiteral("Removed unfinished upload ") + name);
        }
    }
}

} // namespace ferrylane
