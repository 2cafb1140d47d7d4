#pragma once

#include <QString>

#include <exception>

namespace ferrylane::phone {

/// How the program ends, for scripts to tell apart. The help lists them.
enum class ExitCode {
    ok = 0,
    usage = 1,
    noConnection = 2,
    notPaired = 3,
    busy = 4,
    refused = 5,
    localFile = 6,
};

/// Ends the command that is running: what the user is told, and the exit code.
class Failure final : public std::exception {
public:
    Failure(ExitCode code, const QString& message) : code_(code), message_(message.toUtf8()) {}

    [[nodiscard]] ExitCode code() const { return code_; }
    /// UTF-8, without a line break at its end.
    [[nodiscard]] const char* what() const noexcept override { return message_.constData(); }

private:
    ExitCode code_;
    QByteArray message_;
};

} // namespace ferrylane::phone
