#include "platform/TerminationSignals.h"

#include "platform/linux/FileDescriptor.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <csignal>
#include <stdexcept>

#include <sys/eventfd.h>

namespace platform {

namespace {

constexpr std::array watchedSignals{SIGINT, SIGTERM, SIGHUP};

// What the signal handler may touch. The descriptor is made once and never closed: a handler on
// another thread may be about to write to it when an object goes.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
std::atomic<int> wakeDescriptor = -1;
std::atomic<int> firstSignal = 0; // 0: the process has not been asked to end
std::atomic<bool> inUse = false;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void onTerminationSignal(int signal)
{
    const int savedErrno = errno;
    int earlier = 0;
    if (firstSignal.compare_exchange_strong(earlier, signal)) {
        ::eventfd_write(wakeDescriptor, 1);
    } else if (earlier == signal) {
        // Held back while this handler runs, and then it ends the process as if never caught.
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
    errno = savedErrno;
}

int wakeDescriptorOfProcess()
{
    if (wakeDescriptor < 0) wakeDescriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeDescriptor < 0) {
        throw std::system_error(lastError());
    }
    return wakeDescriptor;
}

/// Whether a shell or nohup(1) had the signal ignored for this process.
bool isIgnored(const struct sigaction& action)
{
    return (action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

struct TerminationSignals::State {
    explicit State(std::function<void()> onSignal)
        : handler(std::move(onSignal)), notifier(wakeDescriptorOfProcess(), QSocketNotifier::Read)
    {
        QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [this] {
            eventfd_t count = 0;
            if (::eventfd_read(wakeDescriptor, &count) == 0) handler();
        });
    }

    void watch()
    {
        struct sigaction action {};
        action.sa_handler = onTerminationSignal;
        // Calls that were under way on the interrupted thread are none the wiser.
        action.sa_flags = SA_RESTART;
        ::sigemptyset(&action.sa_mask);
        for (std::size_t i = 0; i < watchedSignals.size(); ++i) {
            ::sigaction(watchedSignals[i], nullptr, &previous[i]);
            if (!isIgnored(previous[i])) ::sigaction(watchedSignals[i], &action, nullptr);
        }
    }

    void unwatch() const
    {
        for (std::size_t i = 0; i < watchedSignals.size(); ++i) {
            ::sigaction(watchedSignals[i], &previous[i], nullptr);
        }
    }

    std::function<void()> handler;
    QSocketNotifier notifier;
    std::array<struct sigaction, watchedSignals.size()> previous{};
};

TerminationSignals::TerminationSignals(std::function<void()> handler)
    : state_(std::make_unique<State>(std::move(handler)))
{
    if (inUse.exchange(true)) {
        throw std::logic_error("termination signals are being watched already");
    }
    state_->watch();
}

TerminationSignals::~TerminationSignals()
{
    state_->unwatch();
    // What has been asked and not been heard must not reach the next object.
    eventfd_t ignored = 0;
    ::eventfd_read(wakeDescriptor, &ignored);
    firstSignal = 0;
    inUse = false;
}

} // namespace platform
