#pragma once

#include "platform/ByteBuffer.h"
#include "protocol/V4Stream.h"
#include "receiver/ReceiverContext.h"

#include <memory>
#include <optional>

namespace ferrylane {

/// An upload that has been admitted: everything about it but the body.
struct AdmittedUpload {
    ReceiverContext& context;                            ///< outlives its thread of uploads
    std::shared_ptr<platform::TcpConnection> connection; ///< the active one
    std::unique_ptr<OpenConnections::Registration> registration;
    std::unique_ptr<TransferAdmission::Place> place;
    V4Transfer transfer;
    std::optional<QString> senderName;
};

/// Receives an upload on the thread of uploads, from the first byte of its body to the answer.
/// Whatever ends it, the service is free again and there is no partial file. Called on the
/// connection's queue, returns at once. `body` holds what came together with the head.
void receiveSecureUploadV4Chunked(AdmittedUpload upload, platform::ByteBuffer body);

} // namespace ferrylane
