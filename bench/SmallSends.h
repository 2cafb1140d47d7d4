#pragma once

#include "bench/Report.h"

namespace bench {

/// Measures how many files of 4 KiB a sender sends in a second, the status request before each of
/// them included: the median of `runs` times 1,000 files. Forks: call it
/// before any thread starts. Throws when something cannot be run.
void measureSmallSends(int runs, Report& report);

} // namespace bench
