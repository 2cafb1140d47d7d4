#pragma once

#include "platform/Tcp.h"

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>

namespace ferrylane {

/// Most connections whose request head is not complete. There is no time limit on a head, so that
/// many clients that never finish theirs would otherwise take every descriptor.
constexpr std::size_t maximumIncompleteHeads = 256;

/// The connections that the service is serving. Safe from any thread.
class OpenConnections : public std::enable_shared_from_this<OpenConnections> {
    struct Entry {
        std::shared_ptr<platform::TcpConnection> connection;
        bool isSettled = false;
    };
    using Entries = std::list<Entry>;

public:
    /// Keeps a connection on the list for as long as it lives. It is moved along with the
    /// connection's handlers, so that it goes when the last of them has.
    class Registration {
    public:
        ~Registration();
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;

        /// The request head is complete: the connection is no longer one to drop for newer ones.
        void headComplete();

    private:
        friend class OpenConnections;
        Registration(std::shared_ptr<OpenConnections> owner, Entries::iterator entry)
            : owner_(std::move(owner)), entry_(entry)
        {
        }

        std::shared_ptr<OpenConnections> owner_;
        Entries::iterator entry_;
    };

    /// Adds a connection whose head is still to come. Beyond the limit the oldest such connection
    /// is cancelled.
    [[nodiscard]] std::unique_ptr<Registration> add(
        std::shared_ptr<platform::TcpConnection> connection);

    void cancelIncompleteHeads();
    void cancelAll();
    /// Returns once no connection is on the list. Not to be called from a connection's handler.
    void waitUntilNone();

private:
    void settle(Entries::iterator entry);
    void remove(Entries::iterator entry);

    std::mutex mutex_;
    std::condition_variable removed_;
    Entries incomplete_; ///< head still to come, oldest first
    Entries settled_;    ///< head complete, or cancelled
};

} // namespace ferrylane
