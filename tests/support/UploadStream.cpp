#include "support/UploadStream.h"

#include "protocol/StreamWriter.h"

#include <algorithm>
#include <random>

namespace support {

using namespace ferrylane;

namespace {

/// The record of the only chunk in `out`, which ends with `endBytes` that are not the record's.
QByteArray takenRecord(platform::ByteBuffer& out, qsizetype endBytes)
{
    const QByteArrayView bytes = platform::textViewOf(out.unread());
    QByteArray record = bytes.sliced(bytes.indexOf("\r\n") + 2).chopped(endBytes).toByteArray();
    out.consume(out.size());
    return record;
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
    StreamWriter writer(transfer, key);
    platform::ByteBuffer out;
    std::vector<QByteArray> records;
    for (qsizetype start = 0; start < content.size(); start += bytesPerRecord) {
        writer.write(platform::bytesOf(content.mid(start, bytesPerRecord)), out);
        records.push_back(takenRecord(out, 2));
    }
    writer.finish(out);
    records.push_back(takenRecord(out, 7));
    return records;
}

QByteArray chunk(const QByteArray& payload)
{
    return QByteArray::number(payload.size(), 16) + "\r\n" + payload + "\r\n";
}

QByteArray chunkedBody(const std::vector<QByteArray>& records)
{
    QByteArray body;
    for (const QByteArray& record : records) {
        body += chunk(record);
    }
    return body + "0\r\n\r\n";
}

QByteArray uploadRequest(const platform::SecretKey& key, const V4Transfer& transfer,
    const QByteArray& content, const QString& senderName)
{
    return uploadRequestHead(transfer, QStringLiteral("127.0.0.1"), 8788, senderName)
        + chunkedBody(sealedRecords(key, transfer, content));
}

} // namespace support
