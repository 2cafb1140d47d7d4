#pragma once

namespace platform {

/// From now on, the application's event loop is told to quit when the process is asked to end
/// (SIGINT, SIGTERM or SIGHUP). The same signal a second time ends the process at once; another one
/// does not, for a session that ends sends SIGTERM and SIGHUP together. Signals that are ignored
/// now (nohup, background jobs of a shell) stay ignored.
///
/// Once in a process, with the application object there. Throws std::system_error when there is no
/// descriptor to be had.
void quitOnTerminationSignals();

} // namespace platform
