#pragma once

#include "phone/HttpResponse.h"
#include "phone/PairingLink.h"
#include "platform/Tcp.h"

#include <memory>

namespace ferrylane::phone {

/// One request and its answer over a connection of its own, for code that waits. Used by one
/// thread.
///
/// The answer is listened for from the start: a computer that refuses an upload does so long before
/// the last byte has been sent, and then no longer takes the rest.
class HttpExchange {
public:
    /// Connects, for 15 seconds at most. Throws Failure (noConnection).
    HttpExchange(platform::TcpNetwork& network, const PairingLink& link);
    /// Closes the connection, whatever is under way.
    ~HttpExchange();
    HttpExchange(const HttpExchange&) = delete;
    HttpExchange& operator=(const HttpExchange&) = delete;

    /// Sends the next bytes of the request and waits until the system has taken them. False when
    /// nothing more need be sent: the answer is there, or the connection has failed.
    [[nodiscard]] bool send(platform::ByteView bytes);
    /// Waits for the answer, as long as it takes. Throws Failure (noConnection) when the connection
    /// ends without one.
    [[nodiscard]] HttpResponse answer();

private:
    struct State;

    // Shared with the connection's handlers, which may run after this has gone.
    std::shared_ptr<State> state_;
};

/// Sends a GET request without a body and returns the answer. `headers` are lines that end in CR
/// LF.
[[nodiscard]] HttpResponse get(platform::TcpNetwork& network, const PairingLink& link,
    const QByteArray& target, const QByteArray& headers = {});

} // namespace ferrylane::phone
