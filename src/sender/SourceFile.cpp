#include "sender/SourceFile.h"

#include "sender/SendError.h"

#include <algorithm>

namespace ferrylane {

namespace {

SendError failure(const QString& name, const QString& what)
{
    return {SendError::Domain::file, 0, QStringLiteral("%1: %2").arg(name, what)};
}

SendError failure(const QString& name, const std::error_code& error)
{
    return failure(name, QString::fromStdString(error.message()));
}

} // namespace

SourceFile::SourceFile(const platform::FilePath& path) : name_(path.name())
{
    std::error_code error;
    file_ = platform::FileReader::open(path, error);
    // Only regular files have a size that tells how much there is to read.
    if (error == std::errc::invalid_argument) throw send_errors::noFileSize();
    if (error) throw failure(name_, error);
}

std::size_t SourceFile::next(platform::MutableByteView out)
{
    // At the end one byte is asked for, to see that there is none.
    const auto left = static_cast<std::size_t>(size() - read_);
    const std::size_t expected = std::min(left, out.size());
    std::error_code error;
    const std::size_t count = file_->read(out.first(std::max<std::size_t>(expected, 1)), error);
    if (error) throw failure(name_, error);
    if (count != expected) throw failure(name_, QStringLiteral("changed while it was being sent"));
    read_ += static_cast<qint64>(count);
    return count;
}

} // namespace ferrylane
