#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace platform {

/// Where a file is, as the system has it: bytes, which need not be UTF-8 and so may be no text.
class FilePath {
public:
    FilePath() = default;
    // NOLINTNEXTLINE(*-explicit-*): each text is a path
    FilePath(const QString& path);
    [[nodiscard]] static FilePath fromNative(QByteArray path);
    /// None unless it is a file's of this computer.
    [[nodiscard]] static std::optional<FilePath> fromUrl(const QUrl& url);

    [[nodiscard]] const QByteArray& native() const { return native_; }
    /// The last component, for people and peers: U+FFFD stands for what is not text.
    [[nodiscard]] QString name() const;
    [[nodiscard]] bool isFolder() const;
    /// In bytes; none when there is no such file.
    [[nodiscard]] std::optional<qint64> size() const;

    bool operator==(const FilePath&) const = default;

private:
    QByteArray native_;
};

using FilePaths = QList<FilePath>;

/// The paths that are not those of folders, in their order.
[[nodiscard]] FilePaths withoutFolders(FilePaths paths);

} // namespace platform
