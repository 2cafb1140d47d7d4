#pragma once

#include "bench/CryptoSpeed.h"
#include "bench/Process.h"
#include "bench/Report.h"

#include <vector>

namespace bench {

/// What the transfer of a big file cost the process that is measured.
struct TransferFigures {
    double megabytesPerSecond;
    double userSecondsPerGigabyte;
    double systemSecondsPerGigabyte;
};

/// From `seconds` by the clock and the processor time spent.
[[nodiscard]] TransferFigures transferFigures(
    qint64 bytes, double seconds, const Process::ProcessorTime& spent);

// What follows adds the medians of several runs.

/// A section of its own. `cipherLabel` names what the cipher was used for.
void reportCrypto(const std::vector<CryptoSpeed>& runs, const QString& cipherLabel, Report& report);
/// The figures' keys begin with `prefix`.
void reportTransfers(
    const std::vector<TransferFigures>& runs, const QString& prefix, Report& report);
/// Each transfer beside the cryptography of the same run, with what is to be reached.
void reportCryptoRatios(const std::vector<CryptoSpeed>& crypto,
    const std::vector<TransferFigures>& transfers, Report& report);

} // namespace bench
