#pragma once

#include "discovery/Allowance.h"
#include "discovery/PairedAddresses.h"
#include "discovery/UdpScanner.h"
#include "platform/DnsSd.h"
#include "platform/ThreadQueue.h"

#include <QObject>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>

namespace ferrylane {

/// Keeps the list of the phones that are on the local network right now, by browsing DNS-SD and, at
/// once and then every three seconds, by scanning over UDP. This computer is never in it. What a
/// scan finds also keeps the addresses of the paired phones current. Starts nothing by itself.
///
/// Everything public belongs to the main thread. Scans run on a thread of their own, which also
/// writes the paired phones' new addresses. stop() waits for nothing, and the destructor for no
/// scan to come to its end, but for an address that is being written.
class FerrylaneDeviceDiscovery final : public QObject {
    Q_OBJECT

public:
    /// Of the names that were heard of over UDP, which anybody can make up, no more are kept: those
    /// that are there stay, and newcomers wait for one of them to fall silent.
    static constexpr std::size_t maximumSeen = 256;

    struct Rules {
        ScanRules scan = {};
        platform::Duration period = std::chrono::seconds(3);
        /// How long a name that has answered stays in the list.
        platform::Duration grace = std::chrono::seconds(10);
    };

    explicit FerrylaneDeviceDiscovery(Rules rules) : rules_(rules) {}
    FerrylaneDeviceDiscovery() : FerrylaneDeviceDiscovery(Rules()) {}
    ~FerrylaneDeviceDiscovery() override;
    FerrylaneDeviceDiscovery(const FerrylaneDeviceDiscovery&) = delete;
    FerrylaneDeviceDiscovery& operator=(const FerrylaneDeviceDiscovery&) = delete;

    /// What `own` announces, if that is given, is not browsed for. Does nothing when it runs
    /// already. When browsing fails that is logged, and scanning goes on.
    void start(const platform::ServicePublisher* own = nullptr);
    /// Tells of an empty list, also when it does not run, and of nothing more until it is started.
    void stop();

Q_SIGNALS:
    /// The complete sorted list after every look at the network, be it the same as before. Every
    /// name is there once, names that differ in case being different ones.
    void namesChanged(const QStringList& names);

private:
    /// On the scans' thread, until `run` is stopped.
    void scanLoop(const std::stop_token& run);

    void takeScan(const Scan& scan);
    void takeAdvertised(const QStringList& instanceNames);
    void markSeen(const QString& name, platform::TimePoint time);
    void forgetSilent(platform::TimePoint now);
    void emitSnapshot();
    void logNames(const QStringList& names);

    Rules rules_;
    std::stop_source run_;
    std::unique_ptr<platform::ServiceBrowser> browser_; ///< there while started
    std::set<QString> bonjourNames_;
    std::map<QString, platform::TimePoint> udpSeen_;
    std::optional<QStringList> loggedNames_;
    /// Whoever wants can change the names at every look; the log then gets them now and then.
    Allowance namesLines_{1.0 / 30, 20};

    PairedAddresses pairedAddresses_; ///< of the scans' thread
    platform::ThreadQueue queue_{"ferrylane.mac.discovery"};
};

} // namespace ferrylane
