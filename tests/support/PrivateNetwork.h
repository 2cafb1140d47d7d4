#pragma once

namespace support {

/// Puts this process and those that it starts into a network of their own that has nothing but a
/// loopback interface, so that fixed ports never clash between tests that run side by side. Where
/// that is not permitted the process stays where it is; false then. Call it before any thread
/// starts.
bool enterPrivateNetwork();

} // namespace support
