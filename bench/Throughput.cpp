#include "bench/Throughput.h"

#include "bench/Exchange.h"
#include "bench/PlainReceiver.h"
#include "bench/ReceiveFolder.h"
#include "bench/Repetition.h"
#include "bench/SealedUpload.h"
#include "bench/Service.h"
#include "bench/Statistics.h"
#include "bench/TransferReport.h"
#include "core/Service.h"

#include <cstdio>

namespace bench {

namespace {

struct Runs {
    std::vector<CryptoSpeed> crypto;
    std::vector<TransferFigures> plain;
    std::vector<TransferFigures> service;
    std::vector<double> peakMemory; ///< of the service, MiB
};

TransferFigures upload(const SealedUpload& file, std::uint16_t port, const Process& receiver)
{
    const auto before = receiver.processorTime();
    const double seconds = secondsToAnswer(port, file.request(), storedAnswer());
    return transferFigures(file.size(), seconds, receiver.processorTime() - before);
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

    void run(Runs& runs)
    {
        runs.crypto.push_back(measureCrypto(CipherUse::open));
        runs.plain.push_back(upload(file_, plain_.port(), Process(plain_.processId())));
        folder_.clear(1, file_.size());

        service_.process().resetPeakMemory();
        runs.service.push_back(upload(file_, ferrylane::port, service_.process()));
        runs.peakMemory.push_back(service_.process().peakMemory());
        folder_.clear(1, file_.size());
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

void addPlainRatio(const Runs& runs, Report& report)
{
    std::vector<double> ratios;
    for (std::size_t i = 0; i < runs.service.size(); ++i) {
        ratios.push_back(runs.service[i].megabytesPerSecond / runs.plain[i].megabytesPerSecond);
    }
    report.add({QStringLiteral("plain_ratio"), QStringLiteral("throughput / plain receiver"),
        median(ratios), {}, 3});
}

void addMemory(const Runs& runs, double idleMemory, Report& report)
{
    report.add({QStringLiteral("idle_memory_mib"), QStringLiteral("memory before the first upload"),
        idleMemory, QStringLiteral("MiB"), 1});
    report.add({QStringLiteral("peak_memory_above_idle_mib"),
        QStringLiteral("highest memory beyond that"), maximum(runs.peakMemory) - idleMemory,
        QStringLiteral("MiB"), 1, Target{Target::Bound::atMost, 24}});
}

} // namespace

void measureThroughput(const ThroughputPlan& plan, Report& report)
{
    std::fprintf(stderr, "Sealing an upload\n");
    Contest contest(plan);
    const auto runs = repeat<Runs>(contest, plan.runs);
    reportCrypto(runs.crypto, QStringLiteral("AES-256-GCM open"), report);
    report.beginSection(QStringLiteral("Plain receiver, no cryptography, folder in memory"));
    reportTransfers(runs.plain, QStringLiteral("plain_"), report);
    report.beginSection(QStringLiteral("Service, folder in memory"));
    reportTransfers(runs.service, QStringLiteral("service_"), report);
    reportCryptoRatios(runs.crypto, runs.service, report);
    addPlainRatio(runs, report);
    addMemory(runs, contest.idleMemory(), report);
}

} // namespace bench
