#pragma once

#include "platform/AnnouncedName.h"
#include "platform/Clock.h"
#include "platform/Interface.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace platform {

/// Keeps the names of the instances of one DNS-SD service type (RFC 6763) on the local network,
/// those of this computer's other programs too, as the system's own DNS-SD daemon sees them. While
/// that cannot be reached there are none; the browser takes its work up again as soon as the daemon
/// is there.
///
/// One thread calls start(), stop() and the destructor.
class ServiceBrowser : public Interface {
public:
    /// Gets the names that there are now, each once and sorted, after every burst of changes. When
    /// there are more than `maximumNames`, it is the ones that have been there longest: a crowd
    /// that arrives does not drive out who is known. Runs on the browser's own thread.
    using ResultsHandler = std::function<void(const QStringList& instanceNames)>;
    /// Tells once for each loss of the daemon why it cannot be reached, not again for each retry.
    /// Runs on the browser's own thread, or in start() when there is no thread to be had; only the
    /// next start() tries again then.
    using FailureHandler = std::function<void(const QString& reason)>;
    static constexpr std::size_t maximumNames = 256;
    static constexpr Duration usualRetryInterval = std::chrono::seconds(2);

    /// Leaves out what is announced as `own`, if that is given. `retryInterval` is the pause
    /// between two attempts to reach the daemon.
    [[nodiscard]] static std::unique_ptr<ServiceBrowser> create(
        std::shared_ptr<const AnnouncedName> own = {}, Duration retryInterval = usualRetryInterval);

    /// Final like stop().
    ~ServiceBrowser() override = default;

    /// Browses for `type` ("_http._tcp"), in place of what was browsed for before. Returns at once.
    virtual void start(const QString& type, ResultsHandler onResults, FailureHandler onFailure) = 0;
    /// Waits for a handler that is running, though not for a daemon that hangs: when this returns,
    /// no handler runs or will run. Not to be called from a handler.
    virtual void stop() = 0;
};

} // namespace platform
