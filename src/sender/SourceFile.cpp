#include "sender/SourceFile.h"

#include "sender/SendError.h"

#include <QFileInfo>

#include <algorithm>

namespace ferrylane {

namespace {

SendError failure(const QFile& file, const QString& what)
{
    const QString name = QFileInfo(file.fileName()).fileName();
    return {SendError::Domain::file, 0, QStringLiteral("%1: %2").arg(name, what)};
}

} // namespace

SourceFile::SourceFile(const QString& path) : file_(path)
{
    // Looked at before it is opened: opening a FIFO waits for its writer. Only regular files have a
    // size that tells how much there is to read.
    if (QFileInfo(path).exists() && !QFileInfo(path).isFile()) throw send_errors::noFileSize();
    if (!file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw failure(file_, file_.errorString());
    }
    size_ = file_.size();
}

QString SourceFile::name() const
{
    return QFileInfo(file_.fileName()).fileName();
}

std::size_t SourceFile::next(platform::MutableByteView out)
{
    // At the end one byte is asked for, to see that there is none.
    const qint64 expected = std::min(size_ - read_, static_cast<qint64>(out.size()));
    char* const data = reinterpret_cast<char*>(out.data());
    const qint64 count = file_.read(data, std::max<qint64>(expected, 1));
    if (count < 0) throw failure(file_, file_.errorString());
    if (count != expected) throw failure(file_, QStringLiteral("changed while it was being sent"));
    read_ += count;
    return static_cast<std::size_t>(count);
}

} // namespace ferrylane
