#include "platform/ThreadName.h"
#include "platform/linux/AsioConnection.h"
#include "platform/linux/AsioListener.h"

#include <asio/executor_work_guard.hpp>

#include <QtGlobal>

#include <algorithm>
#include <exception>
#include <thread>
#include <vector>

namespace platform {

namespace {

/// Two threads at least, so that an upload that waits for the disk leaves one to the others.
unsigned threadCount()
{
    return std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
}

class AsioNetwork final : public TcpNetwork {
public:
    explicit AsioNetwork(const std::string& label) : work_(context_.get_executor())
    {
        try {
            for (unsigned i = 0; i < threadCount(); ++i) {
                threads_.emplace_back([this, label] {
                    setCurrentThreadName(label);
                    run();
                });
            }
        } catch (...) {
            end();
            throw;
        }
    }

    ~AsioNetwork() override { end(); }

    std::unique_ptr<TcpListener> listener(std::uint16_t port) override
    {
        return std::make_unique<AsioListener>(context_, port);
    }

    std::shared_ptr<TcpConnection> connection(const QString& host, std::uint16_t port) override
    {
        return std::make_shared<AsioConnection>(context_, host, port);
    }

private:
    void end()
    {
        context_.stop();
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }

    void run()
    {
        while (true) {
            try {
                context_.run();
                return;
            } catch (const std::exception& error) {
                // The handler is gone, and with it what it held; the others are served on.
                qCritical("A connection was dropped: %s", error.what());
            }
        }
    }

    asio::io_context context_;
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    std::vector<std::thread> threads_;
};

} // namespace

std::unique_ptr<TcpNetwork> TcpNetwork::create(const std::string& label)
{
    return std::make_unique<AsioNetwork>(label);
}

} // namespace platform
