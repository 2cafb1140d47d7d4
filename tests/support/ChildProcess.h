#pragma once

#include <QProcessEnvironment>
#include <QStringList>

#include <chrono>
#include <functional>
#include <optional>

#include <sys/types.h>

namespace support {

/// A program to run, and how.
struct Command {
    QString program;
    QStringList arguments{};
    QProcessEnvironment environment{};
    QString outputFile{}; ///< empty: where this process writes
    QString errorFile{};
    /// Runs in the child before the program: no allocation, no locks.
    std::function<void()> beforeProgram{};
};

/// A program that runs as a child of the test; killed when this goes. (QProcess makes its children
/// in a way that the thread sanitizer does not survive.)
class ChildProcess {
public:
    ChildProcess() = default;
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Starts it; not while another runs. A program that cannot be run ends with code 127.
    void start(const Command& command);
    void signal(int number) const;
    /// The exit code; none when it does not end in time, or not by itself.
    std::optional<int> waitForEnd(std::chrono::milliseconds limit);
    void kill();

    [[nodiscard]] bool isRunning();
    [[nodiscard]] pid_t processId() const { return processId_; }

private:
    pid_t processId_ = 0; ///< 0: none that has not been waited for
    int status_ = 0;      ///< of the latest that has been
};

} // namespace support
