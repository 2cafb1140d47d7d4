#pragma once

#include "bench/Report.h"

namespace bench {

struct SmallUploadsPlan {
    QString program;    ///< path of the service
    QString diskFolder; ///< a folder on a disk
};

/// Measures how long a file of 4 KiB takes from connecting to the answer, where syncing it costs
/// nothing and where it does. Throws when something cannot be run.
void measureSmallUploads(const SmallUploadsPlan& plan, Report& report);

} // namespace bench
