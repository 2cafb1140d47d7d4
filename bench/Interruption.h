#pragma once

namespace bench {

/// From now on Ctrl-C and SIGTERM only make throwIfInterrupted() throw: what has been put into
/// memory-backed folders must be removed before this process ends.
void deferInterruption();

/// Throws std::runtime_error once the user has asked for the end.
void throwIfInterrupted();

} // namespace bench
