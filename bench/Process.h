#pragma once

#include <QtGlobal>

namespace bench {

/// What the system counts for one process (proc(5)). Everything here throws std::runtime_error when
/// the process is gone.
class Process {
public:
    struct ProcessorTime {
        double user;   ///< seconds
        double system; ///< seconds

        [[nodiscard]] ProcessorTime operator-(const ProcessorTime& earlier) const
        {
            return {user - earlier.user, system - earlier.system};
        }
    };

    explicit Process(qint64 id) : id_(id) {}

    /// In steps of 10 ms.
    [[nodiscard]] ProcessorTime processorTime() const;
    /// Of the calling process, in steps of a microsecond.
    [[nodiscard]] static ProcessorTime ownProcessorTime();
    /// MiB in memory now.
    [[nodiscard]] double memory() const { return mebibytes("VmRSS"); }
    /// Most MiB in memory since the last resetPeakMemory().
    [[nodiscard]] double peakMemory() const { return mebibytes("VmHWM"); }
    void resetPeakMemory() const;
    [[nodiscard]] int threads() const;

private:
    [[nodiscard]] qint64 status(const char* name) const;
    [[nodiscard]] double mebibytes(const char* name) const;

    qint64 id_;
};

} // namespace bench
