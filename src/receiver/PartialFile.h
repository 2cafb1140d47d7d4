#pragma once

#include "platform/Files.h"

#include <QString>

#include <memory>
#include <optional>

namespace ferrylane {

/// The hidden file in the receive folder that an upload is written to until it has proved complete.
/// It is deleted when this goes, unless store() has moved it away. Serves one thread at a time.
class PartialFile {
public:
    /// Creates ".<UUID>.ferrylane-v4-part" in `folder`. Null, and `error` set, when that fails.
    [[nodiscard]] static std::unique_ptr<PartialFile> create(
        const QString& folder, std::error_code& error);

    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    [[nodiscard]] std::error_code write(platform::ByteView bytes) { return file_->write(bytes); }

    /// Puts the file on the disk under `name`, or a numbered variant of it that is free, in the
    /// sender's folder; never replaces anything. Returns the path, or none and `error` set: the
    /// file is then deleted.
    [[nodiscard]] std::optional<QString> store(
        const QString& name, const std::optional<QString>& senderName, std::error_code& error);

private:
    PartialFile(QString folder, QString path, std::unique_ptr<platform::NewFile> file);

    /// Moves the file into `folder` and makes both folders' entries last.
    [[nodiscard]] std::error_code moveInto(const QString& folder, const QString& name);
    [[nodiscard]] std::error_code claimName(const QString& folder, const QString& name);

    QString folder_;
    QString path_;
    std::unique_ptr<platform::NewFile> file_;
    bool kept_ = false;
};

/// Deletes the partial files that uploads of an earlier run have left in `folder`, and logs each.
/// To be called only while no upload runs.
void removeStalePartialFiles(const QString& folder);

} // namespace ferrylane
