#pragma once

#include "phone/Arguments.h"
#include "platform/Clock.h"

namespace ferrylane::phone {

/// Prints the devices on the local network. Throws Failure (noConnection) when there is none.
void discover(const DiscoverArguments& arguments, const platform::Clock& clock);

} // namespace ferrylane::phone
