#pragma once

#include "platform/Tcp.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include <mutex>
#include <optional>

namespace platform {

/// TcpListener over Asio.
class AsioListener final : public TcpListener {
public:
    AsioListener(asio::io_context& context, std::uint16_t port);
    ~AsioListener() override;

    void start(StateHandler onState, ConnectionHandler onConnection) override;
    void cancel() override;

private:
    class Acceptor;
    // Shared with the operations under way, which find it closed when they end.
    std::shared_ptr<Acceptor> acceptor_;
};

} // namespace platform
