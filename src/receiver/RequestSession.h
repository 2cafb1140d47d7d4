#pragma once

#include "receiver/ReceiverContext.h"

#include <memory>

namespace ferrylane {

/// Serves one accepted connection and its one request: reads the head, then answers or hands the
/// connection over to the thread of uploads. Returns at once; the rest runs on the connection's
/// queue.
void serveRequest(
    std::shared_ptr<ReceiverContext> context, std::shared_ptr<platform::TcpConnection> connection);

} // namespace ferrylane
