#pragma once

#include "platform/Tcp.h"

#include <array>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>

namespace ferrylane {

/// How many connections may be open at once that do nothing for anybody but a slow or hostile
/// client: those whose request head is still to come (there is no time limit on it), and those that
/// have been answered and wait for the client to close.
struct ConnectionLimits {
    std::size_t incompleteHeads = 0;
    std::size_t closing = 0;

    /// What a process with so many descriptors can spare: at least 8 and 4, at most 512 and 256. A
    /// head takes up to 64 KiB of memory.
    [[nodiscard]] static ConnectionLimits forDescriptors(unsigned descriptors);
};

/// The connections that the service is serving. Safe from any thread.
class OpenConnections : public std::enable_shared_from_this<OpenConnections> {
    enum class Stage { head, serving, uploading, closing, cancelled };
    struct Entry {
        std::shared_ptr<platform::TcpConnection> connection;
        Stage stage = Stage::head;
    };
    using Entries = std::list<Entry>;

public:
    explicit OpenConnections(ConnectionLimits limits) : limits_(limits) {}

    /// Keeps a connection on the list for as long as it lives. It is moved along with the
    /// connection's handlers, so that it goes when the last of them has.
    class Registration {
    public:
        ~Registration();
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;

        /// The request head is complete.
        void headComplete() { enter(Stage::serving); }
        /// The connection uploads a file.
        void uploading() { enter(Stage::uploading); }
        /// The connection gets its answer and is closed. Beyond the limit the one that has been
        /// closing longest is cancelled.
        void closing();

    private:
        friend class OpenConnections;
        Registration(std::shared_ptr<OpenConnections> owner, Entries::iterator entry)
            : owner_(std::move(owner)), entry_(entry)
        {
        }
        void enter(Stage stage);

        std::shared_ptr<OpenConnections> owner_;
        Entries::iterator entry_;
    };

    /// Adds a connection whose head is still to come. Beyond the limit the oldest such connection
    /// is cancelled.
    [[nodiscard]] std::unique_ptr<Registration> add(
        std::shared_ptr<platform::TcpConnection> connection);

    void cancelIncompleteHeads();
    /// Cancels all but those that are being closed, which takes a second at most, and an upload,
    /// which is cancelled by way of its admission.
    void cancelAll();
    /// Returns once no connection is on the list. Not to be called from a connection's handler.
    void waitUntilNone();

private:
    [[nodiscard]] Entries& entriesIn(Stage stage)
    {
        return entries_[static_cast<std::size_t>(stage)];
    }
    void enter(Entries::iterator entry, Stage stage);
    void cancelOldest(Stage stage);
    void cancelThoseIn(Stage stage);
    void remove(Entries::iterator entry);

    const ConnectionLimits limits_;
    std::mutex mutex_;
    std::condition_variable removed_;
    std::array<Entries, 5> entries_; ///< by stage; those that entered it first come first
};

} // namespace ferrylane
