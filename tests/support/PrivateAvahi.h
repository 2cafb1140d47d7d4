#pragma once

#include "support/PrivateBus.h"

namespace support {

/// A D-Bus bus and an Avahi daemon on it, as a computer called `hostName` has them, apart from the
/// system's own. Both are ended with this object. The folder for temporary files must not be below
/// /run, which the daemon has for itself.
class PrivateAvahi {
public:
    /// The daemon works in the network namespace that the file `networkNamespace` stands for
    /// ("/proc/123/ns/net"), or in this process's own.
    explicit PrivateAvahi(QString hostName, QString networkNamespace = {});

    /// Each waits until it serves, and throws std::runtime_error if it does not.
    void startBus() { bus_.start(); }
    void startDaemon();

    void killDaemon() { daemon_.kill(); }
    /// The daemon ends with its bus.
    void killBus();
    /// With this a daemon does not answer until it is sent SIGCONT.
    void signalDaemon(int number) const { daemon_.signal(number); }
    void signalBus(int number) const { bus_.signal(number); }

    /// The same from the start, and before there is a bus.
    [[nodiscard]] QString busAddress() const { return bus_.address(); }
    /// This process's, with the bus in place of the system's.
    [[nodiscard]] QProcessEnvironment environment() const { return bus_.environment(); }

private:
    [[nodiscard]] QString file(const QString& name) const { return folder_.filePath(name); }

    QTemporaryDir folder_;
    QString hostName_;
    QString networkNamespace_;
    PrivateBus bus_;
    ChildProcess daemon_;
};

} // namespace support
