#pragma once

#include "bench/Report.h"

namespace bench {

struct ThroughputPlan {
    QString program; ///< path of the service
    qint64 size;     ///< bytes of an upload
    int runs;
};

/// Measures big uploads into the service, and beside each of them the machine's cryptography and a
/// receiver without any, so that noise hits all three alike. Forks: call it before any thread
/// starts. Throws when something cannot be run.
void measureThroughput(const ThroughputPlan& plan, Report& report);

} // namespace bench
