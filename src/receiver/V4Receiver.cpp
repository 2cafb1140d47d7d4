#include "receiver/V4Receiver.h"

#include "core/Log.h"
#include "core/ReceiveDestination.h"
#include "core/StoragePaths.h"

#include <exception>

namespace ferrylane {

namespace {

/// The body of an upload as it comes in on its connection, for a thread that waits. How long it
/// waits depends on whether the upload has proved itself.
class UploadSource final : public ByteSource {
public:
    UploadSource(platform::TcpStream& stream, const UploadTimes& times,
        platform::TimePoint admissionTime, const ReceiveProgress& progress)
        : stream_(stream), times_(times), admissionTime_(admissionTime), progress_(progress)
    {
    }

    Read read(platform::ByteBuffer& buffer, std::size_t wanted, std::size_t maximum) override
    {
        const bool isProven = progress_.isAuthenticated();
        const auto limit = isProven
            ? times_.silence
            : admissionTime_ + times_.firstRecord - platform::SteadyClock().now();
        // The limit begins anew with each byte that comes, which a stranger may not make use of.
        const std::size_t minimum = isProven ? wanted : 1;
        const auto [isEnd, error] = stream_.receive(buffer, minimum, maximum, limit);
        return {isEnd, error};
    }

private:
    platform::TcpStream& stream_;
    const UploadTimes& times_;
    const platform::TimePoint admissionTime_;
    const ReceiveProgress& progress_;
};

} // namespace

void V4Receiver::receiveSecureUploadV4Chunked(AdmittedUpload upload, platform::ByteBuffer body)
{
    platform::SerialQueue& queue = upload.context.recordQueue;
    const auto receiver = std::make_shared<V4Receiver>(std::move(upload));
    const auto start = std::make_shared<platform::ByteBuffer>(std::move(body));
    queue.async([receiver, start] { receiver->run(std::move(*start)); });
}

V4Receiver::V4Receiver(AdmittedUpload upload)
    : upload_(std::move(upload))
    , admissionTime_(platform::SteadyClock().now())
    , progress_(sanitize(upload_.transfer.fileName), upload_.transfer.fileSize,
          upload_.context.reports, upload_.context.clock)
{
}

void V4Receiver::run(platform::ByteBuffer body)
{
    std::error_code error;
    file_ = PartialFile::create(receiveDir(), error);
    if (!file_) {
        leave();
        answer({statuses::internalServerError, "Cannot create destination"});
        return;
    }
    const auto received = receiveBody(std::move(body));
    const auto* const failure = std::get_if<StreamFailure>(&received);
    answer(failure ? failed(failure->text) : store(std::get<quint64>(received)));
}

std::variant<quint64, StreamFailure> V4Receiver::receiveBody(platform::ByteBuffer body)
{
    try {
        UploadSource source(upload_.stream, upload_.context.times, admissionTime_, progress_);
        StreamReader reader(upload_.transfer, upload_.context.sessionKey, source, std::move(body));
        for (quint64 size = 0;;) {
            const StreamStep step = reader.next();
            if (const auto* const failure = std::get_if<StreamFailure>(&step)) return *failure;
            progress_.authenticated();
            if (const auto* const end = std::get_if<StreamEnd>(&step)) return end->totalBytes;

            const auto piece = std::get<platform::ByteView>(step);
            if (const std::error_code error = file_->write(piece)) {
                flLog(QStringLiteral("Could not write the upload: ")
                    + QString::fromStdString(error.message()));
                return StreamFailure(failures::authenticationFailed);
            }
            size += piece.size();
            progress_.advanced(size);
        }
    } catch (const std::exception& error) {
        flLog(QStringLiteral("Could not receive the upload: ") + QString::fromUtf8(error.what()));
        return StreamFailure(QStringLiteral("Internal error"));
    }
}

HttpAnswer V4Receiver::store(quint64 size)
{
    // Nobody can stop it from here on; whoever did before has cancelled the connection.
    if (!upload_.place->beginStoring(upload_.transfer.fileName)) {
        const auto stopped = std::make_error_code(std::errc::operation_canceled);
        return failed(failures::connectionError(stopped).text);
    }
    std::error_code error;
    const auto path = file_->store(upload_.transfer.fileName, upload_.senderName, error);
    if (!path) {
        flLog(QStringLiteral("Could not store the upload: ")
            + QString::fromStdString(error.message()));
        return failed(QStringLiteral("Cannot finalize destination"), statuses::internalServerError);
    }
    flLog(QStringLiteral("Secure V4 received %1 bytes to %2").arg(QString::number(size), *path));
    leave();
    progress_.stored({*path, static_cast<qint64>(size)});
    return {statuses::ok, "OK SHA256"};
}

HttpAnswer V4Receiver::failed(const QString& reason, QByteArrayView status)
{
    leave();
    if (progress_.isAuthenticated()) {
        flLog(QStringLiteral("Secure V4 receive failed: ") + reason);
    } else {
        upload_.context.reports.unprovenUploadFailed(reason);
    }
    progress_.stopped(reason);
    return {status, reason.toUtf8()};
}

void V4Receiver::leave()
{
    file_.reset();
    upload_.place.reset();
}

void V4Receiver::answer(const HttpAnswer& answer)
{
    upload_.registration->closing();
    upload_.connection->sendLast(answer.toBytes(), std::move(upload_.registration));
}

} // namespace ferrylane
