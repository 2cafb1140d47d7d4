#include "protocol/V4Stream.h"

#include "core/Encodings.h"

namespace ferrylane {

using platform::MutableByteView;

namespace {

/// Six fields, a line feed between each two and none at the end.
QByteArray associatedData(
    QByteArrayView kind, const V4Transfer& transfer, quint64 fifth, quint64 sixth)
{
    const QByteArray fields[]
        = {transfer.id.toUtf8(), transfer.fileName.toUtf8(), QByteArray::number(transfer.fileSize),
            QByteArray::number(fifth), QByteArray::number(sixth)};
    QByteArray data(kind.data(), kind.size());
    for (const QByteArray& field : fields) {
        data.append('\n').append(field);
    }
    return data;
}

} // namespace

platform::GcmNonce makeNonce(const NoncePrefix& prefix, std::uint32_t index)
{
    platform::GcmNonce nonce{};
    platform::copyBytes(prefix, nonce);
    platform::writeU32BigEndian(index, MutableByteView(nonce).subspan(noncePrefixBytes));
    return nonce;
}

QByteArray dataRecordAssociatedData(
    const V4Transfer& transfer, std::uint32_t index, std::size_t plaintextBytes)
{
    return associatedData("Ferrylane-v4", transfer, index, plaintextBytes);
}

QByteArray finalRecordAssociatedData(
    const V4Transfer& transfer, std::uint32_t recordCount, quint64 totalBytes)
{
    return associatedData("Ferrylane-v4-final", transfer, recordCount, totalBytes);
}

QByteArray uploadRequestHead(const V4Transfer& transfer, const QString& host,
    std::uint16_t hostPort, const QString& senderName)
{
    const QString head = QStringLiteral("POST /secure-upload-v4 HTTP/1.1\r\n"
                                        "Host: %1:%2\r\n"
                                        "Connection: close\r\n"
                                        "Transfer-Encoding: chunked\r\n"
                                        "Content-Type: application/octet-stream\r\n"
                                        "X-Filename: %3\r\n"
                                        "X-Ferrylane-Protocol: 4\r\n"
                                        "X-Ferrylane-Transfer-ID: %4\r\n"
                                        "X-Ferrylane-Nonce-Prefix: %5\r\n"
                                        "X-Ferrylane-File-Size: %6\r\n"
                                        "X-Ferrylane-Sender-Name: %7\r\n"
                                        "\r\n");
    // One call for all: a "%1" within a value must not be taken for a place.
    return head
        .arg(host, QString::number(hostPort), percentEncodeFileName(transfer.fileName), transfer.id,
            base64URLEncode(transfer.noncePrefix), QString::number(transfer.fileSize),
            percentEncodeForQuery(senderName))
        .toUtf8();
}

} // namespace ferrylane
