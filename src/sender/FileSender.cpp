#include "sender/FileSender.h"

#include "protocol/PhoneResponse.h"
#include "sender/SendError.h"

#include <QUuid>

namespace ferrylane {

namespace {

V4Transfer newTransfer(const SourceFile& file)
{
    V4Transfer transfer;
    transfer.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    transfer.fileName = file.name();
    transfer.fileSize = file.size();
    if (!platform::fillWithRandomBytes(transfer.noncePrefix)) throw send_errors::noNonce();
    return transfer;
}

/// Throws unless the phone says that it has stored the file.
void checkAnswer(const PhoneConnection::Answer& answer, bool isAllSent)
{
    const auto response = parsePhoneResponse(platform::bytesOf(answer.bytes));
    if (response && !response->isSuccess()) {
        throw send_errors::phoneReturned(response->status, response->body);
    }
    // A success counts only after all of the file, and when it came to its end.
    if (response && !isAllSent) throw send_errors::invalidResponse();
    if (answer.error) throw SendError::network(answer.error);
    if (!response) throw send_errors::invalidResponse();
}

} // namespace

FileSender::FileSender(
    platform::TcpNetwork& network, Cancellation& cancellation, const SendTimes& times)
    : network_(network), cancellation_(cancellation), times_(times)
{
}

void FileSender::send(const platform::FilePath& path, const SendTarget& target,
    const QString& senderName, SendProgress& progress)
{
    SourceFile file(path);
    const V4Transfer transfer = newTransfer(file);
    const auto tcp = network_.connection(target.address.host, target.address.port);
    PhoneConnection phone(tcp);
    const Cancellation::Watch watch(cancellation_, tcp);
    connect(phone, target);

    const QByteArray head = uploadRequestHead(
        transfer, target.address.hostInHeader(), target.address.port, senderName);
    const bool isAllSent = phone.send(platform::bytesOf(head))
        && sendBody(phone, file, RecordSealer(target.key, transfer), progress);
    checkAnswer(phone.answer(times_.answerLimit), isAllSent);
    progress.stored();
}

void FileSender::connect(PhoneConnection& phone, const SendTarget& target)
{
    const auto& [host, port] = target.address;
    const QString where = QStringLiteral("%1:%2").arg(host, QString::number(port));
    if (!phone.connect(times_.connectLimit, where)) {
        throw send_errors::connectTimedOut(target.name, host, port);
    }
}

bool FileSender::sendBody(
    PhoneConnection& phone, SourceFile& file, RecordSealer sealer, SendProgress& progress)
{
    hasher_.reset();
    chunk_.consume(chunk_.size()); // of a send that ended early
    progress.start(file.size());
    qint64 sentBytes = 0;
    for (std::size_t turn = 0;; turn = 1 - turn) {
        const platform::MutableByteView room = pieces_[turn].prepare(maximumRecordPlaintext);
        const std::size_t count = file.next(room);
        if (count == 0) return sendEnd(phone, sealer);
        if (!sendPiece(phone, sealer, room.first(count))) return false;
        sentBytes += static_cast<qint64>(count);
        // The index after the last one is the final record's.
        if (sealer.recordCount() == finalRecordIndex) throw send_errors::tooManyRecords();
        progress.advanced(sentBytes);
        cancellation_.check();
    }
}

bool FileSender::sendPiece(PhoneConnection& phone, RecordSealer& sealer, platform::ByteView piece)
{
    hasher_.update(piece);
    appendChunkSizeLine(piece.size() + recordOverheadBytes, chunk_);
    sealer.appendDataRecord(piece, chunk_);
    appendChunkEnd(chunk_);
    return sendChunk(phone);
}

bool FileSender::sendEnd(PhoneConnection& phone, RecordSealer& sealer)
{
    appendChunkSizeLine(finalRecordBytes, chunk_);
    sealer.appendFinalRecord(hasher_.finish(), chunk_);
    appendChunkEnd(chunk_);
    appendLastChunk(chunk_);
    return sendChunk(phone);
}

bool FileSender::sendChunk(PhoneConnection& phone)
{
    const bool goesOn = phone.send(chunk_.unread());
    chunk_.consume(chunk_.size());
    return goesOn;
}

} // namespace ferrylane
