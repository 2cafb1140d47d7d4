#include "bench/SourceFiles.h"

#include "support/UploadStream.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <stdexcept>

namespace bench {

namespace {

constexpr qint64 pieceBytes = 1048576;

void write(const QString& path, const QByteArray& piece, qint64 size)
{
    QFile file(path);
    bool isGood = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    for (qint64 rest = size; isGood && rest > 0; rest -= piece.size()) {
        const qint64 count = std::min<qint64>(rest, piece.size());
        isGood = file.write(piece.constData(), count) == count;
    }
    if (!isGood) throw std::runtime_error("cannot write a file to be sent");
}

} // namespace

void writeSourceFile(const QString& path, qint64 size)
{
    write(path, support::testContent(std::min(size, pieceBytes)), size);
}

void writeSourceFiles(const QString& folder, int count, qint64 size)
{
    QDir().mkpath(folder);
    const QByteArray content = support::testContent(size);
    for (int i = 0; i < count; ++i) {
        write(QStringLiteral("%1/note-%2.txt").arg(folder).arg(i), content, size);
    }
}

} // namespace bench
