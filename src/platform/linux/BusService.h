#pragma once

#include "platform/SystemBusAccess.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QTimer>

#include <memory>
#include <utility>

namespace platform {

/// One service on the system's message bus (D-Bus), which is taken up whenever the bus and the
/// service are there. Main thread only.
///
/// Nothing here waits, even if the bus or the service hangs. QDBusConnection::connectToBus() does:
/// it says hello to the bus, on the one thread that serves all connections of the process, and
/// waits 25 seconds for the answer. So the connection is a plain one, as to a peer, and the
/// messages that make it one to a bus are sent here.
class BusService final : public QObject {
    Q_OBJECT

public:
    /// `interfaces` are those whose signals are passed on. Of the first one the service tells
    /// everybody; what it tells this program alone comes without being asked for.
    BusService(QString name, QStringList interfaces, SystemBusAccess access);
    ~BusService() override;
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    /// Begins; does nothing the second time.
    void open();
    [[nodiscard]] bool isThere() const { return !owner_.isEmpty(); }
    /// Why the service is not there; empty while it is there or has not been looked for.
    [[nodiscard]] const QString& lossReason() const { return lossReason_; }

    /// The service is of no use: it counts as lost, and is taken up again after the pause.
    void fail(const QString& reason);

    [[nodiscard]] QDBusMessage method(
        const QString& path, const QString& interface, const QString& name) const
    {
        return QDBusMessage::createMethodCall(name_, path, interface, name);
    }
    /// Runs `take` with the answer or the error; never once the service is lost or this is gone.
    template <typename Function>
    void call(const QDBusMessage& message, Function take, int patience = usualPatience)
    {
        auto* const watcher = send(message, patience);
        connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, take = std::move(take)] {
                watcher->deleteLater();
                if (watcher->parent() == calls_.get()) take(watcher->reply());
            });
    }
    /// Without an interest in the answer.
    void tell(const QDBusMessage& message);

Q_SIGNALS:
    void appeared();
    /// `reason` is one line for people.
    void lost(const QString& reason);
    void signalled(const QDBusMessage& message);

private:
    static constexpr int usualPatience = 25'000; ///< milliseconds

    void connectToBus();
    void sayHello();
    [[nodiscard]] QDBusMessage busMethod(const QString& name, const QString& argument = {}) const;
    QDBusPendingCallWatcher* send(const QDBusMessage& message, int patience);
    Q_SLOT void receive(const QDBusMessage& message);
    void setOwner(const QString& owner);
    void lose(const QString& reason);
    void dropCalls();

    QString name_;
    QStringList interfaces_;
    SystemBusAccess access_;
    QString connectionName_; ///< in this process
    bool isOpen_ = false;
    QString owner_; ///< the bus's name for the program that is the service
    QString lossReason_;
    QTimer retry_;
    /// Parent of what waits for an answer.
    std::unique_ptr<QObject> calls_ = std::make_unique<QObject>();
};

} // namespace platform
