#pragma once

#include "phone/Arguments.h"
#include "phone/PairingLink.h"
#include "platform/Clock.h"
#include "platform/Tcp.h"

// The commands print their outcome and throw Failure.
namespace ferrylane::phone {

/// Uploads the files to the receiver behind `link`.
void upload(const UploadArguments& arguments, const PairingLink& link);

/// Plays a phone that receives, until it is interrupted.
void receive(
    const ReceiveArguments& arguments, platform::TcpNetwork& network, const platform::Clock& clock);

/// Prints the devices on the local network; fails (noConnection) when there is none.
void discover(const DiscoverArguments& arguments, const platform::Clock& clock);

} // namespace ferrylane::phone
