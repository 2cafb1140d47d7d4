#include "receiver/HTTPServer.h"

#include "core/Base64Url.h"
#include "core/DeviceName.h"
#include "core/Log.h"
#include "core/StoragePaths.h"
#include "pairing/ReceiverKeyStore.h"
#include "receiver/PartialFile.h"
#include "receiver/RequestSession.h"

#include <system_error>
#include <utility>

namespace ferrylane {

using State = platform::TcpListener::State;

namespace {

// Long enough for the network's addresses to settle after a change.
constexpr auto rebindDelay = std::chrono::milliseconds(750);
// How often a port that is lost is tried again.
constexpr auto retryInterval = std::chrono::seconds(10);

QString describe(const std::error_code& error)
{
    return QString::fromStdString(error.message());
}

} // namespace

HTTPServer::HTTPServer(Collaborators collaborators, std::uint16_t tcpPort)
    : with_(std::move(collaborators))
    , tcpPort_(tcpPort)
    , context_(std::make_shared<ReceiverContext>(loadOrCreateFerrylaneKey(), with_.mainQueue,
          with_.notifications, with_.clock, with_.times))
    , sessionKeyB64_(base64URLEncode(context_->sessionKey.bytes()))
{
    openSockets();
}

HTTPServer::~HTTPServer()
{
    end();
}

void HTTPServer::end()
{
    serviceRunning_ = false;
    if (pendingRebind_) pendingRebind_->cancel();
    context_->admission.setOpen(false);
    cancelActiveTransfer();
    if (const auto name = context_->admission.storing()) {
        flLog(QStringLiteral("Waiting until “%1” is stored").arg(*name));
    }
    closeSockets();
    context_->connections->cancelAll();
    context_->connections->waitUntilNone();
    context_->reports->deliver();
}

void HTTPServer::startListener()
{
    listener_ = with_.network.listener(tcpPort_);
    const std::weak_ptr weak(listener_);
    listener_->start(
        [this, weak](State state, const std::error_code& error) {
            logListener(state, error);
            with_.mainQueue.async([this, weak, state, error] {
                // Gone with the server, or replaced: then the next listener speaks for itself.
                if (weak.lock()) listenerChanged(state, error);
            });
        },
        [context = context_](std::shared_ptr<platform::TcpConnection> connection) {
            RequestSession::begin(context, std::move(connection));
        });
}

void HTTPServer::stopListener()
{
    if (!listener_) return;
    with_.advertiser.withdraw();
    listener_->cancel();
    listener_ = nullptr;
}

void HTTPServer::openSockets()
{
    isPortLost_ = false;
    startListener();
    with_.responder.start();
}

bool HTTPServer::openSocketsOrLog(const QString& failure)
{
    std::error_code error;
    try {
        openSockets();
    } catch (const std::system_error& thrown) {
        error = thrown.code();
        flLog(failure + describe(error));
        later(retryInterval, &HTTPServer::retryResponder);
    }
    with_.onSocket(platform::Transport::udp, error);
    return !error;
}

void HTTPServer::later(platform::Duration delay, void (HTTPServer::*task)())
{
    if (pendingRebind_) pendingRebind_->cancel();
    pendingRebind_ = with_.mainQueue.after(delay, [this, task] { (this->*task)(); });
}

void HTTPServer::retryPort()
{
    stopListener();
    startListener();
}

void HTTPServer::retryResponder()
{
    try {
        with_.responder.start();
    } catch (const std::system_error&) {
        // Logged the first time.
        later(retryInterval, &HTTPServer::retryResponder);
        return;
    }
    with_.onSocket(platform::Transport::udp, {});
}

void HTTPServer::closeSockets()
{
    stopListener();
    with_.responder.stop();
}

void HTTPServer::logListener(State state, const std::error_code& error)
{
    switch (state) {
    case State::ready:
        loggedError_.clear();
        removeStalePartialsOnce();
        flLog(QStringLiteral("Server ready on port %1; Bonjour visible=%2")
                  .arg(QString::number(tcpPort_), isVisible_ ? u"true" : u"false"));
        return;
    case State::waiting:
        flLog(QStringLiteral("Server listener waiting: ") + describe(error));
        return;
    case State::failed:
        // Once, however often it is tried again.
        if (std::exchange(loggedError_, error) == error) return;
        flLog(QStringLiteral("Server listener failed: ") + describe(error));
        return;
    }
}

void HTTPServer::listenerChanged(State state, const std::error_code& error)
{
    switch (state) {
    case State::waiting: // goes on by itself
        return;
    case State::failed:
        isPortLost_ = true;
        // Whoever found this computer now would knock at somebody else's door.
        with_.responder.stop();
        later(retryInterval, &HTTPServer::retryPort);
        break;
    case State::ready:
        if (isVisible_) with_.advertiser.advertise(ferrylaneDeviceSuffix());
        if (std::exchange(isPortLost_, false)) {
            // The listener may be another than the one that was to come.
            if (pendingRebind_) pendingRebind_->cancel();
            retryResponder();
        }
        break;
    }
    with_.onSocket(platform::Transport::tcp, error);
}

void HTTPServer::removeStalePartialsOnce()
{
    // Once, when the port is ours for the first time: later there is nothing left of an earlier
    // run.
    if (!std::exchange(stalePartialsRemoved_, true)) removeStalePartialFiles(receiveDir());
}

void HTTPServer::startService()
{
    if (serviceRunning_) return;
    serviceRunning_ = true;
    context_->admission.setOpen(true);
    if (openSocketsOrLog(QStringLiteral("Could not start Ferrylane service: "))) {
        flLog(QStringLiteral("Ferrylane service started"));
    }
}

void HTTPServer::stopService()
{
    if (!serviceRunning_) return;
    serviceRunning_ = false;
    if (pendingRebind_) pendingRebind_->cancel();
    context_->admission.setOpen(false);
    cancelActiveTransfer();
    closeSockets();
    context_->connections->cancelIncompleteHeads();
    flLog(QStringLiteral("Ferrylane service stopped"));
}

void HTTPServer::cancelActiveTransfer()
{
    if (const auto connection = context_->admission.takeActive()) connection->cancel();
}

void HTTPServer::rebindAfterNetworkChange(const QString& reason)
{
    if (!serviceRunning_) return;
    closeSockets();
    flLog(QStringLiteral("Rebinding Ferrylane after ") + reason);
    // A newer request starts the wait anew.
    later(rebindDelay, &HTTPServer::reopenAfterNetworkChange);
}

void HTTPServer::reopenAfterNetworkChange()
{
    if (openSocketsOrLog(QStringLiteral("Ferrylane network rebind failed: "))) {
        flLog(QStringLiteral("Ferrylane network rebind completed"));
    }
}

void HTTPServer::refreshAdvertisement()
{
    // While the service is off there is nothing to announce; it starts under the new name.
    if (!serviceRunning_) return;
    stopListener();
    startListener();
    flLog(QStringLiteral("Bonjour advertisement refreshed as ") + ferrylaneDeviceSuffix());
}

void HTTPServer::setVisible(bool visible)
{
    if (visible == isVisible_) return;
    isVisible_ = visible;
    with_.responder.setVisible(visible);
    if (!serviceRunning_) return;
    stopListener();
    startListener();
    flLog(visible ? QStringLiteral("Bonjour advertisement enabled")
                  : QStringLiteral("Bonjour advertisement disabled"));
}

void HTTPServer::setOutboundBusy(bool busy)
{
    context_->admission.setOutboundBusy(busy);
}

} // namespace ferrylane
