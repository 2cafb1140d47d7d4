#include "receiver/V4Receiver.h"

#include "core/Log.h"
#include "core/ReceiveDestination.h"
#include "core/StoragePaths.h"
#include "protocol/HttpAnswer.h"
#include "protocol/StreamReader.h"
#include "receiver/PartialFile.h"

#include <exception>

namespace ferrylane {

namespace {

/// The bytes of an upload. How long they are waited for depends on whether it has proved itself.
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
        const auto [isEnd, error] = stream_.receive(buffer, isProven ? wanted : 1, maximum, limit);
        return {isEnd, error};
    }

private:
    platform::TcpStream& stream_;
    const UploadTimes& times_;
    const platform::TimePoint admissionTime_;
    const ReceiveProgress& progress_;
};

class V4Receiver {
public:
    V4Receiver(AdmittedUpload upload, platform::ByteBuffer body)
        : upload_(std::move(upload))
        , body_(std::move(body))
        , stream_(upload_.connection->leaveQueue())
        , progress_(sanitize(upload_.transfer.fileName), upload_.transfer.fileSize,
              upload_.context.reports, upload_.context.clock)
    {
    }

    void run()
    {
        HttpAnswer answer{statuses::badRequest, {}};
        try {
            answer = receive();
        } catch (const std::exception& error) {
            flLog(
                QStringLiteral("Could not receive the upload: ") + QString::fromUtf8(error.what()));
            answer = failed(QStringLiteral("Internal error"));
        }
        upload_.registration->closing();
        upload_.connection->sendLast(answer.toBytes(), std::move(upload_.registration));
    }

private:
    HttpAnswer receive()
    {
        std::error_code error;
        file_ = PartialFile::create(receiveDir(), error);
        if (!file_) {
            leave();
            return {statuses::internalServerError, "Cannot create destination"};
        }
        UploadSource source(stream_, upload_.context.times, admissionTime_, progress_);
        StreamReader reader(upload_.transfer, upload_.context.sessionKey, source, std::move(body_));
        for (quint64 size = 0;;) {
            const StreamStep step = reader.next();
            if (const auto* const failure = std::get_if<StreamFailure>(&step)) {
                return failed(failure->text);
            }
            progress_.authenticated();
            if (const auto* const end = std::get_if<StreamEnd>(&step)) {
                return store(end->totalBytes);
            }
            const auto piece = std::get<platform::ByteView>(step);
            error = file_->write(piece);
            if (error) {
                flLog(QStringLiteral("Could not write the upload"), error);
                return failed(failures::authenticationFailed);
            }
            size += piece.size();
            progress_.advanced(size);
        }
    }

    HttpAnswer store(quint64 size)
    {
        // Nobody can stop it from here on; whoever did before has cancelled the connection.
        if (!upload_.place->beginStoring(upload_.transfer.fileName)) {
            const auto stopped = std::make_error_code(std::errc::operation_canceled);
            return failed(failures::connectionError(stopped).text);
        }
        std::error_code error;
        const auto path = file_->store(upload_.transfer.fileName, upload_.senderName, error);
        if (!path) {
            flLog(QStringLiteral("Could not store the upload"), error);
            return failed(
                QStringLiteral("Cannot finalize destination"), statuses::internalServerError);
        }
        flLog(
            QStringLiteral("Secure V4 received %1 bytes to %2").arg(QString::number(size), *path));
        leave();
        progress_.stored({*path, static_cast<qint64>(size)});
        return {statuses::ok, "OK SHA256"};
    }

    HttpAnswer failed(const QString& reason, QByteArrayView status = statuses::badRequest)
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

    /// Leaves the service free for the next upload, before anybody hears of the end of this one.
    void leave()
    {
        file_.reset();
        upload_.place.reset();
    }

    AdmittedUpload upload_;
    platform::ByteBuffer body_; ///< its beginning
    platform::TcpStream& stream_;
    const platform::TimePoint admissionTime_ = platform::SteadyClock().now();
    ReceiveProgress progress_;
    std::unique_ptr<PartialFile> file_;
};

} // namespace

void receiveSecureUploadV4Chunked(AdmittedUpload upload, platform::ByteBuffer body)
{
    platform::ThreadQueue& uploads = upload.context.uploads;
    const auto receiver = std::make_shared<V4Receiver>(std::move(upload), std::move(body));
    uploads.async([receiver] { receiver->run(); });
}

} // namespace ferrylane
