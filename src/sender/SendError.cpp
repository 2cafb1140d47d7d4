#include "sender/SendError.h"

#include <utility>

namespace ferrylane {

SendError::SendError(Domain domain, int code, QString description)
    : domain_(domain)
    , code_(code)
    , description_(std::move(description))
    , utf8_(description_.toUtf8())
{
}

SendError SendError::network(const std::error_code& error)
{
    return {Domain::network, error.value(), QString::fromStdString(error.message())};
}

bool SendError::isStopped() const
{
    return domain_ == Domain::ferrylane && code_ == send_errors::stoppedCode;
}

namespace send_errors {

namespace {

SendError own(int code, const QString& description)
{
    return {SendError::Domain::ferrylane, code, description};
}

} // namespace

SendError invalidKey()
{
    return own(2430, QStringLiteral("Paired receiver key is invalid."));
}

SendError stopped()
{
    return own(stoppedCode, QStringLiteral("Transfer stopped."));
}

SendError invalidAddress()
{
    return own(2432, QStringLiteral("Paired phone address is invalid."));
}

SendError noFileSize()
{
    return own(2433, QStringLiteral("Could not read file size."));
}

SendError noNonce()
{
    return own(2434, QStringLiteral("Could not create transfer nonce."));
}

SendError connectTimedOut(const QString& targetName, const QString& host, std::uint16_t hostPort)
{
    return own(2435,
        QStringLiteral("Timed out connecting to %1 at %2:%3.")
            .arg(targetName, host, QString::number(hostPort)));
}

SendError tooManyRecords()
{
    return own(2436, QStringLiteral("File has too many transfer records."));
}

SendError invalidResponse()
{
    return own(2438, QStringLiteral("Invalid HTTP response from phone."));
}

SendError phoneReturned(int status, const QString& body)
{
    const QString text = QStringLiteral("Phone returned %1").arg(status);
    return own(status, body.isEmpty() ? text : text + QStringLiteral(": ") + body);
}

} // namespace send_errors

} // namespace ferrylane
