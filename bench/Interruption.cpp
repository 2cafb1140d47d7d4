#include "bench/Interruption.h"

#include <csignal>
#include <stdexcept>

namespace bench {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void noteInterruption(int /*signal*/)
{
    interrupted = 1;
}

} // namespace

void deferInterruption()
{
    // Without SA_RESTART, so that a blocked call on a socket ends.
    struct sigaction action {};
    action.sa_handler = noteInterruption;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void throwIfInterrupted()
{
    if (interrupted != 0) throw std::runtime_error("interrupted");
}

} // namespace bench
