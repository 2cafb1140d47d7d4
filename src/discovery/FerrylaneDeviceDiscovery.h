#pragma once

#include "discovery/DiscoveryScanner.h"
#include "discovery/NearbyNames.h"
#include "platform/Clock.h"
#include "platform/SerialQueue.h"
#include "platform/ServiceBrowser.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <stop_token>

namespace ferrylane {

/// Keeps the list of the phones that are on the local network right now, by browsing DNS-SD and, at
/// once and then every three seconds, by scanning over UDP. This computer is never in it. Starts
/// nothing by itself.
///
/// Everything public belongs to the main thread, which also runs the two handlers. Scans, and what
/// browsing yields, run on a queue of its own, which a scan keeps busy for its 1.2 seconds (at most
/// ten, see UdpScanner); browse results wait meanwhile.
///
/// stop() and the destructor wait for no scan to come to its end: one in flight is cut short. After
/// stop() the handlers get nothing but one empty list until start() is called again; after the
/// destructor they get nothing at all.
class FerrylaneDeviceDiscovery {
public:
    /// Gets the complete sorted list after every look at the network, be it the same as before.
    using ChangeHandler = std::function<void(const QStringList& names)>;
    /// Gets each phone that has answered over UDP, with the base URL of its receiver.
    using AddressHandler = std::function<void(const QString& name, const QString& baseURL)>;

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

        /// The ones of the running system.
        [[nodiscard]] static Parts ofSystem(
            platform::SerialQueue& mainQueue, const platform::Clock& clock);
    };

    explicit FerrylaneDeviceDiscovery(Parts parts);
    ~FerrylaneDeviceDiscovery();
    FerrylaneDeviceDiscovery(const FerrylaneDeviceDiscovery&) = delete;
    FerrylaneDeviceDiscovery& operator=(const FerrylaneDeviceDiscovery&) = delete;

    void setOnChange(ChangeHandler onChange);
    void setOnAddress(AddressHandler onAddress);

    /// Does nothing when it runs already. When browsing fails that is logged, and scanning goes on.
    void start();
    /// Publishes an empty list, also when it does not run.
    void stop();

private:
    struct Handlers {
        ChangeHandler onChange;
        AddressHandler onAddress;
    };

    // On its own queue. `run` is stopped when the start that it came from has been followed by a
    // stop.
    void tick(const std::stop_token& run);
    void accept(
        const DiscoveryReply& reply, const platform::Endpoint& source, const std::stop_token& run);
    void takeAdvertised(const QStringList& instanceNames, const std::stop_token& run);
    void emitSnapshot(const std::stop_token& run);
    void forget();
    [[nodiscard]] bool isOwnName(const QString& name) const;

    void browse();
    void publish(const QStringList& names, const std::stop_token& run);

    Parts parts_;
    /// Shared, so that what waits in the main queue finds out when they are gone.
    std::shared_ptr<Handlers> handlers_;

    // Of the main thread.
    std::stop_source run_;
    std::unique_ptr<platform::ServiceBrowser> browser_; ///< there while started

    // Of the own queue.
    NearbyNames nearby_;
    std::shared_ptr<platform::DelayedTask> nextTick_;
};

} // namespace ferrylane
