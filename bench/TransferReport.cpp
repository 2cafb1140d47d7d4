#include "bench/TransferReport.h"

#include "bench/Statistics.h"

namespace bench {

namespace {

/// A figure without its value.
struct Row {
    const char* key;
    const char* label;
    const char* unit;
    int decimals;
};

Figure figure(const Row& row, double value, const QString& prefix = {})
{
    return {prefix + QString::fromLatin1(row.key), QString::fromLatin1(row.label), value,
        QString::fromLatin1(row.unit), row.decimals};
}

} // namespace

TransferFigures transferFigures(qint64 bytes, double seconds, const Process::ProcessorTime& spent)
{
    const auto count = static_cast<double>(bytes);
    const double gigabytes = count / bytesPerGigabyte;
    return {count / bytesPerMegabyte / seconds, spent.user / gigabytes, spent.system / gigabytes};
}

void reportCrypto(const std::vector<CryptoSpeed>& runs, const QString& cipherLabel, Report& report)
{
    report.beginSection(QStringLiteral("Cryptography of this machine, pieces of 1 MiB"));
    const auto cipherSpeed = [](const CryptoSpeed& run) { return run.cipher.megabytesPerSecond; };
    const auto hashSpeed = [](const CryptoSpeed& run) { return run.hashing.megabytesPerSecond; };
    report.add({QStringLiteral("gcm_mb_per_s"), cipherLabel, medianOf(runs, cipherSpeed),
        QStringLiteral("MB/s"), 0});
    report.add(figure({"sha256_mb_per_s", "SHA-256", "MB/s", 0}, medianOf(runs, hashSpeed)));
    report.add(figure({"serial_limit_mb_per_s", "one after the other", "MB/s", 0},
        medianOf(runs, &CryptoSpeed::serialLimit)));
    report.add(figure({"serial_cpu_s_per_gb", "processor time of both", "s/GB", 3},
        medianOf(runs, &CryptoSpeed::serialCost)));
}

void reportTransfers(
    const std::vector<TransferFigures>& runs, const QString& prefix, Report& report)
{
    const auto add = [&](const Row& row, double TransferFigures::*value) {
        report.add(figure(row, medianOf(runs, value), prefix));
    };
    add({"mb_per_s", "throughput", "MB/s", 0}, &TransferFigures::megabytesPerSecond);
    add({"user_cpu_s_per_gb", "user processor time", "s/GB", 3},
        &TransferFigures::userSecondsPerGigabyte);
    add({"system_cpu_s_per_gb", "system processor time", "s/GB", 3},
        &TransferFigures::systemSecondsPerGigabyte);
}

void reportCryptoRatios(const std::vector<CryptoSpeed>& crypto,
    const std::vector<TransferFigures>& transfers, Report& report)
{
    std::vector<double> costs;
    std::vector<double> speeds;
    for (std::size_t i = 0; i < transfers.size(); ++i) {
        costs.push_back(transfers[i].userSecondsPerGigabyte / crypto[i].serialCost());
        speeds.push_back(transfers[i].megabytesPerSecond / crypto[i].serialLimit());
    }
    report.add(
        {QStringLiteral("user_cpu_ratio"), QStringLiteral("user processor time / cryptography"),
            median(costs), {}, 3, Target{Target::Bound::atMost, 1.15}});
    report.add(
        {QStringLiteral("throughput_ratio"), QStringLiteral("throughput / serial cryptography"),
            median(speeds), {}, 3, Target{Target::Bound::atLeast, 0.8}});
}

} // namespace bench
