#pragma once

#include "support/ChildProcess.h"
#include "support/PrivateHome.h"

#include <chrono>
#include <optional>

#include <sys/resource.h>

namespace support {

/// Syncing a file or folder takes so long.
struct SlowDisk {
    QString library; ///< the one of BadDisk.h, to be preloaded
    std::chrono::milliseconds syncTime;
};

/// What is scarce for a program.
struct Scarcity {
    std::optional<rlim_t> bytesInFile; ///< writing beyond fails with EFBIG
    std::optional<rlim_t> descriptors;
    /// A file system of 2 MiB of its own at this path; see canMount().
    std::optional<QString> smallDisk;
    std::optional<SlowDisk> slowDisk;
};

/// Whether this process may give a child a file system of its own.
[[nodiscard]] bool canMount();

/// The receiver program, run in a private home. It is killed when this goes.
class ProgramUnderTest {
public:
    /// `home` must outlive this.
    ProgramUnderTest(const QString& program, const PrivateHome& home);
    /// In another environment than the home's, where its windows can be seen, say.
    ProgramUnderTest(
        const QString& program, const PrivateHome& home, QProcessEnvironment environment);

    /// Starts it and waits until its log says that the port is open.
    [[nodiscard]] bool start(const Scarcity& scarcity = {});
    /// Starts it and waits until `text` is in its log.
    [[nodiscard]] bool startUntilLogged(const QByteArray& text, const Scarcity& scarcity = {});

    /// Sends SIGTERM and returns the exit code; none when it does not end by itself in time.
    [[nodiscard]] std::optional<int> terminate();
    /// Sends SIGKILL and waits until it is gone.
    void kill() { process_.kill(); }

    [[nodiscard]] bool isRunning() { return process_.isRunning(); }
    [[nodiscard]] pid_t processId() const { return process_.processId(); }
    /// Processor time so far, user and system.
    [[nodiscard]] std::chrono::milliseconds processorTime() const;

    /// What this run has logged.
    [[nodiscard]] QByteArray log() const { return home_.log().sliced(logStart_); }
    [[nodiscard]] bool waitForLog(const QByteArray& text) const;

private:
    const PrivateHome& home_;
    QString program_;
    QProcessEnvironment environment_;
    ChildProcess process_;
    qsizetype logStart_ = 0;
};

} // namespace support
