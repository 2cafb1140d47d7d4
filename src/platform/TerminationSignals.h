#pragma once

#include <functional>
#include <memory>

namespace platform {

/// Calls `handler` on the event loop of the thread that made it when the process is asked to end
/// (SIGINT, SIGTERM or SIGHUP). The same signal a second time ends the process at once; another one
/// does not, for a session that ends sends SIGTERM and SIGHUP together. Signals that were ignored
/// when this was made (nohup, background jobs of a shell) stay ignored.
///
/// Needs the application object, and must not be destroyed by its handler. One at a time in a
/// process: the constructor throws std::logic_error when there is another.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> handler);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
