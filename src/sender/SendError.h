#pragma once

#include <QString>

#include <exception>
#include <system_error>

namespace ferrylane {

/// Why a send ended early: a code and a text for the user. Inside a send it is thrown.
class SendError final : public std::exception {
public:
    enum class Domain {
        ferrylane, ///< `code` is one of send_errors or the phone's HTTP status
        network,   ///< `code` is the system's
        file       ///< the file could not be read, or changed while it was; `code` is 0
    };

    SendError(Domain domain, int code, QString description);

    [[nodiscard]] static SendError network(const std::error_code& error);

    [[nodiscard]] Domain domain() const { return domain_; }
    [[nodiscard]] int code() const { return code_; }
    [[nodiscard]] const QString& description() const { return description_; }
    [[nodiscard]] const char* what() const noexcept override { return utf8_.constData(); }

    [[nodiscard]] bool isStopped() const;

private:
    Domain domain_;
    int code_;
    QString description_;
    QByteArray utf8_;
};

/// The errors of sending. Their codes are fixed.
namespace send_errors {

/// The codes below are HTTP statuses.
inline constexpr int firstCode = 2430;
inline constexpr int stoppedCode = 2431;

[[nodiscard]] SendError invalidKey();     // 2430
[[nodiscard]] SendError stopped();        // 2431
[[nodiscard]] SendError invalidAddress(); // 2432
[[nodiscard]] SendError noFileSize();     // 2433
[[nodiscard]] SendError noNonce();        // 2434
[[nodiscard]] SendError connectTimedOut(
    const QString& targetName, const QString& host, std::uint16_t hostPort); // 2435
[[nodiscard]] SendError tooManyRecords();                                    // 2436
[[nodiscard]] SendError invalidResponse();                                   // 2438
/// The code is the status. `body` may be empty.
[[nodiscard]] SendError phoneReturned(int status, const QString& body);

} // namespace send_errors

} // namespace ferrylane
