#pragma once

#include "core/Service.h"
#include "platform/Interface.h"
#include "platform/NotificationCenter.h"
#include "platform/PortHolder.h"
#include "platform/Tcp.h"
#include "receiver/ReceiverContext.h"

#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <system_error>

namespace ferrylane {

/// The receiver service: makes this computer reachable by phones and receives their files. It owns
/// the receiver key, the TCP listener, and the bookkeeping of what is being transferred; it drives
/// the answering of discovery requests and the announcing of the service.
///
/// There is one for the life of the process, running from its creation on. Every operation is
/// called on the main thread; files are received on the connections' queues.
///
/// A port that is lost (to another program, after the network has changed) is tried again every ten
/// seconds while the service is on; discovery requests are not answered meanwhile.
class HTTPServer {
public:
    /// Answers phones that look for computers. start() throws std::system_error.
    class DiscoveryResponder : public platform::Interface {
    public:
        virtual void start() = 0;
        virtual void stop() = 0;
        /// While not visible it runs on and stays silent.
        virtual void setVisible(bool visible) = 0;
    };

    /// Announces the service on the local network under the device's name. Called on the main
    /// thread; returns at once.
    class Advertiser : public platform::Interface {
    public:
        virtual void advertise(const QString& name) = 0;
        virtual void withdraw() = 0;
    };

    /// Told on the main thread, after each try, whether the service's socket of that kind is open
    /// (no error) or could not be opened. Not told of what the constructor throws.
    using SocketHandler = std::function<void(platform::Transport, const std::error_code&)>;

    /// All references must outlive the server.
    struct Collaborators {
        platform::TcpNetwork& network;
        platform::SerialQueue& mainQueue;
        platform::NotificationCenter& notifications;
        const platform::Clock& clock;
        DiscoveryResponder& responder;
        Advertiser& advertiser;
        SocketHandler onSocket = [](platform::Transport, const std::error_code&) {};
        UploadTimes times = {};
    };

    /// Loads or creates the receiver key and starts the service. A port that is in use is logged
    /// when the listener finds it so; std::system_error is thrown when discovery cannot be
    /// answered.
    explicit HTTPServer(Collaborators collaborators, std::uint16_t tcpPort = port);
    /// As end().
    ~HTTPServer();
    HTTPServer(const HTTPServer&) = delete;
    HTTPServer& operator=(const HTTPServer&) = delete;

    /// Ends everything for good and waits for it. An upload is cut off, unless all of its file has
    /// come: that is stored, however slow the disk is, answered and told of before this returns.
    /// Nothing is told afterwards.
    void end();

    void startService();
    /// Cuts an upload off, and everybody who has not sent a whole request yet.
    void stopService();
    /// Does nothing when all of the file has come and is being stored.
    void cancelActiveTransfer();
    /// Closes the sockets and opens them again 0.75 seconds later. An upload goes on.
    void rebindAfterNetworkChange(const QString& reason);
    /// Announces the service under a device name that has changed.
    void refreshAdvertisement();
    void setVisible(bool visible);
    /// While busy, uploads are refused.
    void setOutboundBusy(bool busy);

    [[nodiscard]] bool isVisible() const { return isVisible_; }
    [[nodiscard]] bool serviceRunning() const { return serviceRunning_; }
    /// The receiver key as unpadded base64url, 43 characters. A credential: for the pairing link.
    [[nodiscard]] const QString& sessionKeyB64() const { return sessionKeyB64_; }
    /// In a handler of "FerrylaneReceived": the file that the notification is about.
    [[nodiscard]] const std::optional<ReceivedFile>& lastReceivedFile() const
    {
        return context_->reports->lastReceivedFile();
    }

private:
    void startListener();
    void stopListener();
    void openSockets();
    /// Logs a failure with these words before it; returns whether all went well.
    bool openSocketsOrLog(const QString& failure);
    void closeSockets();
    /// Runs `task` later, in place of what was to run later before.
    void later(platform::Duration delay, void (HTTPServer::*task)());
    void reopenAfterNetworkChange();
    void retryPort();
    void retryResponder();
    /// On the listener's queue.
    void logListener(platform::TcpListener::State state, const std::error_code& error);
    void removeStalePartialsOnce();
    /// On the main thread.
    void listenerChanged(platform::TcpListener::State state, const std::error_code& error);

    Collaborators with_;
    std::uint16_t tcpPort_;
    std::shared_ptr<ReceiverContext> context_;
    QString sessionKeyB64_;
    /// Shared for the sake of those that ask on the main queue whether it is still the listener.
    std::shared_ptr<platform::TcpListener> listener_;
    std::shared_ptr<platform::DelayedTask> pendingRebind_;
    std::atomic<bool> isVisible_ = true;
    bool serviceRunning_ = true;
    bool isPortLost_ = false;
    std::error_code loggedError_;       ///< of opening the port; on the listener's queue
    bool stalePartialsRemoved_ = false; ///< on the listener's queue
};

} // namespace ferrylane
