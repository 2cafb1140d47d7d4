#pragma once

#include "platform/PortHolder.h"

#include <map>
#include <system_error>

namespace ferrylane {

/// What keeps phones from reaching the receiver service, in words for people. On the main thread.
class ServiceHealth {
public:
    /// Nothing is known, as when the service has just been switched.
    void reset() { *this = {}; }
    /// The service's socket of that kind is open (no error), or could not be opened.
    void set(platform::Transport transport, const std::error_code& error);

    /// Phones can connect, or could since the service was switched on.
    [[nodiscard]] bool hasBeenReachable() const { return hasBeenReachable_; }
    [[nodiscard]] bool isFaulty() const { return !faults_.empty(); }
    /// One sentence a fault, with who has the port where that can be known; empty without a fault.
    [[nodiscard]] QString faultText() const;
    /// What to do about it.
    [[nodiscard]] QString adviceText() const;

private:
    std::map<platform::Transport, std::error_code> faults_;
    bool hasBeenReachable_ = false;
};

} // namespace ferrylane
