#pragma once

#include "platform/ByteBuffer.h"
#include "platform/SecretKey.h"
#include "protocol/StreamWriter.h"
#include "sender/Cancellation.h"
#include "sender/PhoneConnection.h"
#include "sender/SendProgress.h"
#include "sender/SourceFile.h"
#include "sender/TargetAddress.h"

#include <chrono>

namespace ferrylane {

/// How long a send waits for what.
struct SendTimes {
    platform::Duration connectLimit = std::chrono::seconds(15);
    platform::Duration statusLimit = std::chrono::seconds(5);
    platform::Duration busyPause = std::chrono::seconds(1);
    /// For the answer once all is sent: a slow disk may have gigabytes to store first.
    platform::Duration answerLimit = std::chrono::minutes(5);
};

/// The phone that a file goes to.
struct SendTarget {
    QString name;
    TargetAddress address;
    platform::SecretKey key;
};

/// Sends one file after the other, each as one upload on a connection of its own. Used by one
/// thread, which waits; throws SendError.
class FileSender {
public:
    /// All must outlive this.
    FileSender(platform::TcpNetwork& network, Cancellation& cancellation, const SendTimes& times);

    void send(const platform::FilePath& path, const SendTarget& target, const QString& senderName,
        SendProgress& progress);

private:
    void connect(PhoneConnection& phone, const SendTarget& target);
    /// False when the phone has answered before the end.
    [[nodiscard]] bool sendBody(
        PhoneConnection& phone, SourceFile& file, StreamWriter& writer, SendProgress& progress);

    platform::TcpNetwork& network_;
    Cancellation& cancellation_;
    const SendTimes& times_;
};

} // namespace ferrylane
