#include "bench/Throughput.h"

#include "bench/CryptoSpeed.h"
#include "bench/Exchange.h"
#include "bench/PlainReceiver.h"
#include "bench/ReceiveFolder.h"
#include "bench/SealedUpload.h"
#include "bench/Service.h"
#include "bench/Statistics.h"
#include "core/Service.h"

#include <cstdio>

namespace bench {

namespace {

/// What one upload cost its receiver.
struct UploadFigures {
    double megabytesPerSecond;
    double userSecondsPerGigabyte;
    double systemSecondsPerGigabyte;
};

struct Run {
    CryptoSpeed crypto;
    UploadFigures plain;
    UploadFigures service;
    double peakMemory; ///< of the service, MiB
};

template <typename Value> double medianOf(const std::vector<Run>& runs, const Value& value)
{
    std::vector<double> values;
    values.reserve(runs.size());
    for (const Run& run : runs) {
        values.push_back(value(run));
    }
    return median(values);
}

UploadFigures upload(const SealedUpload& file, std::uint16_t port, const Process& receiver)
{
    const auto before = receiver.processorTime();
    const double seconds = secondsToAnswer(port, file.request(), storedAnswer());
    const auto after = receiver.processorTime();
    const auto bytes = static_cast<double>(file.size());
    const double gigabytes = bytes / bytesPerGigabyte;
    return {bytes / bytesPerMegabyte / seconds, (after.user - before.user) / gigabytes,
        (after.system - before.system) / gigabytes};
}

/// The three receivers of the same bytes.
class Contest {
public:
    explicit Contest(const ThroughputPlan& plan)
        : plain_(folder_.path() + QStringLiteral("/plain"))
        , service_(plan.program, folder_.path())
        , idleMemory_(service_.process().memory())
        , file_(service_.key(), QStringLiteral("film.mp4"), plan.size)
    {
    }

    [[nodiscard]] Run run()
    {
        Run run{};
        run.crypto = measureCrypto();
        run.plain = upload(file_, plain_.port(), Process(plain_.processId()));
        folder_.clear(1, file_.size());

        service_.process().resetPeakMemory();
        run.service = upload(file_, ferrylane::port, service_.process());
        run.peakMemory = service_.process().peakMemory();
        folder_.clear(1, file_.size());
        return run;
    }

    /// Of the service before its first upload, MiB.
    [[nodiscard]] double idleMemory() const { return idleMemory_; }

private:
    ReceiveFolder folder_ = ReceiveFolder::inMemory();
    PlainReceiver plain_;
    Service service_;
    double idleMemory_;
    SealedUpload file_;
};

void addCrypto(const std::vector<Run>& runs, Report& report)
{
    const auto add = [&](const char* key, const char* label, const char* unit, int decimals,
                         const auto& value) {
        report.add({QString::fromLatin1(key), QString::fromLatin1(label), medianOf(runs, value),
            QString::fromLatin1(unit), decimals});
    };
    report.beginSection(QStringLiteral("Cryptography of this machine, pieces of 1 MiB"));
    add("gcm_mb_per_s", "AES-256-GCM open", "MB/s", 0,
        [](const Run& run) { return run.crypto.opening.megabytesPerSecond; });
    add("sha256_mb_per_s", "SHA-256", "MB/s", 0,
        [](const Run& run) { return run.crypto.hashing.megabytesPerSecond; });
    add("serial_limit_mb_per_s", "one after the other", "MB/s", 0,
        [](const Run& run) { return run.crypto.serialLimit(); });
    add("serial_cpu_s_per_gb", "processor time of both", "s/GB", 3,
        [](const Run& run) { return run.crypto.serialCost(); });
}

void addUpload(
    const std::vector<Run>& runs, UploadFigures Run::*which, const QString& prefix, Report& report)
{
    const auto add = [&](const char* key, const char* label, const char* unit, int decimals,
                         double UploadFigures::*value) {
        report.add({prefix + QString::fromLatin1(key), QString::fromLatin1(label),
            medianOf(runs, [&](const Run& run) { return run.*which.*value; }),
            QString::fromLatin1(unit), decimals});
    };
    add("mb_per_s", "throughput", "MB/s", 0, &UploadFigures::megabytesPerSecond);
    add("user_cpu_s_per_gb", "user processor time", "s/GB", 3,
        &UploadFigures::userSecondsPerGigabyte);
    add("system_cpu_s_per_gb", "system processor time", "s/GB", 3,
        &UploadFigures::systemSecondsPerGigabyte);
}

void addRatios(const std::vector<Run>& runs, Report& report)
{
    report.add(
        {QStringLiteral("user_cpu_ratio"), QStringLiteral("user processor time / cryptography"),
            medianOf(runs,
                [](const Run& run) {
                    return run.service.userSecondsPerGigabyte / run.crypto.serialCost();
                }),
            {}, 3, Target{Target::Bound::atMost, 1.15}});
    report.add(
        {QStringLiteral("throughput_ratio"), QStringLiteral("throughput / serial cryptography"),
            medianOf(runs,
                [](const Run& run) {
                    return run.service.megabytesPerSecond / run.crypto.serialLimit();
                }),
            {}, 3, Target{Target::Bound::atLeast, 0.8}});
    report.add({QStringLiteral("plain_ratio"), QStringLiteral("throughput / plain receiver"),
        medianOf(runs,
            [](const Run& run) {
                return run.service.megabytesPerSecond / run.plain.megabytesPerSecond;
            }),
        {}, 3});
}

void addMemory(const std::vector<Run>& runs, double idleMemory, Report& report)
{
    std::vector<double> peaks;
    peaks.reserve(runs.size());
    for (const Run& run : runs) {
        peaks.push_back(run.peakMemory);
    }
    report.add({QStringLiteral("idle_memory_mib"), QStringLiteral("memory before the first upload"),
        idleMemory, QStringLiteral("MiB"), 1});
    report.add({QStringLiteral("peak_memory_above_idle_mib"),
        QStringLiteral("highest memory beyond that"), maximum(peaks) - idleMemory,
        QStringLiteral("MiB"), 1, Target{Target::Bound::atMost, 24}});
}

} // namespace

void measureThroughput(const ThroughputPlan& plan, Report& report)
{
    std::fprintf(stderr, "Sealing an upload\n");
    Contest contest(plan);
    // Memory and files that are touched for the first time are slow on virtual machines.
    std::fprintf(stderr, "Warming up\n");
    static_cast<void>(contest.run());

    std::vector<Run> runs;
    for (int i = 1; i <= plan.runs; ++i) {
        std::fprintf(stderr, "Run %d of %d\n", i, plan.runs);
        runs.push_back(contest.run());
    }
    addCrypto(runs, report);
    report.beginSection(QStringLiteral("Plain receiver, no cryptography, folder in memory"));
    addUpload(runs, &Run::plain, QStringLiteral("plain_"), report);
    report.beginSection(QStringLiteral("Service, folder in memory"));
    addUpload(runs, &Run::service, QStringLiteral("service_"), report);
    addRatios(runs, report);
    addMemory(runs, contest.idleMemory(), report);
}

} // namespace bench
