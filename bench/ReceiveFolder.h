#pragma once

#include <QString>
#include <QTemporaryDir>

namespace bench {

/// A folder for the files of one measurement, gone with this object.
class ReceiveFolder {
public:
    /// In memory: syncing a file costs nothing there. Throws std::runtime_error.
    [[nodiscard]] static ReceiveFolder inMemory();
    /// Below `parent`. Throws std::runtime_error.
    [[nodiscard]] static ReceiveFolder below(const QString& parent);

    [[nodiscard]] QString path() const { return dir_.path(); }

    /// Deletes all files in it and in its folders. Throws std::runtime_error unless there are
    /// `count`, each of `size` bytes: then something else has been measured than was meant.
    void clear(int count, qint64 size) const;

private:
    explicit ReceiveFolder(const QString& parent);

    QTemporaryDir dir_;
};

} // namespace bench
