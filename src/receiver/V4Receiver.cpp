#include "receiver/V4Receiver.h"

#include "core/Log.h"
#include "core/ReceiveDestination.h"
#include "core/StoragePaths.h"

#include <algorithm>

namespace ferrylane {

namespace {

// Asked for beyond the end of the chunk that is under way. Little, so that of a long chunk that
// follows only a little has to be moved to the buffer's front; enough for many short ones.
constexpr std::size_t readAhead = 65536;

} // namespace

void V4Receiver::receiveSecureUploadV4Chunked(AdmittedUpload upload, platform::ByteBuffer body)
{
    std::make_shared<V4Receiver>(std::move(upload), std::move(body))->start();
}

V4Receiver::V4Receiver(AdmittedUpload upload, platform::ByteBuffer body)
    : upload_(std::move(upload))
    , bodyBuffer_(std::move(body))
    , admissionTime_(platform::SteadyClock().now())
    , waitingSince_(admissionTime_)
    , progress_(sanitize(upload_.transfer.fileName), upload_.transfer.fileSize,
          *upload_.context->reports, upload_.context->clock)
{
}

V4Receiver::~V4Receiver()
{
    if (!worker_) return;
    const QString reason = QStringLiteral("Internal error");
    leave();
    logFailure(reason);
    progress_.stopped(reason);
}

void V4Receiver::start()
{
    std::error_code error;
    auto file = PartialFile::create(receiveDir(), error);
    if (!file) {
        leave();
        answer({statuses::internalServerError, "Cannot create destination"});
        return;
    }
    worker_ = std::make_unique<RecordWorker>(upload_.transfer, upload_.context->sessionKey,
        std::move(file), progress_, upload_.context->recordQueue,
        [connection = upload_.connection, weak = weak_from_this()] {
            connection->async([weak] {
                if (const auto self = weak.lock()) self->workerFailed();
            });
        });
    proceed();
}

void V4Receiver::next()
{
    const std::size_t maximum
        = std::min(chunks_.missingBytes(bodyBuffer_) + readAhead, maximumBodyReceive);
    upload_.connection->receive(bodyBuffer_, 1, maximum, timeLeft(),
        [self = shared_from_this()](bool endOfStream, const std::error_code& error) {
            self->received(endOfStream, error);
        });
}

platform::Duration V4Receiver::timeLeft() const
{
    const UploadTimes& times = upload_.context->times;
    const platform::TimePoint end = progress_.isAuthenticated()
        ? waitingSince_ + times.silence
        : admissionTime_ + times.firstRecord;
    return end - platform::SteadyClock().now();
}

void V4Receiver::received(bool endOfStream, const std::error_code& error)
{
    if (!worker_) return;
    // The first record may have been opened while this was waiting for the next.
    if (error == std::errc::timed_out && timeLeft() > platform::Duration::zero()) {
        next();
        return;
    }
    if (error) {
        failConnection(error);
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
        // Not since the latest bytes: what a slow disk has taken is not the phone's silence.
        waitingSince_ = platform::SteadyClock().now();
        next();
    }
}

bool V4Receiver::processHTTPChunks()
{
    std::vector<platform::ByteView> chunks;
    ChunkDecoder::Step step = chunks_.next(bodyBuffer_);
    for (; step.outcome == ChunkDecoder::Outcome::chunk; step = chunks_.next(bodyBuffer_)) {
        chunks.push_back(step.payload);
    }
    if (!chunks.empty()) worker_->take(bodyBuffer_, std::move(chunks));
    if (step.outcome == ChunkDecoder::Outcome::failed) {
        fail(step.failure);
        return false;
    }
    lastChunkSeen_ = step.outcome == ChunkDecoder::Outcome::lastChunk;
    return true;
}

void V4Receiver::workerFailed()
{
    if (!worker_) return;
    if (const auto failure = worker_->settle()) fail(*failure);
}

void V4Receiver::finalizeIfDone()
{
    if (const auto failure = worker_->finish()) {
        fail(*failure);
        return;
    }
    // Nobody can stop it from here on; whoever did before has cancelled the connection.
    if (!upload_.place->beginStoring(upload_.transfer.fileName)) {
        failConnection(std::make_error_code(std::errc::operation_canceled));
        return;
    }
    std::error_code error;
    const auto path = worker_->store(upload_.transfer.fileName, upload_.senderName, error);
    if (!path) {
        flLog(QStringLiteral("Could not store the upload: ")
            + QString::fromStdString(error.message()));
        fail(QStringLiteral("Cannot finalize destination"), statuses::internalServerError);
        return;
    }

    const quint64 size = worker_->totalBytes();
    flLog(QStringLiteral("Secure V4 received %1 bytes to %2").arg(QString::number(size), *path));
    leave();
    progress_.stored({*path, static_cast<qint64>(size)});
    answer({statuses::ok, "OK SHA256"});
}

void V4Receiver::failConnection(const std::error_code& error)
{
    fail(QStringLiteral("Connection error: ") + QString::fromStdString(error.message()));
}

void V4Receiver::fail(const QString& text, QByteArrayView status)
{
    // What the worker has not got to yet came earlier, and so did its failure.
    const auto earlier = worker_->settle();
    const QString reason = earlier ? QString(earlier->text) : text;
    leave();
    logFailure(reason);
    progress_.stopped(reason);
    answer({earlier ? statuses::badRequest : status, reason.toUtf8()});
}

void V4Receiver::leave()
{
    worker_.reset(); // and with it a partial file
    upload_.place.reset();
}

void V4Receiver::logFailure(const QString& reason)
{
    if (progress_.isAuthenticated()) {
        flLog(QStringLiteral("Secure V4 receive failed: ") + reason);
    } else {
        upload_.context->failureLog->uploadFailed(reason);
    }
}

void V4Receiver::answer(const HttpAnswer& answer)
{
    upload_.registration->closing();
    upload_.connection->sendLast(answer.toBytes(), std::move(upload_.registration));
}

} // namespace ferrylane
