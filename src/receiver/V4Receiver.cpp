#include "receiver/V4Receiver.h"

#include "core/Log.h"
#include "core/ReceiveDestination.h"
#include "core/StoragePaths.h"

#include <QFileInfo>

#include <algorithm>

namespace ferrylane {

namespace {

// Asked for beyond the end of the chunk that is under way. Little, so that of a long chunk that
// follows only a little has to be moved to the buffer's front; enough for many short ones.
constexpr std::size_t readAhead = 65536;

void refuse(const AdmittedUpload& upload)
{
    upload.context->admission.release(*upload.connection);
    upload.connection->sendLast(
        HttpAnswer{statuses::internalServerError, "Cannot create destination"}.toBytes());
}

} // namespace

void V4Receiver::receiveSecureUploadV4Chunked(AdmittedUpload upload, platform::ByteBuffer body)
{
    std::error_code error;
    auto file = PartialFile::create(receiveDir(), error);
    if (!file) {
        refuse(upload);
        return;
    }
    std::make_shared<V4Receiver>(std::move(upload), std::move(body), std::move(file))->start();
}

V4Receiver::V4Receiver(
    AdmittedUpload upload, platform::ByteBuffer body, std::unique_ptr<PartialFile> file)
    : upload_(std::move(upload))
    , bodyBuffer_(std::move(body))
    , cipher_(upload_.context->sessionKey)
    , records_(upload_.transfer, cipher_, *this)
    , writer_(std::make_unique<UploadWriter>(std::move(file), upload_.context->writerQueue))
    , progress_(upload_.transfer.fileSize, upload_.context->notifications, upload_.context->clock)
{
}

void V4Receiver::start()
{
    progress_.started(sanitize(upload_.transfer.fileName));
    proceed();
}

void V4Receiver::next()
{
    const std::size_t maximum
        = std::min(chunks_.missingBytes(bodyBuffer_) + readAhead, maximumBodyReceive);
    upload_.connection->receive(bodyBuffer_, 1, maximum,
        [self = shared_from_this()](bool endOfStream, const std::error_code& error) {
            self->received(endOfStream, error);
        });
}

void V4Receiver::received(bool endOfStream, const std::error_code& error)
{
    if (error) {
        fail(QStringLiteral("Connection error: ") + QString::fromStdString(error.message()));
        upload_.connection->cancel();
        return;
    }
    // What came before the end of the stream has been delivered before, and did not complete it.
    if (endOfStream) {
        fail(failures::closedBeforeLastChunk);
        return;
    }
    proceed();
}

void V4Receiver::proceed()
{
    if (!processHTTPChunks()) return;
    if (lastChunkSeen_) {
        finalizeIfDone();
    } else {
        next();
    }
}

bool V4Receiver::processHTTPChunks()
{
    for (;;) {
        const ChunkDecoder::Step step = chunks_.next(bodyBuffer_);
        switch (step.outcome) {
        case ChunkDecoder::Outcome::needMore:
            return true;
        case ChunkDecoder::Outcome::lastChunk:
            lastChunkSeen_ = true;
            return true;
        case ChunkDecoder::Outcome::failed:
            fail(step.failure);
            return false;
        case ChunkDecoder::Outcome::chunk:
            if (const auto failure = records_.feed(step.payload)) {
                fail(*failure);
                return false;
            }
        }
    }
}

void V4Receiver::finalizeIfDone()
{
    if (const auto failure = records_.finish()) {
        fail(*failure);
        return;
    }
    std::error_code error;
    const auto path = writer_->store(upload_.transfer.fileName, upload_.senderName, error);
    if (!path) {
        flLog(QStringLiteral("Could not store the upload: ")
            + QString::fromStdString(error.message()));
        fail(QStringLiteral("Cannot finalize destination"), statuses::internalServerError);
        return;
    }

    const quint64 size = records_.totalBytes();
    flLog(QStringLiteral("Secure V4 received %1 bytes to %2").arg(QString::number(size), *path));
    upload_.context->mainQueue.async(
        [context = upload_.context, file = ReceivedFile{*path, static_cast<qint64>(size)}] {
            context->lastReceivedFile = file;
        });
    progress_.stored(size, QFileInfo(*path).fileName());
    end({statuses::ok, "OK SHA256"});
}

void V4Receiver::fail(const QString& text, QByteArrayView status)
{
    // A piece that could not be written is the earlier failure, although it shows only now.
    const bool written = writer_->settle();
    const QString reason = written ? text : QString(failures::authenticationFailed.text);
    writer_.reset(); // with it the partial file goes, before anybody hears of the failure
    flLog(QStringLiteral("Secure V4 receive failed: ") + reason);
    progress_.stopped(reason);
    end({written ? status : statuses::badRequest, reason.toUtf8()});
}

void V4Receiver::end(const HttpAnswer& answer)
{
    writer_.reset();
    upload_.context->admission.release(*upload_.connection);
    upload_.connection->sendLast(answer.toBytes());
}

platform::MutableByteView V4Receiver::space(std::size_t length)
{
    return writer_->space(length);
}

bool V4Receiver::take(std::size_t length)
{
    if (!writer_->take(length)) return false;
    progress_.advanced(records_.totalBytes());
    return true;
}

std::optional<platform::Sha256Digest> V4Receiver::digest()
{
    return writer_->digest();
}

} // namespace ferrylane
