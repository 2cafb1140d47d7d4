#pragma once

#include "phone/Arguments.h"
#include "phone/PairingLink.h"
#include "platform/Clock.h"
#include "platform/Tcp.h"

namespace ferrylane::phone {

/// Uploads the files to the receiver behind `link`. Throws Failure.
void upload(const UploadArguments& arguments, const PairingLink& link,
    platform::TcpNetwork& network, const platform::Clock& clock);

} // namespace ferrylane::phone
