#include "platform/Process.h"

#include <QCoreApplication>
#include <QProcess>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <future>
#include <system_error>
#include <utility>

#include <sys/resource.h>

namespace platform {

namespace {

// Also the most that is asked for: with far more, libraries that walk all descriptors get slow.
constexpr rlim_t highestLimit = 65536;

/// After an update, the system says of the old executable that it is deleted; the new one is there.
QString executable()
{
    const QString mark = QStringLiteral(" (deleted)");
    const QString path = QCoreApplication::applicationFilePath();
    return path.endsWith(mark) ? path.chopped(mark.size()) : path;
}

constexpr auto givingUpTime = std::chrono::seconds(1);

/// Ends the process. What hangs may be what the last words are written to, so they get a thread of
/// their own and a second.
[[noreturn]] void giveUp(const std::function<void()>& lastWords)
{
    std::promise<void> said; // never destroyed: the thread may come to it late
    try {
        std::thread([&] {
            lastWords();
            said.set_value();
        }).detach();
        said.get_future().wait_for(givingUpTime);
    } catch (const std::system_error&) {
        // There is no thread to be had. The end comes all the same.
    }
    // Without destructors: one of them is what hangs.
    std::_Exit(EXIT_FAILURE);
}

} // namespace

unsigned descriptorLimit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return static_cast<unsigned>(highestLimit);
    return static_cast<unsigned>(std::min(limit.rlim_cur, highestLimit));
}

void raiseDescriptorLimit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    const rlim_t wanted = std::min(limit.rlim_max, highestLimit);
    if (limit.rlim_cur >= wanted) return;
    limit.rlim_cur = wanted;
    // Permitted up to the hard limit; where it is not, the old limit serves.
    static_cast<void>(::setrlimit(RLIMIT_NOFILE, &limit));
}

std::optional<QString> relaunchSoon()
{
    QProcess shell;
    shell.setProgram(QStringLiteral("/bin/sh"));
    shell.setArguments({QStringLiteral("-c"), QStringLiteral("sleep 0.6; exec \"$1\""),
        QStringLiteral("ferrylane-restart"), executable()});
    if (shell.startDetached()) return std::nullopt;
    return shell.errorString();
}

EndLimit::EndLimit(Duration limit, std::function<void()> onGiveUp)
    : thread_([this, limit, onGiveUp = std::move(onGiveUp)] {
        std::unique_lock lock(mutex_);
        if (changed_.wait_for(lock, limit, [this] { return isInTime_; })) return;
        giveUp(onGiveUp);
    })
{
}

EndLimit::~EndLimit()
{
    {
        const std::lock_guard lock(mutex_);
        isInTime_ = true;
        changed_.notify_all();
    }
    thread_.join();
}

} // namespace platform
