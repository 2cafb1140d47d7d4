#pragma once

#include "platform/Clock.h"

#include <QString>

#include <functional>
#include <memory>

// When the computer sleeps, by the login manager (logind) on the system's message bus. While the
// bus cannot be reached nothing happens, and it is tried again; nothing here ever fails.
namespace platform {

/// How to reach the system's message bus.
struct SystemBusAccess {
    /// Empty: where the system has it.
    QString address = {};
    /// The pause between two attempts.
    Duration retryInterval = std::chrono::seconds(5);
};

class WakeListener;

/// Tells when the computer has woken up from sleep.
class WakeNotices {
public:
    /// `onDidWake` is called on the event loop of the thread that makes this, the main thread, each
    /// time that the computer has slept. It must not destroy this.
    explicit WakeNotices(std::function<void()> onDidWake, SystemBusAccess access = {});
    /// The handler is not called any more. On the thread that made this.
    ~WakeNotices();
    WakeNotices(const WakeNotices&) = delete;
    WakeNotices& operator=(const WakeNotices&) = delete;

private:
    std::unique_ptr<WakeListener> listener_;
};

/// Keeps the computer awake while it is held: neither the desktop nor the user puts it to sleep
/// then. Belongs to the thread that makes it, the main thread, and needs its event loop.
class SleepInhibitor {
public:
    /// `who` is the program and `why` its reason, both for people to read.
    SleepInhibitor(QString who, QString why, SystemBusAccess access = {});
    /// Releases.
    ~SleepInhibitor();
    SleepInhibitor(const SleepInhibitor&) = delete;
    SleepInhibitor& operator=(const SleepInhibitor&) = delete;

    /// Asks for it and returns at once. What could not be had is asked for again when the bus is
    /// back, or when this is called again. Does nothing while held, or asked for.
    void hold();
    /// Does nothing while not held.
    void release();

private:
    class Request;
    std::unique_ptr<Request> request_;
};

} // namespace platform
