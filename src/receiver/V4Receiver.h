#pragma once

#include "platform/ByteBuffer.h"
#include "platform/Crypto.h"
#include "protocol/ChunkDecoder.h"
#include "protocol/HttpAnswer.h"
#include "receiver/ReceiveProgress.h"
#include "receiver/ReceiverContext.h"
#include "receiver/RecordWorker.h"

#include <memory>
#include <optional>

namespace ferrylane {

/// Most bytes asked of the connection at once.
constexpr std::size_t maximumBodyReceive = 1048576;

/// An upload that has been admitted: everything about it but the body.
struct AdmittedUpload {
    std::shared_ptr<ReceiverContext> context;
    std::shared_ptr<platform::TcpConnection> connection; ///< the active one
    std::unique_ptr<OpenConnections::Registration> registration;
    std::optional<TransferAdmission::Place> place;
    V4Transfer transfer;
    std::optional<QString> senderName;
};

/// Receives one upload: body bytes, chunks, records, partial file, stored file, answer. Whatever
/// ends it, the service is free again and there is no partial file. All but the reading of the
/// records runs on the connection's queue; the pending receive keeps it alive.
class V4Receiver final : public std::enable_shared_from_this<V4Receiver> {
public:
    /// Takes the upload over. `body` holds what came together with the head.
    static void receiveSecureUploadV4Chunked(AdmittedUpload upload, platform::ByteBuffer body);

    V4Receiver(AdmittedUpload upload, platform::ByteBuffer body);
    /// Fails an upload that has not ended yet: one of its handlers has thrown.
    ~V4Receiver();
    V4Receiver(const V4Receiver&) = delete;
    V4Receiver& operator=(const V4Receiver&) = delete;

private:
    void start();
    void next();
    /// How long to wait for more bytes.
    [[nodiscard]] platform::Duration timeLeft() const;
    void received(bool endOfStream, const std::error_code& error);
    /// Goes on with what has come in: waits for more, finishes or fails.
    void proceed();
    /// Hands the chunks that are complete to the worker. False when the body is malformed.
    [[nodiscard]] bool processHTTPChunks();
    void workerFailed();
    void finalizeIfDone();
    void fail(const QString& text, QByteArrayView status = statuses::badRequest);
    void fail(StreamFailure failure) { fail(QString(failure.text)); }
    void failConnection(const std::error_code& error);
    /// Leaves the service free for the next upload, before anybody hears of the end of this one.
    void leave();
    void logFailure(const QString& reason);
    void answer(const HttpAnswer& answer);

    AdmittedUpload upload_;
    platform::ByteBuffer bodyBuffer_;
    ChunkDecoder chunks_;
    const platform::TimePoint admissionTime_;
    platform::TimePoint waitingSince_; ///< for the next bytes
    ReceiveProgress progress_;
    std::unique_ptr<RecordWorker> worker_; ///< null once the upload has ended
    bool lastChunkSeen_ = false;
};

} // namespace ferrylane
