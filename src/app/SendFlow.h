#pragma once

#include "app/SendChoices.h"
#include "platform/Interface.h"
#include "sender/FerrylaneV4Sender.h"
#include "transferlog/TransferLog.h"

#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace ferrylane {

/// Sends files that the user has dropped or chosen: asks where to, sends, shows how it gets on, and
/// records the outcome. One send at a time. On the main thread.
class SendFlow {
public:
    /// Where it asks and shows.
    class Views : public platform::Interface {
    public:
        /// Asks, and returns when the user has chosen.
        virtual SendChoice chooseReceiver(const QString& question, const QList<SendChoice>& choices)
            = 0;
        virtual void alert(const QString& title, const QString& text) = 0;
        virtual void setSendStatus(const QString& text, bool isShown) = 0;
        virtual void setSendProgress(double percent, bool isShown) = 0;
    };

    using PairedHandler = std::function<void(const FerrylanePairedTarget&)>;

    /// All references must outlive this.
    struct Collaborators {
        platform::TcpNetwork& network;
        Views& views;
        /// Puts a transfer into the log.
        std::function<void(const FerrylaneTransfer&)> log;
        /// The names nearby.
        std::function<QStringList()> visibleNames;
        /// Lets the user pair a phone, and calls the handler if one has been paired.
        std::function<void(PairedHandler)> pairDeviceThen;
        /// While busy, phones are refused.
        std::function<void(bool)> setOutboundBusy;
    };

    explicit SendFlow(Collaborators collaborators);
    ~SendFlow() = default;
    SendFlow(const SendFlow&) = delete;
    SendFlow& operator=(const SendFlow&) = delete;

    /// Asks for the receiver of these files and sends them. Folders are left out.
    void chooseReceiverAndSend(const platform::FilePaths& paths);
    /// Sends to the selected phone.
    void sendFilesToPairedPhone(const platform::FilePaths& paths);
    /// Stops what is being sent, if anything. How it ended is shown and recorded soon.
    void cancel();
    /// The same, but shown and recorded when this returns: for when the program ends.
    void cancelAndWait();

    [[nodiscard]] bool isSending() const { return running_.has_value(); }

private:
    using Result = FerrylaneV4Sender::Result;
    struct Send {
        platform::FilePaths files;
        FerrylanePairedTarget target;
        std::unique_ptr<FerrylaneV4Sender> outboundSender;
    };

    void start(const platform::FilePaths& files, const FerrylanePairedTarget& target);
    void showProgress(const FerrylaneV4Sender::Progress& progress);
    void completed(const Result& result);
    void succeeded(int fileCount, const FerrylanePairedTarget& target);
    void failed(const SendError& error);
    void record(const Send& send, const QString& result);

    Collaborators with_;
    std::optional<Send> running_;
    QTimer pendingClose_;
};

} // namespace ferrylane
