#pragma once

#include "platform/DatagramSocket.h"
#include "platform/Interface.h"
#include "protocol/DiscoveryProtocol.h"

#include <functional>
#include <stop_token>

namespace ferrylane {

/// Asks the local network which devices there are.
class DiscoveryScanner : public platform::Interface {
public:
    /// Gets each reply and where it came from.
    using ReplyHandler = std::function<void(const DiscoveryReply&, const platform::Endpoint&)>;

    enum class Outcome {
        notAsked, ///< nothing could be asked
        cutShort, ///< perhaps not everybody who answered has been heard
        complete,
    };

    /// Asks once and collects the replies, on the calling thread, which also runs `onReply`. A stop
    /// requested through `stop`, before or meanwhile, ends it at once.
    virtual Outcome scan(const ReplyHandler& onReply, const std::stop_token& stop) = 0;
};

} // namespace ferrylane
