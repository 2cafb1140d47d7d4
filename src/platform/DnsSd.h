#pragma once

#include "platform/SystemBusAccess.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <cstdint>
#include <map>
#include <memory>

class QDBusMessage;

// DNS-SD (RFC 6763) by the system's own daemon (Avahi), over the system's message bus. While that
// cannot be reached, what is wanted is kept, and done as soon as the daemon is there. Everything
// belongs to the main thread and returns at once, even if the daemon hangs. Objects must not be
// destroyed by what hears their signals.
namespace platform {

class BusService;

/// Announces one service of this computer on the local network.
class ServicePublisher final : public QObject {
    Q_OBJECT

public:
    explicit ServicePublisher(SystemBusAccess access = {});
    /// Withdraws.
    ~ServicePublisher() override;
    ServicePublisher(const ServicePublisher&) = delete;
    ServicePublisher& operator=(const ServicePublisher&) = delete;

    /// Announces the instance `name` of `type` ("_http._tcp") at the TCP port `port` of this
    /// computer in the default domain, without a TXT record, in place of what was announced before.
    ///
    /// The name loses its control characters and is cut to the 63 bytes of UTF-8 that DNS-SD has
    /// room for (section 4.1.1); if it is taken, "name #2" and so on is announced.
    void publish(const QString& name, const QString& type, std::uint16_t port);
    void withdraw();

    /// Whether the service is announced under this name, or was just now: others remember it for a
    /// while.
    [[nodiscard]] bool isOwn(const QString& name) const { return name == name_; }

Q_SIGNALS:
    /// One line for every change worth telling: daemon missing, back, name taken, nothing that can
    /// be announced.
    void told(const QString& line);

private:
    void askState();
    void hear(const QDBusMessage& signal);
    void takeServerState(int state);
    void takeGroupState(int state, const QString& error);
    void makeGroup();
    void freeGroup();
    void addService();
    void commit();
    void refuse(const QDBusMessage& error);
    void established();
    void daemonIsLost(const QString& reason);

    bool isWanted_ = false;
    QString wantedName_;
    QString type_;
    std::uint16_t port_ = 0;
    QString name_;        ///< wantedName_, or an alternative to it
    QString toldName_;    ///< what the log's reader takes for the announced name
    bool isLost_ = false; ///< told, and not announced since

    QString group_;   ///< path of what is announced; empty while there is none
    int attempt_ = 0; ///< moves on with each group that is asked for or freed
    std::unique_ptr<BusService> avahi_;
};

/// Keeps the names of the instances of one service type on the local network, those of this
/// computer's other programs too, as the daemon sees them.
class ServiceBrowser final : public QObject {
    Q_OBJECT

public:
    static constexpr std::size_t maximumNames = 256;

    /// Leaves out what is announced by `own`, if that is given.
    explicit ServiceBrowser(const ServicePublisher* own = nullptr, SystemBusAccess access = {});
    ~ServiceBrowser() override;
    ServiceBrowser(const ServiceBrowser&) = delete;
    ServiceBrowser& operator=(const ServiceBrowser&) = delete;

    /// Browses for `type` ("_http._tcp") from now on. Once.
    void start(const QString& type);

Q_SIGNALS:
    /// The names that there are now, each once and sorted, after every burst of changes; none
    /// while the daemon is lost. When there are more than `maximumNames`, it is the ones that have
    /// been there longest: a crowd that arrives does not drive out who is known.
    void namesChanged(const QStringList& names);
    /// Once for each loss of the daemon, not again for each retry.
    void failed(const QString& reason);

private:
    struct Service {
        std::uint64_t order = 0; ///< in which they were found
        /// Interfaces, protocols and domains that it can be reached by.
        int places = 0;
    };

    void browse();
    void hear(const QDBusMessage& signal);
    void add(const QString& name);
    void remove(const QString& name);
    void reportNames();
    [[nodiscard]] QStringList firstFound() const;
    void daemonIsLost(const QString& reason);

    QPointer<const ServicePublisher> own_;
    QString type_;
    QString browser_; ///< its path; empty while there is none
    std::map<QString, Service> services_;
    std::uint64_t foundByNow_ = 0;
    QStringList reportedNames_;
    bool isLost_ = false; ///< told, and not heard of since
    QTimer report_;
    std::unique_ptr<BusService> avahi_;
};

/// `name` as a DNS-SD instance name (RFC 6763, section 4.1.1): without ASCII control characters,
/// and cut at a character boundary to `room` bytes of UTF-8. May be empty, and then cannot be
/// announced.
[[nodiscard]] QString serviceName(const QString& name, qsizetype room = 63);
/// What to try when `name` is taken: "name #2", then "name #3" and so on, never longer than 63
/// bytes.
[[nodiscard]] QString alternativeServiceName(const QString& name);

} // namespace platform
