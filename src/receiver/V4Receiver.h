#pragma once

#include "platform/ByteBuffer.h"
#include "protocol/HttpAnswer.h"
#include "protocol/StreamReader.h"
#include "receiver/PartialFile.h"
#include "receiver/ReceiverContext.h"
#include "receiver/UploadReports.h"

#include <memory>
#include <optional>

namespace ferrylane {

/// An upload that has been admitted: everything about it but the body.
struct AdmittedUpload {
    ReceiverContext& context;                            ///< outlives its thread of uploads
    std::shared_ptr<platform::TcpConnection> connection; ///< the active one
    platform::TcpStream& stream;                         ///< the connection's
    std::unique_ptr<OpenConnections::Registration> registration;
    std::optional<TransferAdmission::Place> place;
    V4Transfer transfer;
    std::optional<QString> senderName;
};

/// Receives one upload, on the thread of uploads, from the first byte of its body to the answer.
/// Whatever ends it, the service is free again and there is no partial file.
class V4Receiver {
public:
    /// Takes the upload over and returns. `body` holds what came together with the head.
    static void receiveSecureUploadV4Chunked(AdmittedUpload upload, platform::ByteBuffer body);

    explicit V4Receiver(AdmittedUpload upload);

    void run(platform::ByteBuffer body);

private:
    /// Writes all of the body to the partial file; its number of bytes, or why not.
    [[nodiscard]] std::variant<quint64, StreamFailure> receiveBody(platform::ByteBuffer body);
    [[nodiscard]] HttpAnswer store(quint64 size);
    [[nodiscard]] HttpAnswer failed(
        const QString& reason, QByteArrayView status = statuses::badRequest);
    /// Leaves the service free for the next upload, before anybody hears of the end of this one.
    void leave();
    void answer(const HttpAnswer& answer);

    AdmittedUpload upload_;
    const platform::TimePoint admissionTime_;
    ReceiveProgress progress_;
    std::unique_ptr<PartialFile> file_;
};

} // namespace ferrylane
