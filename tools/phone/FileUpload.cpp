#include "phone/FileUpload.h"

#include "phone/Failure.h"
#include "phone/HttpExchange.h"
#include "receiver/V4Stream.h"

#include <QUuid>

#include <vector>

namespace ferrylane::phone {

namespace {

V4Transfer newTransfer(const SourceFile& file)
{
    V4Transfer transfer;
    transfer.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    transfer.fileName = file.name();
    transfer.fileSize = file.size();
    if (!platform::fillWithRandomBytes(transfer.noncePrefix)) {
        throw Failure(ExitCode::localFile, QStringLiteral("the system has no random bytes"));
    }
    return transfer;
}

/// Sends a file's records, each in a chunk of its own and the next one only when the system has
/// taken the last.
class BodySender {
public:
    BodySender(HttpExchange& exchange, const platform::SecretKey& key, const V4Transfer& transfer)
        : exchange_(exchange), sealer_(key, transfer)
    {
    }

    /// False when nothing more need be sent, as of HttpExchange::send().
    [[nodiscard]] bool sendAll(SourceFile& file, const std::function<void(qint64)>& progress)
    {
        std::vector<std::byte> piece(maximumRecordPlaintext);
        qint64 total = 0;
        while (const std::size_t count = file.next(piece)) {
            if (!sendPiece(platform::ByteView(piece).first(count))) return false;
            total += static_cast<qint64>(count);
            progress(total);
        }
        return sendEnd();
    }

private:
    [[nodiscard]] bool sendPiece(platform::ByteView plaintext)
    {
        digest_.update(plaintext);
        appendChunkSizeLine(recordOverheadBytes + plaintext.size(), buffer_);
        sealer_.appendDataRecord(plaintext, buffer_);
        appendChunkEnd(buffer_);
        return sendBuffer();
    }

    [[nodiscard]] bool sendEnd()
    {
        appendChunkSizeLine(finalRecordBytes, buffer_);
        sealer_.appendFinalRecord(digest_.finish(), buffer_);
        appendChunkEnd(buffer_);
        appendLastChunk(buffer_);
        return sendBuffer();
    }

    [[nodiscard]] bool sendBuffer()
    {
        const bool goOn = exchange_.send(buffer_.unread());
        buffer_.consume(buffer_.size());
        return goOn;
    }

    HttpExchange& exchange_;
    RecordSealer sealer_;
    platform::Sha256 digest_;
    platform::ByteBuffer buffer_;
};

} // namespace

HttpResponse uploadFile(platform::TcpNetwork& network, const PairingLink& link, SourceFile& file,
    const QString& senderName, const std::function<void(qint64)>& progress)
{
    const V4Transfer transfer = newTransfer(file);
    HttpExchange exchange(network, link);
    const QByteArray head = uploadRequestHead(transfer, link.hostInHeader(), link.port, senderName);
    // Whether all has been sent does not matter here: the answer tells what became of it.
    if (exchange.send(platform::bytesOf(head))) {
        (void)BodySender(exchange, link.key, transfer).sendAll(file, progress);
    }
    return exchange.answer();
}

} // namespace ferrylane::phone
