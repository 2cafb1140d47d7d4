#pragma once

#include "platform/DescriptorLimit.h"
#include "platform/NotificationCenter.h"
#include "platform/SecretKey.h"
#include "platform/ThreadQueue.h"
#include "receiver/FailureLog.h"
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
    ReceiverContext(platform::SecretKey key, platform::SerialQueue& main,
        platform::NotificationCenter& center, const platform::Clock& time,
        const UploadTimes& uploadTimes)
        : sessionKey(std::move(key))
        , clock(time)
        , times(uploadTimes)
        , reports(std::make_shared<UploadReports>(main, center))
        , failureLog(std::make_shared<FailureLog>(main))
    {
    }

    const platform::SecretKey sessionKey;
    const platform::Clock& clock;
    const UploadTimes times;
    const std::shared_ptr<UploadReports> reports;
    const std::shared_ptr<FailureLog> failureLog;

    TransferAdmission admission;
    const std::shared_ptr<OpenConnections> connections = std::make_shared<OpenConnections>(
        ConnectionLimits::forDescriptors(platform::descriptorLimit()));
    platform::ThreadQueue recordQueue{"ferrylane.receive.records"};
};

} // namespace ferrylane
