#pragma once

#include "phone/Arguments.h"
#include "platform/Clock.h"
#include "platform/Tcp.h"

namespace ferrylane::phone {

/// Does what the command line asks for and prints the outcome. Throws Failure. Both references are
/// used during the call only.
void run(const Arguments& arguments, platform::TcpNetwork& network, const platform::Clock& clock);

} // namespace ferrylane::phone
