#pragma once

#include "core/Service.h"
#include "discovery/UdpResponder.h"
#include "platform/DnsSd.h"
#include "platform/PortHolder.h"
#include "platform/Tcp.h"
#include "receiver/ReceiverContext.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <memory>
#include <system_error>

namespace ferrylane {

struct ServiceTimes {
    UploadTimes upload = {};
    /// Long enough for the network's addresses to settle after a change.
    platform::Duration rebindDelay = std::chrono::milliseconds(750);
    /// How often a port that is lost is tried again.
    platform::Duration retryInterval = std::chrono::seconds(10);
};

/// The receiver service: makes this computer reachable by phones and receives their files. It owns
/// the receiver key, the TCP listener, the bookkeeping of what is being transferred, and how the
/// computer shows itself to the network.
///
/// There is one for the life of the process, running from its creation on. Every operation is
/// called on the main thread; files are received on a thread of their own.
///
/// A port that is lost (to another program, after the network has changed) is tried again every ten
/// seconds while the service is on; discovery requests are not answered meanwhile.
class HTTPServer final : public QObject {
    Q_OBJECT

public:
    /// Loads or creates the receiver key and starts the service. A port that is in use is logged
    /// when the listener finds it so; std::system_error is thrown when discovery cannot be
    /// answered. Both references must outlive the server.
    HTTPServer(platform::TcpNetwork& network, const platform::Clock& clock,
        std::uint16_t tcpPort = port, const ServiceTimes& times = {});
    /// As end().
    ~HTTPServer() override;

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

    [[nodiscard]] bool serviceRunning() const { return serviceRunning_; }
    /// The receiver key as unpadded base64url, 43 characters. A credential: for the pairing link.
    [[nodiscard]] const QString& sessionKeyB64() const { return sessionKeyB64_; }
    [[nodiscard]] const UploadReports& uploads() const { return uploads_; }
    /// Knows the name under which DNS-SD shows this service.
    [[nodiscard]] const platform::ServicePublisher& publisher() const { return publisher_; }

Q_SIGNALS:
    /// After each try: the service's socket of that kind is open (no error), or could not be
    /// opened. Not told of what the constructor throws.
    void socketChanged(platform::Transport transport, const std::error_code& error);

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
    /// On the main thread.
    void listenerChanged(platform::TcpListener::State state, const std::error_code& error);

    platform::TcpNetwork& network_;
    const std::uint16_t tcpPort_;
    const ServiceTimes times_;
    platform::ServicePublisher publisher_;
    UdpResponder responder_;
    UploadReports uploads_;
    std::shared_ptr<ReceiverContext> context_;
    QString sessionKeyB64_;
    QTimer pendingTask_; ///< a rebind, or another try
    std::atomic<bool> isVisible_ = true;
    bool serviceRunning_ = true;
    bool isPortLost_ = false;
    std::error_code loggedError_;       ///< of opening the port; on the listener's queue
    bool stalePartialsRemoved_ = false; ///< on the listener's queue
    /// Last, for its queue uses the others. Shared for the sake of those that ask on the main
    /// thread whether it is still the listener.
    std::shared_ptr<platform::TcpListener> listener_;
};

} // namespace ferrylane
