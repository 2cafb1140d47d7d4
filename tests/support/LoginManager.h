#pragma once

#include "support/ChildProcess.h"
#include "support/PrivateBus.h"

#include <QTemporaryDir>

namespace support {

/// A computer's system bus and a played login manager on it. Ended with this object.
class LoginManager {
public:
    /// Both. Throws std::runtime_error when they cannot be had.
    void start();
    void kill();

    /// The bus's, the same before it runs.
    [[nodiscard]] QString busAddress() const { return bus_.address(); }

    /// Tells the programs on the bus that the computer goes to sleep, or has woken up.
    void prepareForSleep(bool isAboutToSleep);
    /// What keeps the computer awake, as a caller of the login manager reads it.
    [[nodiscard]] QByteArray inhibitors();
    [[nodiscard]] bool isInhibited() { return inhibitors().contains("struct"); }

private:
    bool send(const QString& method, const QStringList& arguments);
    [[nodiscard]] QString file(const QString& name) const { return folder_.filePath(name); }

    QTemporaryDir folder_;
    PrivateBus bus_;
    ChildProcess process_;
};

} // namespace support
