#pragma once

#include "platform/Interface.h"
#include "platform/NotificationCenter.h"
#include "platform/SerialQueue.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ferrylane {

/// Shows a file that is being received: on the status item, in the main panel and in the progress
/// window. Driven by the receiver's notifications. On the main thread.
class InboundTransfer {
public:
    /// Where it shows.
    class Views : public platform::Interface {
    public:
        virtual void setStatusTitle(const QString& title) = 0;
        /// Empty: none.
        virtual void setReceiveStatus(const QString& text) = 0;
        /// Opens the progress window where there is none, and brings it to the front.
        virtual void showProgressWindow() = 0;
        /// Does nothing without a window.
        virtual void setProgress(const QString& fileName, double percent, const QString& text) = 0;
        virtual void closeProgressWindow() = 0;
    };

    /// All must outlive this. `onReceived` gets the stored file's name once the views know of it.
    InboundTransfer(platform::NotificationCenter& notifications, platform::SerialQueue& mainQueue,
        Views& views, std::function<void(const QString& fileName)> onReceived);
    ~InboundTransfer();
    InboundTransfer(const InboundTransfer&) = delete;
    InboundTransfer& operator=(const InboundTransfer&) = delete;

    /// Shows nothing any more, as after a stopped transfer.
    void reset();

    [[nodiscard]] bool isRunning() const { return transferName_.has_value(); }

private:
    using Payload = platform::NotificationCenter::Payload;

    void started(const Payload& name);
    void progressed(const Payload& fraction);
    void spedUp(const Payload& speed);
    void received(const Payload& payload);

    void refresh();
    void forgetTransfer();
    void cancelClose();
    void closeWhenDone();

    platform::SerialQueue& mainQueue_;
    Views& views_;
    std::function<void(const QString&)> onReceived_;
    std::vector<platform::NotificationCenter::Observation> observations_;

    std::optional<QString> transferName_; ///< while a transfer runs
    double transferProgress_ = 0;         ///< 0 to 1
    double currentSpeedMBps_ = 0;
    qint64 receivedCount_ = 0; ///< since the launch
    std::shared_ptr<platform::DelayedTask> transferHUDCloseWorkItem_;
};

} // namespace ferrylane
