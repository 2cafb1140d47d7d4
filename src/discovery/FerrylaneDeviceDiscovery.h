#pragma once

#include "discovery/Allowance.h"
#include "discovery/DiscoveryScanner.h"
#include "discovery/NearbyNames.h"
#include "discovery/PairedAddresses.h"
#include "platform/Clock.h"
#include "platform/SerialQueue.h"
#include "platform/ServiceBrowser.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace ferrylane {

/// Keeps the list of the phones that are on the local network right now, by browsing DNS-SD and, at
/// once and then every three seconds, by scanning over UDP. This computer is never in it. What a
/// scan finds also keeps the addresses of the paired phones current. Starts nothing by itself.
///
/// Everything public belongs to the main thread, which also runs the handler. Scans, what follows
/// from them and what browsing yields run on a queue of its own, which a scan keeps busy for its
/// 1.2 seconds (at most ten, see UdpScanner); browse results wait meanwhile.
///
/// stop() and the destructor wait for no scan to come to its end: one in flight is cut short. The
/// destructor waits for a paired phone's new address to be written. After stop() the handler gets
/// nothing but one empty list until start() is called again; after the destructor it gets nothing
/// at all.
class FerrylaneDeviceDiscovery {
public:
    /// Gets the complete sorted list after every look at the network, be it the same as before.
    using ChangeHandler = std::function<void(const QStringList& names)>;

    /// What it works with. `mainQueue` and `clock` must outlive it.
    struct Parts {
        platform::SerialQueue& mainQueue;
        const platform::Clock& clock;
        /// Its own queue. Destroying the queue must wait for the running task, as that of a
        /// platform::ThreadQueue does.
        std::unique_ptr<platform::SerialQueue> queue;
        /// Called at every start.
        std::function<std::unique_ptr<platform::ServiceBrowser>()> makeBrowser;
        std::unique_ptr<DiscoveryScanner> scanner;
        /// This computer's name, from any thread.
        std::function<QString()> deviceName;

        /// The ones of the running system. What is announced as `ownService` is not browsed for.
        [[nodiscard]] static Parts ofSystem(platform::SerialQueue& mainQueue,
            const platform::Clock& clock,
            const std::shared_ptr<const platform::AnnouncedName>& ownService);
    };

    explicit FerrylaneDeviceDiscovery(Parts parts);
    ~FerrylaneDeviceDiscovery();
    FerrylaneDeviceDiscovery(const FerrylaneDeviceDiscovery&) = delete;
    FerrylaneDeviceDiscovery& operator=(const FerrylaneDeviceDiscovery&) = delete;

    void setOnChange(ChangeHandler onChange);

    /// Does nothing when it runs already. When browsing fails that is logged, and scanning goes on.
    void start();
    /// Publishes an empty list, also when it does not run.
    void stop();

private:
    // On its own queue. `run` is stopped when the start that it came from has been followed by a
    // stop.
    void tick(const std::stop_token& run);
    void accept(const DiscoveryReply& reply, const platform::Endpoint& source);
    void takeAdvertised(const QStringList& instanceNames, const std::stop_token& run);
    void emitSnapshot(const std::stop_token& run);
    void forget();
    void logNames(const QStringList& names);
    [[nodiscard]] bool isOwnName(const QString& name) const;

    void browse();
    void publish(const QStringList& names, const std::stop_token& run);

    Parts parts_;
    platform::SerialQueue& queue_;
    /// Shared, so that what waits in the main queue finds out when it is gone.
    std::shared_ptr<ChangeHandler> onChange_;

    // Of the main thread.
    std::stop_source run_;
    std::unique_ptr<platform::ServiceBrowser> browser_; ///< there while started

    // Of the own queue.
    NearbyNames nearby_;
    PairedAddresses pairedAddresses_;
    std::optional<QStringList> loggedNames_;
    /// Whoever wants can change the names at every look; the log then gets them now and then.
    Allowance namesLines_{1.0 / 30, 20};
    std::shared_ptr<platform::DelayedTask> nextTick_;

    /// Has the thread, so it goes first; its tasks use it through queue_ until then.
    std::unique_ptr<platform::SerialQueue> ownedQueue_;
};

} // namespace ferrylane
