#pragma once

#include "platform/FileReader.h"

#include <QString>

namespace ferrylane {

/// A regular file that is read once, from start to end. Its size is taken when it is opened; a file
/// that turns out shorter or longer than that has changed while it was read, and what was read of
/// it is worth nothing.
class SourceFile {
public:
    /// Throws SendError (domain file), like next().
    explicit SourceFile(const platform::FilePath& path);

    /// The last component of the path.
    [[nodiscard]] const QString& name() const { return name_; }
    [[nodiscard]] qint64 size() const { return file_->size(); }

    /// Reads the next bytes: all that `out` has room for, less only at the end, where it is none.
    [[nodiscard]] std::size_t next(platform::MutableByteView out);

private:
    QString name_;
    std::unique_ptr<platform::FileReader> file_;
    qint64 read_ = 0;
};

} // namespace ferrylane
