#include "platform/TerminationSignals.h"

#include "platform/linux/FileDescriptor.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <atomic>
#include <csignal>

#include <sys/eventfd.h>

namespace platform {

namespace {

// What the signal handler may touch. The descriptor is never closed: a handler may run at any time.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
std::atomic<int> wakeDescriptor = -1;
std::atomic<int> firstSignal = 0; // 0: the process has not been asked to end
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)
static_assert(std::atomic<int>::is_always_lock_free);

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

void watch(int signal)
{
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if ((action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = onTerminationSignal;
    // Calls that were under way on the interrupted thread are none the wiser.
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

} // namespace

void quitOnTerminationSignals()
{
    wakeDescriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeDescriptor < 0) throw std::system_error(lastError());
    auto* const notifier
        = new QSocketNotifier(wakeDescriptor, QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        watch(signal);
    }
}

} // namespace platform
