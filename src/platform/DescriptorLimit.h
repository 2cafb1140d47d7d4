#pragma once

namespace platform {

/// How many descriptors (files, sockets) this process may have open at once: the soft limit, and
/// never more than 65536, which is enough for everything here.
[[nodiscard]] unsigned descriptorLimit();

/// Raises that limit as far as the system lets this process. Programs that are started from here
/// later have it, too.
void raiseDescriptorLimit();

} // namespace platform
