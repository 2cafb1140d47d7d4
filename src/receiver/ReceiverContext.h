#pragma once

#include "platform/Process.h"
#include "platform/SecretKey.h"
#include "platform/ThreadQueue.h"
#include "receiver/OpenConnections.h"
#include "receiver/TransferAdmission.h"
#include "receiver/UploadReports.h"

#include <chrono>
#include <memory>

namespace ferrylane {

/// How long an upload may keep the service busy without getting on.
struct UploadTimes {
    /// Until its first authentic record, which is 1 MiB at most: whoever is admitted has not proved
    /// anything before.
    platform::Duration firstRecord = std::chrono::seconds(30);
    /// Later on, without a single byte. A phone may doze off for a while.
    platform::Duration silence = std::chrono::seconds(120);
};

/// What the service shares with the connections that it serves. Every connection holds it; what it
/// refers to must outlive the last of them (HTTPServer's destructor waits for that).
struct ReceiverContext {
    ReceiverContext(platform::SecretKey key, const platform::Clock& time,
        const UploadTimes& uploadTimes, UploadReports& uploadReports)
        : sessionKey(std::move(key)), clock(time), times(uploadTimes), reports(uploadReports)
    {
    }

    const platform::SecretKey sessionKey;
    const platform::Clock& clock;
    const UploadTimes times;
    UploadReports& reports;

    TransferAdmission admission;
    const std::shared_ptr<OpenConnections> connections = std::make_shared<OpenConnections>(
        ConnectionLimits::forDescriptors(platform::descriptorLimit()));
    platform::ThreadQueue uploads{"ferrylane.receive.uploads"};
};

} // namespace ferrylane
