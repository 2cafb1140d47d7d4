#pragma once

#include "bench/Report.h"

namespace bench {

struct SendThroughputPlan {
    qint64 size; ///< bytes of a file
    int runs;
};

/// Measures sending a big file, and beside each send the machine's cryptography, so that noise hits
/// both alike. Forks: call it before any thread starts. Throws when something cannot be run.
void measureSendThroughput(const SendThroughputPlan& plan, Report& report);

} // namespace bench
