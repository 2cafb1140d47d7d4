#pragma once

#include "phone/HttpResponse.h"
#include "phone/PairingLink.h"
#include "platform/Tcp.h"

namespace ferrylane::phone {

/// Sends a GET request without a body and returns the answer. `headers` are lines that end in CR
/// LF. Throws Failure (noConnection).
[[nodiscard]] HttpResponse get(platform::TcpNetwork& network, const PairingLink& link,
    const QByteArray& target, const QByteArray& headers = {});

} // namespace ferrylane::phone
