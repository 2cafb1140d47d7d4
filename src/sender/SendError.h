#pragma once

#include <QString>

#include <exception>
#include <system_error>
#include <utility>

namespace ferrylane {

/// Why a send ended early: a code and a text for the user. Inside a send it is thrown.
class SendError final : public std::exception {
public:
    enum class Domain {
        ferrylane, ///< `code` is one of SendError::Code or the phone's HTTP status
        network,   ///< `code` is the system's
        file       ///< the file could not be read, or changed while it was; `code` is 0
    };
    /// Fixed. Those below are HTTP statuses.
    enum Code {
        invalidKey = 2430,
        stoppedByUser = 2431,
        invalidAddress = 2432,
        noFileSize = 2433,
        noNonce = 2434,
        connectTimedOut = 2435,
        tooManyRecords = 2436,
        invalidResponse = 2438,
    };

    SendError(Domain domain, int code, QString description)
        : domain_(domain)
        , code_(code)
        , description_(std::move(description))
        , utf8_(description_.toUtf8())
    {
    }
    SendError(int code, QString description)
        : SendError(Domain::ferrylane, code, std::move(description))
    {
    }

    [[nodiscard]] static SendError stopped()
    {
        return {stoppedByUser, QStringLiteral("Transfer stopped.")};
    }
    [[nodiscard]] static SendError network(const std::error_code& error)
    {
        return {Domain::network, error.value(), QString::fromStdString(error.message())};
    }

    [[nodiscard]] Domain domain() const { return domain_; }
    [[nodiscard]] int code() const { return code_; }
    [[nodiscard]] const QString& description() const { return description_; }
    [[nodiscard]] const char* what() const noexcept override { return utf8_.constData(); }

    [[nodiscard]] bool isStopped() const
    {
        return domain_ == Domain::ferrylane && code_ == stoppedByUser;
    }

private:
    Domain domain_;
    int code_;
    QString description_;
    QByteArray utf8_;
};

} // namespace ferrylane
