#pragma once

#include "support/ChildProcess.h"

namespace support {

/// Starts a program and waits until it says `ready` in its output or error file. Throws
/// std::runtime_error, with what it has written, when it does not.
void startDaemon(ChildProcess& process, const Command& command, const QByteArray& ready);

} // namespace support
