#pragma once

#include "platform/Tcp.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <asio/strand.hpp>

#include <fcntl.h>

namespace platform {

/// Programs that this one starts do not inherit the socket, as they do by Asio's default.
template <typename Socket> void keepFromOtherPrograms(Socket& socket)
{
    static_cast<void>(fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC));
}

using Strand = asio::strand<asio::io_context::executor_type>;

/// Its members are touched on the strand only.
struct TcpConnection::Socket {
    Socket(Strand where, asio::ip::tcp::socket connected)
        : strand(std::move(where)), tcp(std::move(connected))
    {
    }

    Strand strand;
    asio::ip::tcp::socket tcp; ///< made on the strand, by an acceptor that sends without delay
    asio::steady_timer closing{strand};
    asio::ip::tcp protocol = asio::ip::tcp::v6();
};

} // namespace platform
