#include "support/UploadStream.h"

#include <algorithm>
#include <random>

namespace support {

using namespace ferrylane;

namespace {

QByteArray taken(platform::ByteBuffer& buffer)
{
    QByteArray bytes = platform::toByteArray(buffer.unread());
    buffer.consume(buffer.size());
    return bytes;
}

} // namespace

platform::SecretKey testKey()
{
    std::array<std::byte, platform::SecretKey::length> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::byte>(i);
    }
    return *platform::SecretKey::fromBytes(bytes);
}

V4Transfer testTransfer(qint64 fileSize)
{
    V4Transfer transfer{QStringLiteral("6F9619FF-8B86-D011-B42D-00CF4FC964FF"),
        QStringLiteral("photo.jpg"), fileSize, {}};
    for (std::size_t i = 0; i < noncePrefixBytes; ++i) {
        transfer.noncePrefix[i] = static_cast<std::byte>(0xA0 + i);
    }
    return transfer;
}

QByteArray testContent(qsizetype size)
{
    std::mt19937 generator(42);
    QByteArray content(size, Qt::Uninitialized);
    std::generate(
        content.begin(), content.end(), [&] { return static_cast<char>(generator() & 0xFFU); });
    return content;
}

std::vector<QByteArray> sealedRecords(const platform::SecretKey& key, const V4Transfer& transfer,
    const QByteArray& content, qsizetype bytesPerRecord)
{
    std::vector<QByteArray> records;
    RecordSealer sealer(key, transfer);
    platform::Sha256 sha256;
    platform::ByteBuffer buffer;
    for (qsizetype start = 0; start < content.size(); start += bytesPerRecord) {
        const QByteArray piece = content.mid(start, bytesPerRecord);
        sealer.appendDataRecord(platform::bytesOf(piece), buffer);
        sha256.update(platform::bytesOf(piece));
        records.push_back(taken(buffer));
    }
    sealer.appendFinalRecord(sha256.finish(), buffer);
    records.push_back(taken(buffer));
    return records;
}

QByteArray chunk(const QByteArray& payload)
{
    platform::ByteBuffer buffer;
    appendChunkSizeLine(static_cast<std::size_t>(payload.size()), buffer);
    buffer.append(platform::bytesOf(payload));
    appendChunkEnd(buffer);
    return taken(buffer);
}

QByteArray chunkedBody(const std::vector<QByteArray>& records)
{
    platform::ByteBuffer buffer;
    for (const QByteArray& record : records) {
        buffer.append(platform::bytesOf(chunk(record)));
    }
    appendLastChunk(buffer);
    return taken(buffer);
}

QByteArray uploadRequest(const platform::SecretKey& key, const V4Transfer& transfer,
    const QByteArray& content, const QString& senderName)
{
    return uploadRequestHead(transfer, QStringLiteral("127.0.0.1"), 8788, senderName)
        + chunkedBody(sealedRecords(key, transfer, content));
}

} // namespace support
