#pragma once

#include "platform/NotificationCenter.h"
#include "platform/SecretKey.h"
#include "platform/ThreadQueue.h"
#include "receiver/OpenConnections.h"
#include "receiver/TransferAdmission.h"

#include <QString>

#include <memory>
#include <optional>

namespace ferrylane {

/// A file that has been received and stored.
struct ReceivedFile {
    QString path;
    qint64 size = 0; ///< bytes
};

/// What the service shares with the connections that it serves. Every connection holds it; what it
/// refers to must outlive the last of them (HTTPServer's destructor waits for that).
struct ReceiverContext {
    ReceiverContext(platform::SecretKey key, platform::SerialQueue& main,
        platform::NotificationCenter& center, const platform::Clock& time)
        : sessionKey(std::move(key)), mainQueue(main), notifications(center), clock(time)
    {
    }

    const platform::SecretKey sessionKey;
    platform::SerialQueue& mainQueue;
    platform::NotificationCenter& notifications;
    const platform::Clock& clock;

    TransferAdmission admission;
    const std::shared_ptr<OpenConnections> connections = std::make_shared<OpenConnections>();
    platform::ThreadQueue recordQueue{"ferrylane.receive.records"};

    /// On the main queue only. While "FerrylaneReceived" is delivered it is the file of that
    /// notification, whose one value is the name.
    std::optional<ReceivedFile> lastReceivedFile;
};

} // namespace ferrylane
