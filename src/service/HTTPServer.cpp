#include "service/HTTPServer.h"

#include "core/DeviceName.h"
#include "core/Encodings.h"
#include "core/Log.h"
#include "core/StoragePaths.h"
#include "pairing/ReceiverKeyStore.h"
#include "receiver/PartialFile.h"
#include "receiver/RequestSession.h"

#include <system_error>
#include <utility>

namespace ferrylane {

using State = platform::TcpListener::State;

HTTPServer::HTTPServer(platform::TcpNetwork& network, const platform::Clock& clock,
    std::uint16_t tcpPort, const ServiceTimes& times)
    : network_(network)
    , tcpPort_(tcpPort)
    , times_(times)
    , responder_(tcpPort)
    , context_(std::make_shared<ReceiverContext>(
          loadOrCreateFerrylaneKey(), clock, times.upload, uploads_))
    , sessionKeyB64_(base64URLEncode(context_->sessionKey.bytes()))
{
    connect(&publisher_, &platform::ServicePublisher::told, this,
        [](const QString& line) { flLog(line); });
    pendingTask_.setSingleShot(true);
    pendingTask_.setTimerType(Qt::PreciseTimer);
    try {
        openSockets();
    } catch (...) {
        // Somebody may have connected already.
        end();
        throw;
    }
}

HTTPServer::~HTTPServer()
{
    end();
}

void HTTPServer::end()
{
    serviceRunning_ = false;
    pendingTask_.stop();
    context_->admission.setOpen(false);
    cancelActiveTransfer();
    if (const auto name = context_->admission.storing()) {
        flLog(QStringLiteral("Waiting until “%1” is stored").arg(*name));
    }
    closeSockets();
    context_->connections->cancelAll();
    context_->connections->waitUntilNone();
    uploads_.deliver();
}

void HTTPServer::startListener()
{
    listener_ = network_.listener(tcpPort_);
    const std::weak_ptr weak(listener_);
    listener_->start(
        [this, weak](State state, const std::error_code& error) {
            logListener(state, error);
            QMetaObject::invokeMethod(
                this,
                [this, weak, state, error] {
                    // Replaced: then the next listener speaks for itself.
                    if (weak.lock()) listenerChanged(state, error);
                },
                Qt::QueuedConnection);
        },
        [context = context_](std::shared_ptr<platform::TcpConnection> connection) {
            serveRequest(context, std::move(connection));
        });
}

void HTTPServer::stopListener()
{
    if (!listener_) return;
    publisher_.withdraw();
    listener_->cancel();
    listener_ = nullptr;
}

void HTTPServer::openSockets()
{
    isPortLost_ = false;
    startListener();
    responder_.start();
}

bool HTTPServer::openSocketsOrLog(const QString& failure)
{
    std::error_code error;
    try {
        openSockets();
    } catch (const std::system_error& thrown) {
        error = thrown.code();
        flLog(failure, error);
        later(times_.retryInterval, &HTTPServer::retryResponder);
    }
    Q_EMIT socketChanged(platform::Transport::udp, error);
    return !error;
}

void HTTPServer::later(platform::Duration delay, void (HTTPServer::*task)())
{
    pendingTask_.disconnect();
    pendingTask_.callOnTimeout(this, task);
    pendingTask_.start(std::chrono::ceil<std::chrono::milliseconds>(delay));
}

void HTTPServer::retryPort()
{
    stopListener();
    startListener();
}

void HTTPServer::retryResponder()
{
    try {
        responder_.start();
    } catch (const std::system_error&) {
        // Logged the first time.
        later(times_.retryInterval, &HTTPServer::retryResponder);
        return;
    }
    Q_EMIT socketChanged(platform::Transport::udp, {});
}

void HTTPServer::closeSockets()
{
    stopListener();
    responder_.stop();
}

void HTTPServer::logListener(State state, const std::error_code& error)
{
    switch (state) {
    case State::ready:
        loggedError_.clear();
        // When the port is ours for the first time: later there is nothing left of an earlier run.
        if (!std::exchange(stalePartialsRemoved_, true)) removeStalePartialFiles(receiveDir());
        flLog(QStringLiteral("Server ready on port %1; Bonjour visible=%2")
                  .arg(QString::number(tcpPort_), isVisible_ ? u"true" : u"false"));
        return;
    case State::waiting:
        flLog(QStringLiteral("Server listener waiting"), error);
        return;
    case State::failed:
        // Once, however often it is tried again.
        if (std::exchange(loggedError_, error) == error) return;
        flLog(QStringLiteral("Server listener failed"), error);
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
        responder_.stop();
        later(times_.retryInterval, &HTTPServer::retryPort);
        break;
    case State::ready:
        if (isVisible_) {
            publisher_.publish(ferrylaneDeviceSuffix(), dnsSdServiceType, tcpPort_);
        }
        if (std::exchange(isPortLost_, false)) {
            // The listener may be another than the one that was to come.
            pendingTask_.stop();
            retryResponder();
        }
        break;
    }
    Q_EMIT socketChanged(platform::Transport::tcp, error);
}

void HTTPServer::startService()
{
    if (serviceRunning_) return;
    serviceRunning_ = true;
    context_->admission.setOpen(true);
    if (openSocketsOrLog(QStringLiteral("Could not start Ferrylane service"))) {
        flLog(QStringLiteral("Ferrylane service started"));
    }
}

void HTTPServer::stopService()
{
    if (!serviceRunning_) return;
    serviceRunning_ = false;
    pendingTask_.stop();
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
    later(times_.rebindDelay, &HTTPServer::reopenAfterNetworkChange);
}

void HTTPServer::reopenAfterNetworkChange()
{
    if (openSocketsOrLog(QStringLiteral("Ferrylane network rebind failed"))) {
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
    responder_.setVisible(visible);
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
