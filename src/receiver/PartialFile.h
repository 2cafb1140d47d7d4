#pragma once

#include "platform/Folder.h"

#include <QString>

#include <memory>
#include <optional>

namespace ferrylane {

/// The hidden file in the receive folder that an upload is written to until it has proved complete.
/// It is deleted when this goes, unless store() has moved it away. The folder is held: the upload
/// ends where it began, whatever becomes of the folder's path or of the setting meanwhile. Serves
/// one thread at a time.
class PartialFile {
public:
    /// Creates ".<UUID>.ferrylane-v4-part" in `folder`. Null, and `error` set, when that fails.
    [[nodiscard]] static std::unique_ptr<PartialFile> create(
        const QString& folder, std::error_code& error);

    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    [[nodiscard]] std::error_code write(platform::ByteView bytes) { return file_->write(bytes); }

    /// Puts the file on the disk under `name`, or a variant of it that is free and short enough, in
    /// the sender's folder, which may be on another file system; never replaces anything. Returns
    /// the path, or none and `error` set: the file is then deleted. Folders that cannot be synced
    /// are only logged.
    [[nodiscard]] std::optional<QString> store(
        const QString& name, const std::optional<QString>& senderName, std::error_code& error);

private:
    using SharedFolder = std::shared_ptr<const platform::Folder>;

    PartialFile(SharedFolder folder, QString name, std::unique_ptr<platform::NewFile> file);

    [[nodiscard]] static std::unique_ptr<PartialFile> createIn(
        SharedFolder folder, std::error_code& error);
    /// Moves the file into a folder under a name that is free, which is returned.
    [[nodiscard]] QString moveInto(
        const SharedFolder& folder, const QString& name, std::error_code& error);
    [[nodiscard]] QString claimName(
        const platform::Folder& folder, const QString& name, std::error_code& error);

    SharedFolder folder_;
    QString name_; ///< in the folder; empty when it has been moved away
    std::unique_ptr<platform::NewFile> file_;
};

/// Deletes the partial files that uploads of an earlier run have left in `folder` and the senders'
/// folders, and logs each. Those that are being written, here or by another computer that shares
/// the folder, stay.
void removeStalePartialFiles(const QString& folder);

} // namespace ferrylane
