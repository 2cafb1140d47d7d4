#pragma once

#include "phone/HttpResponse.h"
#include "phone/PairingLink.h"
#include "phone/SourceFile.h"
#include "platform/Tcp.h"

#include <functional>

namespace ferrylane::phone {

/// Uploads one file and returns the computer's answer, which may come before all has been sent.
/// `progress` is told the number of bytes of the file sent so far. Throws Failure.
[[nodiscard]] HttpResponse uploadFile(platform::TcpNetwork& network, const PairingLink& link,
    SourceFile& file, const QString& senderName, const std::function<void(qint64)>& progress);

} // namespace ferrylane::phone
