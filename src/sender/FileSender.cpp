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
    StreamWriter writer(transfer, target.key);
    const bool isAllSent
        = phone.send(platform::bytesOf(head)) && sendBody(phone, file, writer, progress);
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
    PhoneConnection& phone, SourceFile& file, StreamWriter& writer, SendProgress& progress)
{
    progress.start(file.size());
    platform::ByteBuffer chunk;
    for (qint64 sentBytes = 0;;) {
        const std::size_t count = file.next(writer.room(maximumRecordPlaintext));
        if (count == 0) {
            writer.finish(chunk);
            return phone.send(chunk.unread());
        }
        writer.seal(count, chunk);
        if (!phone.send(chunk.unread())) return false;
        chunk.consume(chunk.size());
        sentBytes += static_cast<qint64>(count);
        if (writer.isFull()) throw send_errors::tooManyRecords();
        progress.advanced(sentBytes);
        cancellation_.check();
    }
}

} // namespace ferrylane
