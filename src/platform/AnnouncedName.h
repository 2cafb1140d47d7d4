#pragma once

#include <QString>

#include <mutex>

namespace platform {

/// The instance name under which this program announces a service, which may be another than it
/// wants. Tells who browses which service is the program's own. Any thread.
class AnnouncedName {
public:
    /// Before the service is announced so. Stays when the service is withdrawn: others remember
    /// it for a while.
    void set(const QString& name)
    {
        const std::lock_guard lock(mutex_);
        name_ = name;
    }
    [[nodiscard]] bool is(const QString& name) const
    {
        const std::lock_guard lock(mutex_);
        return name == name_;
    }

private:
    mutable std::mutex mutex_;
    QString name_;
};

} // namespace platform
