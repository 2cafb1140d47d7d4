#include "bench/SendThroughput.h"

#include "bench/DrainingPhone.h"
#include "bench/ReceiveFolder.h"
#include "bench/Repetition.h"
#include "bench/SenderProcess.h"
#include "bench/SourceFiles.h"
#include "bench/Statistics.h"
#include "bench/TransferReport.h"

#include <cstdio>

namespace bench {

namespace {

struct Runs {
    std::vector<CryptoSpeed> crypto;
    std::vector<TransferFigures> sender;
    double idleMemory = 0;          ///< of the sender before its first send, MiB
    std::vector<double> peakMemory; ///< of the sender, MiB
};

/// A file in memory, a sender and a phone.
class Journey {
public:
    explicit Journey(qint64 size)
        : size_(size)
        , path_(folder_.path() + QStringLiteral("/film.mp4"))
        , sender_(phone_.baseURL())
    {
        writeSourceFile(path_, size);
    }

    void run(Runs& runs)
    {
        runs.crypto.push_back(measureCrypto(CipherUse::seal));
        const SendCost cost = sender_.send(path_);
        runs.sender.push_back(transferFigures(size_, cost.seconds, cost.processorTime));
        runs.idleMemory = cost.idleMemory;
        runs.peakMemory.push_back(cost.peakMemory);
    }

private:
    qint64 size_;
    ReceiveFolder folder_ = ReceiveFolder::inMemory();
    QString path_;
    DrainingPhone phone_;
    SenderProcess sender_;
};

void addMemory(const Runs& runs, Report& report)
{
    report.add({QStringLiteral("idle_memory_mib"), QStringLiteral("memory before the first send"),
        runs.idleMemory, QStringLiteral("MiB"), 1});
    report.add({QStringLiteral("peak_memory_above_idle_mib"),
        QStringLiteral("highest memory beyond that"), maximum(runs.peakMemory) - runs.idleMemory,
        QStringLiteral("MiB"), 1, Target{Target::Bound::atMost, 8}});
}

} // namespace

void measureSendThroughput(const SendThroughputPlan& plan, Report& report)
{
    std::fprintf(stderr, "Writing a file\n");
    Journey journey(plan.size);
    const auto runs = repeat<Runs>(journey, plan.runs);
    reportCrypto(runs.crypto, QStringLiteral("AES-256-GCM seal"), report);
    report.beginSection(QStringLiteral("Sender, file in memory, to a phone that only drains"));
    reportTransfers(runs.sender, QStringLiteral("sender_"), report);
    reportCryptoRatios(runs.crypto, runs.sender, report);
    addMemory(runs, report);
}

} // namespace bench
