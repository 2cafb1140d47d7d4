#pragma once

#include "phone/Arguments.h"
#include "platform/Clock.h"
#include "platform/Tcp.h"

namespace ferrylane::phone {

/// Plays a phone that receives, until it is interrupted. Throws Failure.
void receive(
    const ReceiveArguments& arguments, platform::TcpNetwork& network, const platform::Clock& clock);

} // namespace ferrylane::phone
