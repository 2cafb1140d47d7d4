#include "app/InboundTransfer.h"

#include "app/TransferTexts.h"
#include "core/Log.h"
#include "core/Notifications.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace ferrylane {

namespace {

constexpr auto doneTime = std::chrono::milliseconds(1500);

QString nameIn(const platform::NotificationCenter::Payload& payload)
{
    const auto* const name = std::get_if<QString>(&payload);
    return name ? *name : QStringLiteral("file");
}

} // namespace

InboundTransfer::InboundTransfer(platform::NotificationCenter& notifications,
    platform::SerialQueue& mainQueue, Views& views,
    std::function<void(const QString& fileName)> onReceived)
    : mainQueue_(mainQueue), views_(views), onReceived_(std::move(onReceived))
{
    const auto observe
        = [&](QLatin1StringView name, void (InboundTransfer::*handle)(const Payload&)) {
              observations_.push_back(notifications.observe(
                  name, [this, handle](const Payload& payload) { (this->*handle)(payload); }));
          };
    observe(FerrylaneReceived, &InboundTransfer::received);
    observe(FerrylaneStarted, &InboundTransfer::started);
    observe(FerrylaneProgress, &InboundTransfer::progressed);
    observe(FerrylaneSpeed, &InboundTransfer::spedUp);
    observations_.push_back(
        notifications.observe(FerrylaneStopped, [this](const Payload&) { reset(); }));
}

InboundTransfer::~InboundTransfer()
{
    cancelClose();
}

void InboundTransfer::started(const Payload& name)
{
    cancelClose();
    forgetTransfer();
    transferName_ = nameIn(name);
    views_.setStatusTitle(receivingTitle());
    views_.showProgressWindow();
    refresh();
}

void InboundTransfer::progressed(const Payload& fraction)
{
    const auto* const value = std::get_if<double>(&fraction);
    if (!value) return;
    transferProgress_ = std::clamp(*value, 0.0, 1.0);
    refresh();
}

void InboundTransfer::spedUp(const Payload& speed)
{
    const auto* const value = std::get_if<double>(&speed);
    if (!value) return;
    currentSpeedMBps_ = std::max(*value, 0.0);
    refresh();
}

void InboundTransfer::received(const Payload& payload)
{
    const QString name = nameIn(payload);
    flLog(QStringLiteral("Received file: ") + name);
    ++receivedCount_;
    forgetTransfer();
    views_.setProgress(name, 100, progressWindowDoneText());
    closeWhenDone();
    onReceived_(name);
    views_.setReceiveStatus({});
    views_.setStatusTitle(receivedTitle(receivedCount_));
}

void InboundTransfer::reset()
{
    forgetTransfer();
    cancelClose();
    views_.closeProgressWindow();
    views_.setReceiveStatus({});
    views_.setStatusTitle(idleTitle());
}

void InboundTransfer::refresh()
{
    views_.setReceiveStatus(
        isRunning() ? receiveStatusText(transferProgress_, currentSpeedMBps_) : QString());
    views_.setProgress(transferName_.value_or(QString()), transferProgress_ * 100,
        progressWindowText(transferProgress_, currentSpeedMBps_));
}

void InboundTransfer::forgetTransfer()
{
    transferName_.reset();
    transferProgress_ = 0;
    currentSpeedMBps_ = 0;
}

void InboundTransfer::cancelClose()
{
    if (const auto pending = std::exchange(transferHUDCloseWorkItem_, nullptr)) pending->cancel();
}

void InboundTransfer::closeWhenDone()
{
    cancelClose();
    transferHUDCloseWorkItem_ = mainQueue_.after(doneTime, [this] {
        transferHUDCloseWorkItem_ = nullptr;
        if (!isRunning()) views_.closeProgressWindow();
    });
}

} // namespace ferrylane
