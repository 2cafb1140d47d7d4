#include "bench/SealedUpload.h"

#include "core/Service.h"
#include "protocol/StreamWriter.h"
#include "support/UploadStream.h"

#include <algorithm>

namespace bench {

using namespace ferrylane;

namespace {

constexpr auto pieceBytes = static_cast<qint64>(maximumRecordPlaintext);

void appendBody(StreamWriter& writer, qint64 size, platform::ByteBuffer& out)
{
    const QByteArray piece = support::testContent(std::min(size, pieceBytes));
    for (qint64 done = 0; done < size; done += pieceBytes) {
        const auto length = static_cast<std::size_t>(std::min(size - done, pieceBytes));
        writer.write(platform::bytesOf(piece).first(length), out);
    }
    writer.finish(out);
}

} // namespace

QByteArray storedAnswer()
{
    return QByteArrayLiteral("OK SHA256");
}

SealedUpload::SealedUpload(const platform::SecretKey& key, const QString& fileName, qint64 size)
    : size_(size)
{
    V4Transfer transfer = support::testTransfer(size);
    transfer.fileName = fileName;

    // Reserved at once: a buffer that grows holds everything twice for a while.
    constexpr qint64 overheadPerPiece = 64;
    constexpr qint64 headAndEnd = 4096;
    const qint64 pieces = size / pieceBytes + 1;
    static_cast<void>(
        request_.prepare(static_cast<std::size_t>(size + pieces * overheadPerPiece + headAndEnd)));

    request_.append(platform::bytesOf(uploadRequestHead(
        transfer, QStringLiteral("127.0.0.1"), port, QStringLiteral("Benchmark"))));
    StreamWriter writer(transfer, key);
    appendBody(writer, size, request_);
}

QByteArray SealedUpload::request() const
{
    const QByteArrayView view = platform::textViewOf(request_.unread());
    return QByteArray::fromRawData(view.data(), view.size());
}

} // namespace bench
