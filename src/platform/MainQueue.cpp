#include "platform/MainQueue.h"

#include <QTimer>

#include <atomic>

namespace platform {

namespace {

class DelayedOnEventLoop final : public DelayedTask {
public:
    explicit DelayedOnEventLoop(SerialQueue::Task task) : task_(std::move(task)) {}

    void cancel() override { cancelled_ = true; }

    void run()
    {
        if (!cancelled_.exchange(true)) task_();
    }

private:
    std::atomic<bool> cancelled_ = false;
    SerialQueue::Task task_;
};

} // namespace

void MainQueue::async(Task task)
{
    QMetaObject::invokeMethod(&context_, std::move(task), Qt::QueuedConnection);
}

std::shared_ptr<DelayedTask> MainQueue::after(Duration delay, Task task)
{
    auto delayed = std::make_shared<DelayedOnEventLoop>(std::move(task));
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(delay);
    // A timer belongs to the thread that makes it.
    async([this, milliseconds, delayed] {
        QTimer::singleShot(
            milliseconds, Qt::PreciseTimer, &context_, [delayed] { delayed->run(); });
    });
    return delayed;
}

} // namespace platform
