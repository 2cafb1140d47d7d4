#include "bench/SmallUploads.h"

#include "bench/Exchange.h"
#include "bench/ReceiveFolder.h"
#include "bench/SealedUpload.h"
#include "bench/Service.h"
#include "bench/Statistics.h"
#include "core/Service.h"

#include <cstdio>

namespace bench {

namespace {

constexpr qint64 fileBytes = 4096;
constexpr int warmUpUploads = 30;
constexpr int timedUploads = 300;

/// The milliseconds of each upload.
std::vector<double> uploadMany(const QString& program, const ReceiveFolder& folder)
{
    const Service service(program, folder.path());
    std::vector<double> milliseconds;
    for (int i = 0; i < warmUpUploads + timedUploads; ++i) {
        // A name of its own, so that no time goes into the search for a free one.
        const SealedUpload file(service.key(), QStringLiteral("note-%1.txt").arg(i), fileBytes);
        const double seconds = secondsToAnswer(ferrylane::port, file.request(), storedAnswer());
        if (i >= warmUpUploads) milliseconds.push_back(seconds * 1000);
    }
    folder.clear(warmUpUploads + timedUploads, fileBytes);
    return milliseconds;
}

} // namespace

void measureSmallUploads(const SmallUploadsPlan& plan, Report& report)
{
    std::fprintf(stderr, "Small uploads\n");
    const auto inMemory = uploadMany(plan.program, ReceiveFolder::inMemory());
    const auto onDisk = uploadMany(plan.program, ReceiveFolder::below(plan.diskFolder));

    const QString unit = QStringLiteral("ms");
    report.beginSection(QStringLiteral("Uploads of 4 KiB, from connecting to the answer"));
    report.add(
        {QStringLiteral("small_memory_median_ms"), QStringLiteral("folder in memory, median"),
            median(inMemory), unit, 3, Target{Target::Bound::below, 2}});
    report.add({QStringLiteral("small_memory_p99_ms"),
        QStringLiteral("folder in memory, 99th percentile"), percentile(inMemory, 99), unit, 3});
    report.add({QStringLiteral("small_disk_median_ms"),
        QStringLiteral("folder on disk, synced, median"), median(onDisk), unit, 3});
    report.add({QStringLiteral("small_disk_p99_ms"),
        QStringLiteral("folder on disk, synced, 99th percentile"), percentile(onDisk, 99), unit,
        3});
}

} // namespace bench
