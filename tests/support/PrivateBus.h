#pragma once

#include "support/ChildProcess.h"

#include <QTemporaryDir>

namespace support {

/// A D-Bus bus apart from the system's own, on which everybody may do everything. Ended with this
/// object.
class PrivateBus {
public:
    /// Waits until it serves, and throws std::runtime_error if it does not.
    void start();
    /// The programs on it notice, and mostly end.
    void kill() { bus_.kill(); }
    /// With this nothing is passed on until it is sent SIGCONT.
    void signal(int number) const { bus_.signal(number); }

    /// The same from the beginning, and before there is a bus.
    [[nodiscard]] QString address() const;
    /// This process's, with this bus in place of the system's.
    [[nodiscard]] QProcessEnvironment environment() const;

private:
    [[nodiscard]] QString file(const QString& name) const { return folder_.filePath(name); }

    QTemporaryDir folder_;
    ChildProcess bus_;
};

} // namespace support
