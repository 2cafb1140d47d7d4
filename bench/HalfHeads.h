#pragma once

#include "bench/Report.h"

namespace bench {

/// Measures how the service bears 5,000 clients that connect and send half a request head: what
/// they cost it, and how long others wait for an answer meanwhile and afterwards. Starts a thread.
/// Throws when something cannot be run.
void measureHalfHeads(const QString& program, Report& report);

} // namespace bench
