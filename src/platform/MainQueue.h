#pragma once

#include "platform/SerialQueue.h"

#include <QObject>

namespace platform {

/// The serial queue of the thread that created it: Qt's event loop there. Tasks that have not run
/// when the queue goes are dropped.
class MainQueue final : public SerialQueue {
public:
    void async(Task task) override;
    std::shared_ptr<DelayedTask> after(Duration delay, Task task) override;

private:
    QObject context_;
};

} // namespace platform
